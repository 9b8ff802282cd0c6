import QtQuick
import QtQuick.Controls
import Norvella.Resources

// One half of a segmented control.
Button {
    id: segment

    implicitHeight: Math.max(Theme.minimumTouchTarget, implicitContentHeight + topPadding + bottomPadding)
    checkable: true

    contentItem: Label {
        text: segment.text
        color: segment.checked ? Theme.barText : Theme.segmentTint
        horizontalAlignment: Text.AlignHCenter
        verticalAlignment: Text.AlignVCenter
        elide: Text.ElideRight
    }
    background: Rectangle {
        color: segment.checked ? Theme.segmentTint : (segment.down ? Theme.pressed : Theme.background)
        border.color: Theme.segmentTint
        border.width: 1
        radius: 6
    }
}
