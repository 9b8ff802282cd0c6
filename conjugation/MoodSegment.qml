import QtQuick
import QtQuick.Controls
import Norvella.Resources

// One segment of the mood control; the outer ends follow the frame's rounding.
AbstractButton {
    id: segment

    property bool selected: false
    property bool first: false
    property bool last: false
    property real radius: 0

    Accessible.role: Accessible.PageTab
    Accessible.name: text
    Accessible.checked: selected
    Accessible.selectable: true
    Accessible.selected: selected
    Access.pressable: true

    background: Item {
        readonly property color fill: segment.selected ? Theme.secondary
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
            color: Theme.segmentTint
        }
    }

    contentItem: Label {
        text: segment.text
        color: segment.selected ? Theme.barText : Theme.segmentTint
        font.bold: segment.selected
        horizontalAlignment: Text.AlignHCenter
        verticalAlignment: Text.AlignVCenter
        leftPadding: 4
        rightPadding: 4
        // Two-word names ("Andere Formen", "Overige vormen") take a second line before
        // they shrink; a long single word shrinks.
        wrapMode: Text.WordWrap
        maximumLineCount: 2
        fontSizeMode: Text.Fit
        minimumPointSize: 7
        Accessible.ignored: true
    }
}
