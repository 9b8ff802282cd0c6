import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Norvella.Resources

// The four grades of an answer; keys 1-4 pick them too.
ColumnLayout {
    id: bar

    property int suggested: -1
    signal rated(int quality)

    // Key 1-4 to its grade on the 0-5 scale.
    readonly property var grades: [1, 3, 4, 5]

    // Each entry carries its own action: a delegate reaches nothing outside it.
    function buttons(titles, suggested) {
        return titles.map((title, index) => ({title: (index + 1) + "  " + title, name: title,
                                              suggested: grades[index] === suggested,
                                              rate: () => bar.rated(grades[index])}))
    }

    function rateKey(key) {
        const index = key - Qt.Key_1
        if (index < 0 || index >= grades.length)
            return false
        bar.rated(grades[index])
        return true
    }

    spacing: 6

    Label {
        Layout.fillWidth: true
        text: L10n.text("practice.rate.question")
        color: Theme.secondaryText
        wrapMode: Text.WordWrap
    }

    RowLayout {
        Layout.fillWidth: true
        spacing: 6

        Repeater {
            model: bar.buttons([L10n.text("practice.rate.again"), L10n.text("practice.rate.hard"),
                                L10n.text("practice.rate.good"), L10n.text("practice.rate.easy")], bar.suggested)

            Button {
                id: gradeButton
                required property var modelData
                Layout.fillWidth: true
                Layout.preferredHeight: Theme.minimumTouchTarget
                text: gradeButton.modelData.title
                font.bold: gradeButton.modelData.suggested
                highlighted: gradeButton.modelData.suggested
                palette.button: highlighted ? Theme.primary : Theme.background
                palette.buttonText: highlighted ? Theme.barText : Theme.text
                Accessible.name: gradeButton.modelData.name
                Access.pressable: true
                onClicked: gradeButton.modelData.rate()
            }
        }
    }
}
