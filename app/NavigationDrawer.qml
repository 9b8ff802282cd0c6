import QtQuick
import QtQuick.Controls
import Norvella.App
import Norvella.Resources

// The side menu: a gradient header and four rows. The row's action runs
// after the drawer has finished closing.
Drawer {
    id: drawer

    readonly property NavigationDrawerTableTableViewController controller: drawerController

    width: Math.min(320, parent ? parent.width * 0.85 : 320)
    height: parent ? parent.height : 0
    edge: Qt.LeftEdge
    focus: true

    onOpened: drawerController.presented = true
    onClosed: {
        drawerController.presented = false
        drawerController.drawerDidClose()
    }

    NavigationDrawerTableTableViewController {
        id: drawerController
        onCloseRequested: drawer.close()
    }

    background: Rectangle { color: Theme.bar }

    Column {
        anchors.fill: parent

        Rectangle {
            id: header
            width: parent.width
            height: headerContent.implicitHeight + 48
            gradient: Gradient {
                orientation: Gradient.Horizontal
                GradientStop { position: 0.0; color: Theme.secondary }
                GradientStop { position: 1.0; color: Theme.bar }
            }

            Column {
                id: headerContent
                anchors.left: parent.left
                anchors.right: parent.right
                anchors.verticalCenter: parent.verticalCenter
                anchors.margins: 20
                spacing: 12

                Rectangle {
                    width: 64
                    height: 64
                    radius: 5
                    color: "transparent"
                    border.color: Theme.barText
                    border.width: 1
                    clip: true

                    Label {
                        anchors.centerIn: parent
                        text: "It"
                        color: Theme.barText
                        font.bold: true
                        font.pixelSize: Theme.largeTitleSize
                        Accessible.ignored: true
                    }
                }

                Label {
                    width: parent.width
                    text: L10n.text("verb.list.full")
                    color: Theme.barText
                    font.bold: true
                    font.pixelSize: Theme.titleSize
                    wrapMode: Text.WordWrap
                    Accessible.role: Accessible.Heading
                    Access.heading: true
                }
            }
        }

        ListView {
            width: parent.width
            height: contentHeight
            interactive: false
            // The keyboard starts on the first row and moves with the arrows.
            focus: true
            keyNavigationEnabled: true
            model: drawerController

            delegate: ItemDelegate {
                id: row

                required property int index
                required property string iconSource
                required property string title

                width: ListView.view.width
                height: Math.max(Theme.minimumTouchTarget, implicitHeight)
                padding: 16
                text: row.title
                icon.source: row.iconSource
                icon.color: Theme.barText
                icon.width: 24
                icon.height: 24
                Accessible.name: row.title
                Accessible.role: Accessible.MenuItem
                Access.pressable: true
                palette.text: Theme.barText
                background: Rectangle { color: row.down ? Theme.barPressed : "transparent" }
                onClicked: (row.ListView.view.model as NavigationDrawerTableTableViewController).selectRow(1, row.index)
            }
        }
    }
}
