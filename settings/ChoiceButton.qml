import QtQuick
import QtQuick.Controls
import Norvella.Resources

// One choice of a choice sheet; absent when the sheet has fewer choices.
ItemDelegate {
    id: choice

    required property var choices
    required property int choiceIndex
    property bool separatorAbove: choiceIndex > 0
    // A choice that loses the user's data for good, such as clearing the history.
    property bool destructive: false
    readonly property color destructiveColor: Theme.destructive
    signal picked(int index)

    visible: choiceIndex < choices.length
    height: visible ? implicitHeight : 0
    implicitHeight: Math.max(Theme.minimumTouchTarget + 8, implicitContentHeight + topPadding + bottomPadding)
    text: visible ? choices[choiceIndex] : ""
    Accessible.name: text
    Access.pressable: true
    onClicked: picked(choiceIndex)

    contentItem: Label {
        text: choice.text
        color: choice.destructive ? choice.destructiveColor : Theme.primary
        horizontalAlignment: Text.AlignHCenter
        verticalAlignment: Text.AlignVCenter
        wrapMode: Text.WordWrap
    }
    background: Rectangle {
        color: choice.down ? Theme.pressed : "transparent"
        Rectangle {
            visible: choice.separatorAbove
            width: parent.width
            height: 1
            color: Theme.separator
        }
    }
}
