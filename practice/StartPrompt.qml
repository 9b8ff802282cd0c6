import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Norvella.Practice
import Norvella.Resources

// Shown without a card: why, and the button that builds today's session.
ColumnLayout {
    id: prompt

    property PracticeController controller
    visible: !controller.hasCard
    spacing: 12

    Label {
        Layout.fillWidth: true
        visible: text.length > 0
        text: prompt.controller.message
        color: Theme.text
        wrapMode: Text.WordWrap
    }

    Button {
        text: L10n.text("practice.start")
        Layout.preferredHeight: Theme.minimumTouchTarget
        highlighted: true
        palette.button: Theme.primary
        palette.buttonText: Theme.barText
        Access.pressable: true
        onClicked: prompt.controller.start()
    }
}
