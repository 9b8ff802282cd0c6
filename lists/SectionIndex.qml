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
    Accessible.role: Accessible.ScrollBar
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

            Label {
                required property string modelData
                anchors.horizontalCenter: parent ? parent.horizontalCenter : undefined
                topPadding: 1
                bottomPadding: 1
                text: modelData
                color: Theme.primary
                Accessible.role: Accessible.StaticText
                Accessible.name: modelData
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
