import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Norvella.Practice
import Norvella.Resources

// Produce: the learner types the form the card asks for.
Flickable {
    id: drill
    FontMetrics { id: metrics }

    property PracticeController controller
    readonly property bool answered: controller.verdict !== PracticeController.Unanswered

    contentHeight: column.implicitHeight + 40
    clip: true
    boundsBehavior: Flickable.StopAtBounds
    ScrollBar.vertical: ScrollBar {}

    onVisibleChanged: {
        if (visible && drill.answered)
            column.forceActiveFocus()
        else if (visible)
            answer.forceActiveFocus()
    }

    Connections {
        target: drill.controller
        function onCardChanged() {
            answer.text = ""
            if (drill.visible)
                answer.forceActiveFocus()
        }
        // Number keys grade the answer once it is checked.
        function onAnswered() {
            if (drill.answered && drill.visible)
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

        Keys.onPressed: event => {
            if (drill.answered && ratings.rateKey(event.key))
                event.accepted = true
        }

        StartPrompt {
            Layout.fillWidth: true
            controller: drill.controller
        }

        CardHeader {
            Layout.fillWidth: true
            visible: drill.controller.hasCard
            controller: drill.controller
        }

        RowLayout {
            Layout.fillWidth: true
            visible: drill.controller.hasCard
            spacing: 8

            Label {
                visible: text.length > 0
                text: drill.controller.pronoun
                color: Theme.text
                font.pointSize: metrics.font.pointSize * 1.3
            }

            TextField {
                id: answer
                objectName: "practiceAnswer"
                Layout.fillWidth: true
                Layout.preferredHeight: Theme.minimumTouchTarget
                placeholderText: L10n.text("practice.answer.placeholder")
                readOnly: drill.answered
                inputMethodHints: Qt.ImhNoAutoUppercase | Qt.ImhNoPredictiveText
                font.pointSize: metrics.font.pointSize * 1.3
                Accessible.name: L10n.text("practice.answer.placeholder")
                onAccepted: drill.controller.submit(text)
            }
        }

        AccentBar {
            visible: drill.controller.hasCard && !drill.answered
            target: answer
        }

        Button {
            visible: drill.controller.hasCard && !drill.answered
            text: L10n.text("practice.answer.check")
            Layout.preferredHeight: Theme.minimumTouchTarget
            Access.pressable: true
            onClicked: drill.controller.submit(answer.text)
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
