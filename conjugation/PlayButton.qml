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

    // At rest the ring is only its track: a plain circle costs the software
    // renderer nothing, where every painted ring keeps an image and a painter
    // of its own, and a verb's page has one in each of its rows.
    Rectangle {
        z: -1
        anchors.centerIn: parent
        width: 34
        height: 34
        radius: 17
        color: Theme.pressed
        visible: !ring.visible
    }

    RoundProgressView {
        id: ring
        z: -1
        anchors.centerIn: parent
        width: 34
        height: 34
        tintColor: Theme.primary
        trackColor: Theme.pressed
        visible: button.speaking || progress > 0
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
