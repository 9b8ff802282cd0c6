import QtQuick
import QtQuick.Controls
import Norvella.Resources
import Norvella.Conjugation

// What the screen shows before a verb is chosen.
Label {
    padding: 20
    wrapMode: Text.Wrap
    horizontalAlignment: Text.AlignHCenter
    color: Theme.secondaryText
    background: Rectangle {
        color: ConjugationPalette.selectVerbBackground
        radius: 5
        border.color: ConjugationPalette.selectVerbBorder
        border.width: 1
    }
}
