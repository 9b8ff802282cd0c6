import QtQuick
import QtQuick.Controls
import Norvella.Resources

// How the verb conjugates, under its name: "regular (-are)", "irregular", or
// "conjugates like venire" with the model verb as a link that opens it.
Flow {
    id: line

    // {before, model, after, sentence}, as the conjugation screen gives it.
    property var pattern: ({})
    readonly property bool hasModel: (pattern.model || "").length > 0

    signal modelActivated()

    visible: (pattern.sentence || "").length > 0

    Label {
        visible: text.length > 0
        width: Math.min(implicitWidth, line.width)
        height: line.hasModel ? link.height : implicitHeight
        text: line.pattern.before || ""
        wrapMode: Text.Wrap
        verticalAlignment: Text.AlignVCenter
        color: Theme.secondaryText
        // The link says the whole sentence.
        Accessible.ignored: line.hasModel
    }

    AbstractButton {
        id: link

        visible: line.hasModel
        implicitWidth: implicitContentWidth + leftPadding + rightPadding
        implicitHeight: Theme.minimumTouchTarget
        leftPadding: 2
        rightPadding: 2
        text: line.pattern.model || ""
        Accessible.role: Accessible.Link
        Accessible.name: line.pattern.sentence || ""
        Access.pressable: true
        onClicked: line.modelActivated()

        contentItem: Label {
            text: link.text
            verticalAlignment: Text.AlignVCenter
            color: Theme.primary
            font.italic: true
            font.underline: true
            font.weight: Font.DemiBold
        }
        background: Rectangle {
            radius: 6
            color: link.down ? Theme.separator : "transparent"
        }
    }

    Label {
        visible: text.length > 0
        height: link.height
        text: line.pattern.after || ""
        verticalAlignment: Text.AlignVCenter
        color: Theme.secondaryText
        Accessible.ignored: true
    }
}
