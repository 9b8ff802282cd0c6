import QtQuick
import QtQuick.Controls
import Norvella.Resources

// The bottom bar: mark the verb as a favourite, report a mistake in what is
// shown, or share the conjugation.
ToolBar {
    id: toolbar

    property url favouriteIcon
    property string favouriteName
    property string reportName
    property bool compact: false
    // Where the share sheet points on wide windows.
    readonly property alias exportButton: exportButton

    signal favouriteClicked()
    signal exportClicked()
    signal reportClicked()

    implicitHeight: visible ? (compact ? Theme.minimumTouchTarget : Math.max(52, Theme.minimumTouchTarget + 8)) : 0
    background: Rectangle {
        color: Theme.background
        Rectangle {
            width: parent.width
            height: 1
            color: Theme.separator
        }
    }

    BarButton {
        anchors.left: parent.left
        anchors.leftMargin: 8
        anchors.verticalCenter: parent.verticalCenter
        icon.source: toolbar.favouriteIcon
        // The same green as the star on a favourite's row in the lists.
        icon.color: Theme.primary
        Accessible.name: toolbar.favouriteName
        onClicked: toolbar.favouriteClicked()
    }

    BarButton {
        objectName: "reportButton"
        anchors.horizontalCenter: parent.horizontalCenter
        anchors.verticalCenter: parent.verticalCenter
        icon.source: "qrc:/norvella/icons/contact.svg"
        icon.color: Theme.primary
        Accessible.name: toolbar.reportName
        ToolTip.visible: hovered
        ToolTip.text: toolbar.reportName
        onClicked: toolbar.reportClicked()
    }

    BarButton {
        id: exportButton
        anchors.right: parent.right
        anchors.rightMargin: 8
        anchors.verticalCenter: parent.verticalCenter
        icon.source: "qrc:/norvella/icons/share.svg"
        icon.color: Theme.primary
        Accessible.name: L10n.text("conjugation.export")
        onClicked: toolbar.exportClicked()
    }
}
