import QtQuick
import QtQuick.Controls
import Norvella.Resources

// Two chips above the alphabetical list: every verb, or only the irregular ones.
Rectangle {
    id: filter

    property bool irregular: false
    signal chosen(bool irregular)

    implicitHeight: chips.implicitHeight + 16
    color: Theme.background
    Accessible.role: Accessible.PageTabList
    Accessible.name: L10n.text("list.filter.name")

    Rectangle {
        anchors.bottom: parent.bottom
        width: parent.width
        height: 1
        color: Theme.separator
    }

    Row {
        id: chips
        x: 16
        y: 8
        spacing: 8

        Repeater {
            model: [
                { irregular: false, title: L10n.text("list.filter.all") },
                { irregular: true, title: L10n.text("list.filter.irregular") }
            ]

            // A TabButton for its role (see MoodSegment); the choice is `selected`.
            TabButton {
                id: chip

                required property var modelData
                // The delegates are made in this file, so the outer id is always there.
                readonly property bool selected: modelData.irregular === filter.irregular // qmllint disable unqualified

                implicitHeight: Theme.minimumTouchTarget
                implicitWidth: Math.max(Theme.minimumTouchTarget, implicitContentWidth + 32)
                text: modelData.title
                checkable: false
                padding: 0
                Accessible.name: text
                Accessible.selectable: true
                Accessible.selected: selected
                Access.pressable: true
                onClicked: filter.chosen(modelData.irregular) // qmllint disable unqualified

                // A filled chip with bold text: the choice shows by more than its colour.
                background: Rectangle {
                    anchors.verticalCenter: parent.verticalCenter
                    width: parent.width
                    height: Math.min(parent.height, 34)
                    radius: height / 2
                    color: chip.selected ? Theme.selection : "transparent"
                    border.width: chip.selected ? 0 : 1
                    border.color: Theme.separator
                }
                contentItem: Label {
                    text: chip.text
                    horizontalAlignment: Text.AlignHCenter
                    verticalAlignment: Text.AlignVCenter
                    font.bold: chip.selected
                    color: chip.selected ? Theme.selectionText : Theme.text
                }
            }
        }
    }
}
