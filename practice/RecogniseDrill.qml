import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Norvella.Practice
import Norvella.Resources

// Recognise: the learner names the verb, tense and person of a shown form.
Flickable {
    id: drill

    property PracticeController controller
    readonly property bool answered: controller.verdict !== PracticeController.Unanswered

    contentHeight: column.implicitHeight + 40
    clip: true
    boundsBehavior: Flickable.StopAtBounds
    ScrollBar.vertical: ScrollBar {}

    onVisibleChanged: if (visible) column.forceActiveFocus()

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
            font.pointSize: Qt.application.font.pointSize * 1.8
            wrapMode: Text.WordWrap
            Access.heading: true
        }

        Repeater {
            model: drill.controller.hasCard ? drill.controller.options : []

            Button {
                id: option
                required property var modelData
                required property int index
                readonly property bool revealed: drill.answered && (modelData.right || index === drill.controller.chosenOption)
                Layout.fillWidth: true
                Layout.preferredHeight: Math.max(Theme.minimumTouchTarget, implicitHeight)
                text: (index + 1) + "  " + modelData.label
                enabled: !drill.answered || revealed
                font.bold: revealed
                palette.button: revealed ? (modelData.right ? Theme.primary : Theme.secondary) : Theme.background
                palette.buttonText: revealed ? Theme.barText : Theme.text
                Accessible.name: modelData.label
                Access.pressable: true
                onClicked: drill.controller.choose(index)
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
