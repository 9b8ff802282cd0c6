import QtQuick
import QtQuick.Controls
import Norvella.App
import Norvella.Resources

// The maker's other apps, shown modally; a row opens the app's store page.
Page {
    id: page

    readonly property MoreAppsTableViewController controller: appsController
    signal closed()

    MoreAppsTableViewController {
        id: appsController
        onCloseRequested: page.closed()
    }

    header: NavigationBar {
        title: L10n.text("moreapps")
        ToolButton {
            id: closeButton
            icon.source: "qrc:/norvella/icons/clear.svg"
            icon.color: Theme.barText
            hoverEnabled: false
            // The bar is the button's backdrop; only a press shows.
            background: Rectangle {
                radius: 6
                color: closeButton.down ? Theme.barPressed : "transparent"
            }
            width: Theme.minimumTouchTarget
            height: Theme.minimumTouchTarget
            Accessible.name: L10n.text("action.close")
            Access.pressable: true
            onClicked: appsController.close()
        }
    }

    background: Rectangle { color: Theme.background }

    ListView {
        anchors.fill: parent
        model: appsController
        clip: true

        delegate: ItemDelegate {
            id: appRow

            required property int index
            required property string name
            required property string iconSource

            width: ListView.view.width
            height: Math.max(64, implicitHeight)
            padding: 16
            text: appRow.name
            icon.source: appRow.iconSource
            icon.color: Theme.primary
            icon.width: 32
            icon.height: 32
            palette.text: Theme.text
            Accessible.name: appRow.name
            Access.pressable: true
            onClicked: (appRow.ListView.view.model as MoreAppsTableViewController).selectRow(appRow.index)

            Rectangle {
                anchors.bottom: parent.bottom
                anchors.left: parent.left
                anchors.leftMargin: 64
                anchors.right: parent.right
                height: 1
                color: Theme.separator
            }
        }
    }
}
