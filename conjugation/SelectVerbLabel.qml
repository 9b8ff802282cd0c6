import QtQuick
import QtQuick.Controls
import Norvella.Resources

// What the screen shows before a verb is chosen.
Label {
    padding: 20
    wrapMode: Text.Wrap
    horizontalAlignment: Text.AlignHCenter
    color: Theme.secondaryText
    background: Rectangle {
        color: Theme.placeholderBackground
        radius: 5
        border.color: Theme.placeholderBorder
        border.width: 1
    }
}
