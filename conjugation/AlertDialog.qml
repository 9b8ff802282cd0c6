import QtQuick
import QtQuick.Controls
import Norvella.Resources

// A message with one OK button.
Dialog {
    id: dialog

    property string message

    function show(text) {
        message = text
        open()
    }

    modal: true
    anchors.centerIn: Overlay.overlay
    width: Math.min(340, (parent ? parent.width : 340) - 40)
    padding: 20
    bottomPadding: 8

    background: Rectangle {
        radius: 12
        color: Theme.background
    }

    contentItem: Label {
        text: dialog.message
        wrapMode: Text.Wrap
        color: Theme.text
    }

    footer: Item {
        implicitHeight: okButton.implicitHeight + 16

        Button {
            id: okButton
            anchors.right: parent.right
            anchors.rightMargin: 12
            anchors.verticalCenter: parent.verticalCenter
            implicitWidth: Math.max(implicitContentWidth + leftPadding + rightPadding, Theme.minimumTouchTarget * 1.5)
            implicitHeight: Theme.minimumTouchTarget
            text: L10n.text("common.ok")
            Accessible.name: text
            Access.pressable: true
            onClicked: dialog.accept()

            contentItem: Label {
                text: okButton.text
                color: Theme.primary
                font.bold: true
                horizontalAlignment: Text.AlignHCenter
                verticalAlignment: Text.AlignVCenter
            }
            background: Rectangle {
                radius: 8
                color: okButton.down ? Theme.pressed : "transparent"
            }
        }
    }
}
