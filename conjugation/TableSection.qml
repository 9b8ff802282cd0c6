import QtQuick
import QtQuick.Controls
import Norvella.Resources
import Norvella.Conjugation

// One table section: the verb row, or a tense title over its forms.
Control {
    id: section

    required property string kind
    required property string title
    // The tense title in capitals; the font's own capitals know no Turkish İ.
    required property string heading
    required property var forms
    // Set for a tense the verb has no forms in.
    required property string emptyNote
    // On the verb row: how the verb is used, one note per line.
    required property string notes
    // On the verb row: how the verb conjugates.
    required property var pattern

    signal modelVerbActivated()

    readonly property bool isVerbRow: kind === "verb"

    implicitHeight: column.implicitHeight

    Column {
        id: column
        width: section.width

        Rectangle {
            visible: section.isVerbRow
            width: column.width
            height: verbLabel.implicitHeight + (patternLine.visible ? patternLine.implicitHeight : 0)
                    + (notesLabel.visible ? notesLabel.implicitHeight : 0)
            color: Theme.background

            Label {
                id: verbLabel
                width: parent.width
                padding: 16
                bottomPadding: notesLabel.visible || patternLine.visible ? 4 : 16
                text: section.isVerbRow ? section.title : ""
                wrapMode: Text.Wrap
                color: Theme.text
                font.pixelSize: Theme.titleSize
                font.weight: Font.DemiBold
            }

            PatternLine {
                id: patternLine
                anchors.top: verbLabel.bottom
                x: 16
                width: parent.width - 32
                bottomPadding: notesLabel.visible ? 0 : 8
                pattern: section.isVerbRow && section.pattern ? section.pattern : ({})
                onModelActivated: section.modelVerbActivated()
            }

            UsageNotes {
                id: notesLabel
                anchors.top: patternLine.visible ? patternLine.bottom : verbLabel.bottom
                width: parent.width
                leftPadding: 16
                rightPadding: 16
                bottomPadding: 14
                text: section.isVerbRow ? section.notes : ""
            }

            Rectangle {
                anchors.bottom: parent.bottom
                width: parent.width
                height: 1
                color: Theme.separator
            }
        }

        Label {
            visible: !section.isVerbRow
            width: column.width
            leftPadding: 16
            rightPadding: 16
            topPadding: 22
            bottomPadding: 8
            text: section.isVerbRow ? "" : section.heading
            wrapMode: Text.Wrap
            color: Theme.primary
            font.bold: true
            font.letterSpacing: 0.5
            font.pixelSize: Theme.secondarySize
            Accessible.role: Accessible.Heading
            Accessible.name: section.title
            Access.heading: true
        }

        Rectangle {
            visible: !section.isVerbRow && section.forms.length > 0
            width: column.width
            height: rows.implicitHeight
            color: Theme.background

            Column {
                id: rows
                width: parent.width

                Repeater {
                    model: section.forms

                    delegate: FormRow {
                        required property ConjugationFormItem modelData
                        required property int index

                        width: parent ? parent.width : 0
                        item: modelData
                        separatorVisible: index > 0
                    }
                }
            }
        }

        NoFormsNote {
            visible: !section.isVerbRow && section.forms.length === 0
            width: column.width
            note: section.emptyNote
        }
    }
}
