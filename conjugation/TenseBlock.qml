import QtQuick
import QtQuick.Controls
import Norvella.Resources
import Norvella.Conjugation

// One tense in the grid: its title and up to six pronoun and form rows.
Control {
    id: block

    required property string title
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
        text: block.title
        color: Theme.primary
        font.bold: true
        font.capitalization: Font.AllUppercase
        font.letterSpacing: 0.5
        font.pointSize: block.font.pointSize * 0.95
        verticalAlignment: Text.AlignVCenter
        fontSizeMode: Text.Fit
        minimumPointSize: 7
        Accessible.role: Accessible.Heading
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
