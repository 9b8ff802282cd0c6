import QtQuick
import QtQuick.Controls
import Norvella.Export
import Norvella.Resources

// Shows the support mail's alerts: a title, a message, the address to copy
// when the mail could not be written, and one OK button.
Dialog {
    id: alert

    property SupportEmailSender sender

    parent: Overlay.overlay
    x: parent ? Math.round((parent.width - width) / 2) : 0
    y: parent ? Math.round((parent.height - height) / 2) : 0
    width: parent ? Math.min(parent.width - 48, 360) : 320
    modal: true
    title: sender ? sender.alertTitle : ""
    background: Rectangle { radius: 12; color: Theme.background }

    Column {
        width: alert.availableWidth
        spacing: 12

        Label {
            width: parent.width
            text: alert.sender ? alert.sender.alertMessage : ""
            color: Theme.text
            wrapMode: Text.WordWrap
        }

        CopyableAddress {
            visible: address.length > 0
            width: parent.width
            address: alert.sender ? alert.sender.alertAddress : ""
        }
    }

    footer: Item {
        implicitHeight: okButton.implicitHeight + 16

        Button {
            id: okButton
            anchors.right: parent.right
            anchors.rightMargin: 8
            anchors.verticalCenter: parent.verticalCenter
            implicitWidth: Math.max(88, implicitContentWidth + leftPadding + rightPadding)
            implicitHeight: Math.max(Theme.minimumTouchTarget, implicitContentHeight + topPadding + bottomPadding)
            text: alert.sender ? alert.sender.alertButton : ""
            font.bold: true
            flat: true
            palette.windowText: Theme.primary
            Accessible.name: text
            Access.pressable: true
            onClicked: alert.accept()
        }
    }

    Connections {
        target: alert.sender
        function onAlertRequested() { alert.open(); }
    }
}
