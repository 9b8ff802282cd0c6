import QtQuick
import QtQuick.Controls
import Norvella.Resources
import Norvella.Conjugation

// Play or pause image inside the ring that fills while the form is spoken.
Button {
    id: button

    property bool speaking: false
    readonly property RoundProgressView ring: ring

    implicitWidth: Theme.minimumTouchTarget
    implicitHeight: Theme.minimumTouchTarget
    padding: 0
    display: AbstractButton.IconOnly
    icon.source: speaking ? "qrc:/norvella/icons/pause.svg" : "qrc:/norvella/icons/play.svg"
    icon.color: Theme.primary
    icon.width: 16
    icon.height: 16
    background: null
    Access.pressable: true

    RoundProgressView {
        id: ring
        z: -1
        anchors.centerIn: parent
        width: 34
        height: 34
        tintColor: Theme.primary
        trackColor: Theme.pressed
    }

    Rectangle {
        z: -1
        anchors.centerIn: parent
        width: 28
        height: 28
        radius: 14
        color: button.down ? Theme.pressed : Theme.background
    }
}
