import QtQuick
import QtQuick.Controls
import Norvella.Resources

// The bottom bar: mark the verb as a favourite, or share its conjugation.
ToolBar {
    id: toolbar

    property url favouriteIcon
    property string favouriteName

    signal favouriteClicked()
    signal exportClicked()

    implicitHeight: visible ? Math.max(52, Theme.minimumTouchTarget + 8) : 0
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
        anchors.right: parent.right
        anchors.rightMargin: 8
        anchors.verticalCenter: parent.verticalCenter
        icon.source: "qrc:/norvella/icons/share.svg"
        icon.color: Theme.primary
        Accessible.name: L10n.text("conjugation.export")
        onClicked: toolbar.exportClicked()
    }
}
