import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Norvella.Practice
import Norvella.Resources

// How the answer compared, the cell with its irregular spellings marked,
// and the button that speaks it.
ColumnLayout {
    id: result
    FontMetrics { id: metrics }

    property PracticeController controller
    spacing: 8

    Label {
        objectName: "practiceVerdict"
        Layout.fillWidth: true
        text: result.controller.verdictText
        font.bold: true
        font.pointSize: metrics.font.pointSize * 1.2
        wrapMode: Text.WordWrap
        color: result.controller.verdict === PracticeController.Right ? Theme.primary
             : result.controller.verdict === PracticeController.Almost ? Theme.segmentTint : Theme.secondary
        Accessible.role: Accessible.AlertMessage
    }

    RowLayout {
        Layout.fillWidth: true
        spacing: 8

        Label {
            Layout.fillWidth: true
            text: (result.controller.pronoun.length > 0 ? result.controller.pronoun + " " : "")
                  + result.controller.answerText
            textFormat: Text.StyledText
            color: Theme.text
            font.pointSize: metrics.font.pointSize * 1.3
            wrapMode: Text.WordWrap
        }

        ToolButton {
            width: Theme.minimumTouchTarget
            height: Theme.minimumTouchTarget
            icon.source: "qrc:/norvella/icons/play.svg"
            icon.color: Theme.primary
            Accessible.name: L10n.text("practice.speak")
            Access.pressable: true
            onClicked: result.controller.speak()
        }
    }
}
