import QtQuick
import QtQuick.Layouts
import Norvella.Resources

// Exclusive choices in one rounded outline, divided by lines; the current one
// is filled with the selection colour. Screen readers hear a group of radio
// buttons with the current one checked.
Item {
    id: control

    property var titles: []
    property int currentIndex: -1
    property string accessibleContext
    signal selected(int index)

    readonly property real radius: 8
    readonly property real segmentWidth: titles.length > 0 ? width / titles.length : width

    implicitHeight: segments.implicitHeight
    Accessible.role: Accessible.Grouping
    Accessible.name: accessibleContext

    // As tall as the tallest segment, so a wrapped title fits and all stay level.
    RowLayout {
        id: segments
        width: parent.width
        spacing: 0

        Repeater {
            model: control.titles

            SegmentButton {
                required property int index
                required property string modelData

                Layout.preferredWidth: control.segmentWidth
                Layout.fillHeight: true
                text: modelData
                first: index === 0
                last: index === control.titles.length - 1
                radius: control.radius
                checked: control.currentIndex === index
                Accessible.name: control.accessibleContext + ": " + text
                onClicked: {
                    control.selected(index);
                    checked = Qt.binding(() => control.currentIndex === index);
                }
            }
        }
    }

    // One outline over all the segments, with a line between neighbours.
    Rectangle {
        anchors.fill: segments
        radius: control.radius
        color: "transparent"
        border.color: Theme.controlBorder
        border.width: 1
    }
    Repeater {
        model: Math.max(0, control.titles.length - 1)

        Rectangle {
            required property int index
            x: Math.round(control.segmentWidth * (index + 1))
            width: 1
            height: segments.height
            color: Theme.controlBorder
        }
    }
}
