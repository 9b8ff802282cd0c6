import QtQuick
import Norvella.Resources

// The four-segment mood control; the chosen segment is filled with the selection colour.
Rectangle {
    id: selector

    property var titles: []
    property int currentIndex: 0

    signal segmentSelected(int index)

    // Taller when large text wraps a mood's name.
    implicitHeight: Math.max(Theme.minimumTouchTarget, segments.labelHeight + 12) + 16
    color: Theme.background
    Accessible.role: Accessible.PageTabList
    Accessible.name: L10n.text("conjugation.moods")

    Rectangle {
        id: frame
        anchors.centerIn: parent
        // A wide screen keeps the control to a comfortable reach, centred.
        width: Math.floor(Math.min(parent.width - 16, 560) / 4) * 4
        height: Math.round(parent.height - 16)
        radius: 8
        color: "transparent"

        Row {
            id: segments
            anchors.fill: parent
            readonly property real segmentWidth: width / 4
            readonly property real labelHeight: Math.max(mood0.implicitContentHeight, mood1.implicitContentHeight,
                                                         mood2.implicitContentHeight, mood3.implicitContentHeight)

            MoodSegment {
                id: mood0
                width: segments.segmentWidth
                height: segments.height
                text: selector.titles.length > 0 ? selector.titles[0] : ""
                selected: selector.currentIndex === 0
                radius: frame.radius
                first: true
                onClicked: selector.segmentSelected(0)
            }
            MoodSegment {
                id: mood1
                width: segments.segmentWidth
                height: segments.height
                text: selector.titles.length > 1 ? selector.titles[1] : ""
                selected: selector.currentIndex === 1
                onClicked: selector.segmentSelected(1)
            }
            MoodSegment {
                id: mood2
                width: segments.segmentWidth
                height: segments.height
                text: selector.titles.length > 2 ? selector.titles[2] : ""
                selected: selector.currentIndex === 2
                onClicked: selector.segmentSelected(2)
            }
            MoodSegment {
                id: mood3
                width: segments.segmentWidth
                height: segments.height
                text: selector.titles.length > 3 ? selector.titles[3] : ""
                selected: selector.currentIndex === 3
                radius: frame.radius
                last: true
                onClicked: selector.segmentSelected(3)
            }
        }
    }

    // The frame's outline drawn over the filled segments.
    Rectangle {
        anchors.fill: frame
        radius: frame.radius
        color: "transparent"
        border.color: Theme.controlBorder
        border.width: 1
    }
}
