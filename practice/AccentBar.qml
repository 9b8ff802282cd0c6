import QtQuick
import QtQuick.Controls
import Norvella.Resources

// The accented vowels Italian needs, for keyboards without them.
Row {
    id: bar

    property Item target
    spacing: 6

    Repeater {
        model: ["à", "è", "é", "ì", "ò", "ù"]

        Button {
            required property string modelData
            width: Theme.minimumTouchTarget
            height: Theme.minimumTouchTarget
            text: modelData
            focusPolicy: Qt.NoFocus
            enabled: bar.target !== null && bar.target.enabled && !bar.target.readOnly
            Accessible.name: L10n.text("practice.accent").arg(modelData)
            Access.pressable: true
            onClicked: {
                bar.target.insert(bar.target.cursorPosition, modelData)
                bar.target.forceActiveFocus()
            }
        }
    }
}
