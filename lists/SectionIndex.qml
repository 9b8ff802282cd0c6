import QtQuick
import QtQuick.Controls
import Norvella.Resources

// The letter strip at the right edge of the alphabetical list: pressing or
// dragging over it jumps to the letter under the finger. The letters shrink
// together when the strip is too short for all of them.
Control {
    id: strip

    property var titles: []
    signal titleActivated(string title)

    implicitWidth: 28
    // Row separators run under the strip; a plain backing keeps the letters clean.
    background: Rectangle { color: Theme.background; opacity: 0.92 }
    Accessible.role: Accessible.Grouping
    Accessible.name: L10n.text("list.index")

    function activateAt(x, y) {
        if (titles.length === 0)
            return
        const local = letters.mapFromItem(strip, x, y)
        const position = Math.floor(local.y / (letters.implicitHeight / titles.length))
        strip.titleActivated(titles[Math.max(0, Math.min(titles.length - 1, position))])
    }

    Column {
        id: letters
        anchors.centerIn: parent
        width: strip.width
        scale: Math.min(1, (strip.height - 8) / Math.max(1, implicitHeight))

        Repeater {
            model: strip.titles

            // Buttons for the screen reader, whose user cannot drag over the
            // strip; a finger is served by the MouseArea above them.
            AbstractButton {
                id: letter

                required property string modelData
                anchors.horizontalCenter: parent ? parent.horizontalCenter : undefined
                padding: 0
                topPadding: 1
                bottomPadding: 1
                text: modelData
                focusPolicy: Qt.NoFocus
                Accessible.name: modelData
                Access.pressable: true
                onClicked: strip.titleActivated(modelData) // qmllint disable unqualified
                background: null
                contentItem: Label {
                    text: letter.text
                    color: Theme.primary
                    horizontalAlignment: Text.AlignHCenter
                    Accessible.ignored: true
                }
            }
        }
    }

    MouseArea {
        // Wider than the letters, so the strip is easy to hit.
        anchors.fill: parent
        anchors.leftMargin: strip.width - Theme.minimumTouchTarget
        preventStealing: true
        onPressed: mouse => strip.activateAt(mouse.x, mouse.y)
        onPositionChanged: mouse => strip.activateAt(mouse.x, mouse.y)
    }
}
