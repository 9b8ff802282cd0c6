import QtQuick
import Norvella.Resources

// Two exclusive choices side by side, the current one filled.
Row {
    id: control

    property var titles: []
    property int currentIndex: -1
    property string accessibleContext
    signal selected(int index)

    SegmentButton {
        width: control.width / 2
        text: control.titles.length > 0 ? control.titles[0] : ""
        checked: control.currentIndex === 0
        Accessible.name: control.accessibleContext + ": " + text
        Access.pressable: true
        onClicked: {
            control.selected(0);
            checked = Qt.binding(() => control.currentIndex === 0);
        }
    }

    SegmentButton {
        width: control.width / 2
        text: control.titles.length > 1 ? control.titles[1] : ""
        checked: control.currentIndex === 1
        Accessible.name: control.accessibleContext + ": " + text
        Access.pressable: true
        onClicked: {
            control.selected(1);
            checked = Qt.binding(() => control.currentIndex === 1);
        }
    }
}
