import QtQuick
import QtQuick.Controls
import Norvella.Export
import Norvella.Resources

// Says that no program on this system took a link, and offers its address to
// copy. One instance in the window answers every link of the app.
Dialog {
    id: dialog

    property string message: ""
    property string address: ""

    parent: Overlay.overlay
    x: parent ? Math.round((parent.width - width) / 2) : 0
    y: parent ? Math.round((parent.height - height) / 2) : 0
    width: parent ? Math.min(parent.width - 48, 400) : 320
    modal: true
    title: L10n.text("common.link_failed.title")
    standardButtons: Dialog.Ok
    background: Rectangle { radius: 12; color: Theme.background }

    Column {
        width: dialog.availableWidth
        spacing: 12

        Label {
            width: parent.width
            text: dialog.message
            color: Theme.text
            wrapMode: Text.WordWrap
        }

        CopyableAddress {
            objectName: "linkFailedAddress"
            width: parent.width
            address: dialog.address
        }
    }

    Connections {
        target: LinkOpener
        function onFailed(message: string, address: string) {
            dialog.message = message
            dialog.address = address
            dialog.open()
        }
    }
}
