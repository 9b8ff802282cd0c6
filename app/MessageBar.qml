import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Norvella.Resources

// A passing notice near the bottom of the window, such as a change that could
// not be saved: one at a time, each for a few seconds (longer while the pointer
// rests on it) or until closed; notices posted meanwhile wait their turn.
Control {
    id: bar

    // The notice on show; empty when there is none.
    property string text: ""
    property var waiting: []
    property int duration: 6000

    function show(message: string) {
        if (message.length === 0 || waiting.indexOf(message) >= 0)
            return
        if (message === text) {
            timer.restart()
        } else if (text.length > 0) {
            waiting = waiting.concat([message])
        } else {
            text = message
            timer.restart()
        }
    }

    function dismiss() {
        if (waiting.length > 0) {
            text = waiting[0]
            waiting = waiting.slice(1)
            timer.restart()
        } else {
            timer.stop()
            text = ""
        }
    }

    visible: text.length > 0
    leftPadding: 16
    rightPadding: 4
    topPadding: 4
    bottomPadding: 4
    Accessible.role: Accessible.AlertMessage
    Accessible.name: text

    background: Rectangle {
        radius: 8
        color: Theme.notice
    }

    contentItem: RowLayout {
        spacing: 8

        Label {
            Layout.fillWidth: true
            Layout.topMargin: 8
            Layout.bottomMargin: 8
            text: bar.text
            color: Theme.noticeText
            wrapMode: Text.Wrap
            Accessible.ignored: true
        }

        ToolButton {
            objectName: "messageBarClose"
            Layout.preferredWidth: Theme.minimumTouchTarget
            Layout.preferredHeight: Theme.minimumTouchTarget
            Layout.alignment: Qt.AlignVCenter
            icon.source: "qrc:/norvella/icons/clear.svg"
            icon.color: Theme.noticeText
            icon.width: 20
            icon.height: 20
            hoverEnabled: false
            Accessible.name: L10n.text("common.close")
            Access.pressable: true
            background: Rectangle {
                readonly property ToolButton button: parent as ToolButton
                radius: 6
                color: button && (button.down || button.visualFocus) ? Theme.noticePressed : "transparent"
            }
            onClicked: bar.dismiss()
        }
    }

    HoverHandler { id: hover }

    Timer {
        id: timer
        interval: bar.duration
        running: bar.visible && !hover.hovered
        onTriggered: bar.dismiss()
    }
}
