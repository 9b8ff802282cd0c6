import QtQuick
import QtQuick.Controls
import Norvella.Resources

// One segment of a segmented control; the outer ends follow the outline's rounding.
// A RadioButton for its role: Qt Quick Controls 6.4 report a control's built-in
// role whatever Accessible.role says.
RadioButton {
    id: segment

    property bool first: false
    property bool last: false
    property real radius: 0

    implicitHeight: Math.max(Theme.minimumTouchTarget, implicitContentHeight + topPadding + bottomPadding)
    padding: 6
    // Three segments share a small phone's width; at large text every pixel goes to the word.
    leftPadding: 2
    rightPadding: 2
    checkable: true
    autoExclusive: true
    spacing: 0
    indicator: null
    Accessible.checkable: true
    Accessible.checked: checked
    Access.pressable: true

    contentItem: Label {
        text: segment.text
        color: segment.checked ? Theme.selectionText : Theme.text
        // The filled segment marks the choice; a bold face would not fit three words on a small phone.
        horizontalAlignment: Text.AlignHCenter
        verticalAlignment: Text.AlignVCenter
        // A long word takes a second line rather than a smaller size.
        wrapMode: Text.WordWrap
        maximumLineCount: 2
        elide: Text.ElideRight
        Accessible.ignored: true
    }
    background: Item {
        readonly property color fill: segment.checked ? Theme.selection
                                                      : (segment.down ? Theme.pressed : Theme.background)
        // Rounded on the outer side only: a rounded shape with its inner half squared off.
        Rectangle {
            anchors.fill: parent
            radius: segment.first || segment.last ? segment.radius : 0
            color: parent.fill
        }
        Rectangle {
            visible: (segment.first || segment.last) && !(segment.first && segment.last)
            x: segment.first ? parent.width / 2 : 0
            width: parent.width / 2
            height: parent.height
            color: parent.fill
        }
    }
}
