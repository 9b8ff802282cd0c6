import QtQuick
import QtQuick.Controls
import Norvella.Resources

// The accented vowels Italian needs, for keyboards without them.
Row {
    id: bar

    property TextField target
    spacing: 6
    enabled: target !== null && !target.readOnly

    function keys(letters) {
        return letters.map(letter => ({letter: letter, type: () => bar.type(letter)}))
    }

    function type(letter) {
        bar.target.insert(bar.target.cursorPosition, letter)
        bar.target.forceActiveFocus()
    }

    // Each entry carries its own action: a delegate reaches nothing outside it.
    Repeater {
        model: bar.keys(["à", "è", "é", "ì", "ò", "ù"])

        Button {
            id: key
            required property var modelData
            width: Theme.minimumTouchTarget
            height: Theme.minimumTouchTarget
            text: key.modelData.letter
            focusPolicy: Qt.NoFocus
            Accessible.name: L10n.text("practice.accent").arg(key.modelData.letter)
            Access.pressable: true
            onClicked: key.modelData.type()
        }
    }
}
