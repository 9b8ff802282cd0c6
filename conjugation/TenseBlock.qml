import QtQuick
import QtQuick.Controls
import Norvella.Resources
import Norvella.Conjugation

// One tense in the grid: its title and up to six pronoun and form rows.
Control {
    id: block

    required property string title
    required property string heading // the title in capitals, cased by its language
    required property var forms
    required property string emptyNote

    padding: 0
    background: Rectangle {
        radius: 12
        color: Theme.background
        border.color: Theme.separator
        border.width: 1
    }

    Label {
        id: titleLabel
        x: 12
        y: 8
        width: block.width - 24
        height: 28
        text: block.heading
        color: Theme.primary
        font.bold: true
        font.letterSpacing: 0.5
        font.pointSize: block.font.pointSize * 0.95
        verticalAlignment: Text.AlignVCenter
        // A long name with a gloss ("Trapassato remoto (historisches Plusquamperfekt)")
        // takes two smaller lines rather than running past the block.
        wrapMode: Text.WordWrap
        maximumLineCount: 2
        fontSizeMode: Text.Fit
        minimumPointSize: 7
        Accessible.role: Accessible.Heading
        Accessible.name: block.title
        Access.heading: true
    }

    Column {
        id: rows
        anchors.top: titleLabel.bottom
        width: block.width

        Repeater {
            model: block.forms

            delegate: FormRow {
                required property ConjugationFormItem modelData
                required property int index

                width: parent ? parent.width : 0
                compact: true
                item: modelData
                separatorVisible: true
            }
        }

        NoFormsNote {
            visible: block.forms.length === 0
            width: block.width
            compact: true
            note: block.emptyNote
        }
    }
}
