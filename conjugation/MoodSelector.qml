import QtQuick
import Norvella.Resources

// The four-segment mood control; the chosen segment is filled with the selection colour.
Rectangle {
    id: selector

    property var titles: []
    property int currentIndex: 0
    // Inside the title bar: no margins of its own and the bar's colour around it.
    property bool compact: false
    readonly property real margin: compact ? 0 : 8

    signal segmentSelected(int index)

    // Taller when large text wraps a mood's name.
    implicitHeight: Math.max(Theme.minimumTouchTarget, segments.labelHeight + 12) + 2 * margin
    color: compact ? "transparent" : Theme.background
    Accessible.role: Accessible.PageTabList
    Accessible.name: L10n.text("conjugation.moods")

    // The chosen mood stays in view when the segments are wider than the control.
    onCurrentIndexChanged: strip.showSegment(currentIndex)

    Rectangle {
        id: frame
        anchors.centerIn: parent
        // A wide screen keeps the control to a comfortable reach, centred.
        width: Math.floor(Math.min(parent.width - 2 * selector.margin, 560) / 4) * 4
        height: Math.round(parent.height - 2 * selector.margin)
        radius: 8
        color: "transparent"

        // Names break between words only. When the longest word of a name is wider
        // than a quarter of the control (large text on a small phone), every segment
        // takes that width and the strip scrolls sideways instead.
        Flickable {
            id: strip
            anchors.fill: parent
            clip: contentWidth > width
            contentWidth: segments.width
            contentHeight: height
            flickableDirection: Flickable.HorizontalFlick
            boundsBehavior: Flickable.StopAtBounds
            interactive: contentWidth > width

            function showSegment(index: int) {
                const left = index * segments.segmentWidth
                const right = left + segments.segmentWidth
                if (left < contentX)
                    contentX = left
                else if (right > contentX + width)
                    contentX = Math.min(right - width, contentWidth - width)
            }
            onWidthChanged: showSegment(selector.currentIndex)

            Row {
                id: segments
                height: strip.height
                readonly property real segmentWidth: Math.max(strip.width / 4, mood0.wordWidth, mood1.wordWidth,
                                                              mood2.wordWidth, mood3.wordWidth)
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
