import QtQuick
import QtQuick.Controls
import QtQuick.Controls.impl
import Norvella.Lists
import Norvella.Resources

// The action uncovered at the trailing end of a swiped row.
Control {
    id: view

    // Set by the row once the list has built it.
    property SwipeAction action: null
    // What lies over the row's trailing end (the letter index): the action
    // reaches under it, its title stays clear of it.
    property real trailingInset: 0

    anchors.right: parent ? parent.right : undefined
    height: parent ? parent.height : 0
    width: Math.max(96, label.implicitWidth + 24) + trailingInset
    opacity: SwipeDelegate.pressed ? 0.8 : 1
    Accessible.role: Accessible.Button
    Accessible.name: action ? action.title : ""
    Access.pressable: true
    Access.onActivated: if (action) action.trigger()
    SwipeDelegate.onClicked: if (action) action.trigger()

    background: Rectangle {
        color: view.action ? view.action.backgroundColor : Theme.separator
    }

    IconLabel {
        id: label
        anchors.verticalCenter: parent.verticalCenter
        x: Math.round((view.width - view.trailingInset - width) / 2)
        display: IconLabel.TextUnderIcon
        spacing: 4
        text: view.action ? view.action.title : ""
        icon.source: view.action ? view.action.iconSource : ""
        icon.color: view.action ? view.action.foregroundColor : Theme.text
        icon.width: 22
        icon.height: 22
        font.pixelSize: Theme.secondarySize
        color: view.action ? view.action.foregroundColor : Theme.text
    }
}
