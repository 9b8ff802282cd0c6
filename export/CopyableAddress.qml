import QtQuick
import QtQuick.Controls
import Norvella.Export
import Norvella.Resources

// An address the app could not hand on, shown so it can be selected, with a
// button that copies it.
Row {
    id: row

    property string address: ""
    property bool copied: false

    spacing: 8
    onAddressChanged: copied = false

    TextField {
        id: field
        width: row.width - copyButton.width - row.spacing
        anchors.verticalCenter: parent.verticalCenter
        text: row.address
        readOnly: true
        selectByMouse: true
        color: Theme.text
        Accessible.name: row.address
    }

    Button {
        id: copyButton
        anchors.verticalCenter: parent.verticalCenter
        flat: true
        implicitHeight: Math.max(Theme.minimumTouchTarget, implicitContentHeight + topPadding + bottomPadding)
        text: row.copied ? L10n.text("common.copied") : L10n.text("common.copy")
        icon.source: "qrc:/norvella/icons/copy.svg"
        icon.color: Theme.primary
        palette.windowText: Theme.primary
        Accessible.name: L10n.text("common.copy")
        onClicked: {
            LinkOpener.copyToClipboard(row.address)
            row.copied = true
        }
    }
}
