import QtQuick
import QtQuick.Controls
import Norvella.Resources

// One segment of the mood control; the outer ends follow the frame's rounding.
// A TabButton for its role: Qt Quick Controls 6.4 report a control's built-in
// role whatever Accessible.role says. The choice is `selected`, not a toggle.
TabButton {
    id: segment

    property bool selected: false
    property bool first: false
    property bool last: false
    property real radius: 0
    // The widest word of the name, bold as when chosen, with the label's padding:
    // the narrowest this segment may be without breaking a word.
    readonly property int labelPadding: 4
    readonly property real wordWidth: {
        let widest = 0
        for (const word of text.split(/\s+/))
            widest = Math.max(widest, boldMetrics.advanceWidth(word))
        return Math.ceil(widest) + 2 * labelPadding + 2
    }

    FontMetrics {
        id: boldMetrics
        font.family: segment.font.family
        font.pixelSize: Theme.captionSize
        font.bold: true
    }

    checkable: false
    padding: 0
    Accessible.name: text
    Accessible.checked: selected
    Accessible.selectable: true
    Accessible.selected: selected
    Access.pressable: true

    background: Item {
        readonly property color fill: segment.selected ? Theme.selection
                                                       : (segment.down ? Theme.pressed : Theme.background)

        // Rounded on the outer side only: a rounded shape with its inner half squared off.
        Rectangle {
            anchors.fill: parent
            radius: segment.first || segment.last ? segment.radius : 0
            color: parent.fill
        }
        Rectangle {
            visible: segment.first || segment.last
            x: segment.first ? parent.width / 2 : 0
            width: parent.width / 2
            height: parent.height
            color: parent.fill
        }
        Rectangle {
            visible: !segment.first
            width: 1
            height: parent.height
            color: Theme.controlBorder
        }
    }

    contentItem: Label {
        text: segment.text
        color: segment.selected ? Theme.selectionText : Theme.text
        font.bold: segment.selected
        horizontalAlignment: Text.AlignHCenter
        verticalAlignment: Text.AlignVCenter
        leftPadding: segment.labelPadding
        rightPadding: segment.labelPadding
        // The tab size, as on the bottom tabs. Two-word names ("Andere Formen") take a
        // second line; a word is never broken, the selector widens its segments
        // to the longest word instead (see wordWidth).
        font.pixelSize: Theme.captionSize
        wrapMode: Text.WordWrap
        maximumLineCount: 3
        Accessible.ignored: true
    }
}
