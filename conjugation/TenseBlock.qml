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
    implicitHeight: rows.y + rows.height + 12
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
        height: Math.max(28, implicitHeight)
        text: block.heading
        color: Theme.primary
        font.bold: true
        font.letterSpacing: 0.5
        font.pixelSize: Theme.bodySize
        verticalAlignment: Text.AlignVCenter
        // A long name with a gloss ("Trapassato remoto (historisches Plusquamperfekt)")
        // takes a second line rather than running past the block.
        wrapMode: Text.WordWrap
        maximumLineCount: 2
        elide: Text.ElideRight
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
