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

        // Two or three choices: the settings have no more.
        SegmentButton {
            visible: control.titles.length > 0
            Layout.preferredWidth: control.segmentWidth
            Layout.fillHeight: true
            text: visible ? control.titles[0] : ""
            first: true
            last: 0 === control.titles.length - 1
            radius: control.radius
            checked: control.currentIndex === 0
            Accessible.name: control.accessibleContext + ": " + text
            onClicked: {
                control.selected(0);
                checked = Qt.binding(() => control.currentIndex === 0);
            }
        }
        SegmentButton {
            visible: control.titles.length > 1
            Layout.preferredWidth: control.segmentWidth
            Layout.fillHeight: true
            text: visible ? control.titles[1] : ""
            first: false
            last: 1 === control.titles.length - 1
            radius: control.radius
            checked: control.currentIndex === 1
            Accessible.name: control.accessibleContext + ": " + text
            onClicked: {
                control.selected(1);
                checked = Qt.binding(() => control.currentIndex === 1);
            }
        }
        SegmentButton {
            visible: control.titles.length > 2
            Layout.preferredWidth: control.segmentWidth
            Layout.fillHeight: true
            text: visible ? control.titles[2] : ""
            first: false
            last: 2 === control.titles.length - 1
            radius: control.radius
            checked: control.currentIndex === 2
            Accessible.name: control.accessibleContext + ": " + text
            onClicked: {
                control.selected(2);
                checked = Qt.binding(() => control.currentIndex === 2);
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
    Rectangle {
        visible: control.titles.length > 1
        x: Math.round(control.segmentWidth * 1)
        width: 1
        height: segments.height
        color: Theme.controlBorder
    }
    Rectangle {
        visible: control.titles.length > 2
        x: Math.round(control.segmentWidth * 2)
        width: 1
        height: segments.height
        color: Theme.controlBorder
    }
}
