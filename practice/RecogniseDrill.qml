import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Norvella.Practice
import Norvella.Resources

// Recognise: the learner names the verb, tense and person of a shown form.
Flickable {
    id: drill
    FontMetrics { id: metrics }

    property PracticeController controller
    readonly property bool answered: controller.verdict !== PracticeController.Unanswered

    contentHeight: column.implicitHeight + 40
    clip: true
    boundsBehavior: Flickable.StopAtBounds
    ScrollBar.vertical: ScrollBar {}

    onVisibleChanged: if (visible) column.forceActiveFocus()

    // Each entry carries its own action: a delegate reaches nothing outside it.
    function entries(options, answered, chosen) {
        return options.map((option, index) => ({label: option.label, number: index + 1, right: option.right,
                                                revealed: answered && (option.right || index === chosen),
                                                dimmed: answered, choose: () => drill.controller.choose(index)}))
    }

    Connections {
        target: drill.controller
        function onCardChanged() {
            if (drill.visible)
                column.forceActiveFocus()
        }
    }

    ColumnLayout {
        id: column
        x: Math.max(16, (drill.width - width) / 2)
        y: 20
        width: Math.min(drill.width - 32, 560)
        spacing: 12
        focus: true

        // Number keys pick an option, then grade the answer.
        Keys.onPressed: event => {
            if (drill.answered) {
                event.accepted = ratings.rateKey(event.key)
            } else if (event.key >= Qt.Key_1 && event.key <= Qt.Key_4) {
                drill.controller.choose(event.key - Qt.Key_1)
                event.accepted = true
            }
        }

        StartPrompt {
            Layout.fillWidth: true
            controller: drill.controller
        }

        CardHeader {
            Layout.fillWidth: true
            visible: drill.controller.hasCard
            controller: drill.controller
            showsVerb: false
        }

        Label {
            Layout.fillWidth: true
            visible: drill.controller.hasCard
            text: L10n.text("practice.recognise.question")
            color: Theme.secondaryText
            wrapMode: Text.WordWrap
        }

        Label {
            objectName: "practiceShownForm"
            Layout.fillWidth: true
            visible: drill.controller.hasCard
            text: drill.controller.shownForm
            color: Theme.text
            font.bold: true
            font.pointSize: metrics.font.pointSize * 1.8
            wrapMode: Text.WordWrap
            Access.heading: true
        }

        // After the answer the right option and the one chosen stay lit.
        Repeater {
            model: drill.controller.hasCard ? drill.entries(drill.controller.options, drill.answered,
                                                            drill.controller.chosenOption) : []

            Button {
                id: option
                required property var modelData
                Layout.fillWidth: true
                Layout.preferredHeight: Math.max(Theme.minimumTouchTarget, implicitHeight)
                text: option.modelData.number + "  " + option.modelData.label
                enabled: !option.modelData.dimmed || option.modelData.revealed
                font.bold: option.modelData.revealed
                palette.button: option.modelData.revealed ? (option.modelData.right ? Theme.primary : Theme.secondary)
                                                          : Theme.background
                palette.buttonText: option.modelData.revealed ? Theme.barText : Theme.text
                Accessible.name: option.modelData.label
                Access.pressable: true
                onClicked: option.modelData.choose()
            }
        }

        AnswerResult {
            Layout.fillWidth: true
            visible: drill.answered
            controller: drill.controller
        }

        RatingBar {
            id: ratings
            Layout.fillWidth: true
            visible: drill.answered
            suggested: drill.controller.suggestedRating
            onRated: quality => drill.controller.rate(quality)
        }
    }
}
