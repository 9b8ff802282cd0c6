import QtQuick
import QtQuick.Controls
import Norvella.Resources

// An icon button for the top and bottom bars, at least a touch target in size.
ToolButton {
    id: button

    property color pressedColor: Theme.pressed

    implicitWidth: Theme.minimumTouchTarget
    implicitHeight: Theme.minimumTouchTarget
    icon.width: 26
    icon.height: 26
    display: AbstractButton.IconOnly
    Access.pressable: true

    background: Rectangle {
        radius: 8
        color: button.down ? button.pressedColor : "transparent"
    }
}
