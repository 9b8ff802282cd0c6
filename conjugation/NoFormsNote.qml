import QtQuick
import QtQuick.Controls
import Norvella.Resources

// Stands in for the forms of a tense the verb does not have: a dash where
// the forms would be and a line saying why, so the gap reads as deliberate.
Rectangle {
    id: root

    property string note
    property bool compact: false

    implicitHeight: content.implicitHeight
    height: implicitHeight
    color: Theme.background

    Column {
        id: content
        width: root.width
        leftPadding: root.compact ? 12 : 16
        rightPadding: leftPadding
        topPadding: 10
        bottomPadding: 10
        spacing: 4

        Label {
            text: "\u2014"
            color: Theme.text
            font.bold: true
            Accessible.ignored: true
        }

        Label {
            width: content.width - content.leftPadding - content.rightPadding
            text: root.note
            color: Theme.secondaryText
            wrapMode: Text.Wrap
            font.italic: true
        }
    }
}
