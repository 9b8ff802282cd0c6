import QtQuick
import QtQuick.Controls
import Norvella.Resources

// The centred text a list shows when it has no rows.
Control {
    id: emptyState

    property string text

    Label {
        anchors.centerIn: parent
        width: Math.min(300, parent.width - 32)
        horizontalAlignment: Text.AlignHCenter
        wrapMode: Text.WordWrap
        text: emptyState.text
        font.bold: true
        font.pixelSize: Theme.titleSize
        color: Theme.secondaryText
    }
}
