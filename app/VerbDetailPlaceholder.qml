import QtQuick
import QtQuick.Controls
import Norvella.Lists
import Norvella.Resources

// The detail column until the conjugation screen takes its place: the chosen
// verb's infinitive and translation.
Page {
    id: page

    // The chosen verb (a VerbRef), or null.
    property QtObject verb: null
    // The database queue (a DatabaseQueueRef), for the screen that replaces this one.
    property QtObject queue: null
    property bool showsBackButton: false

    signal backRequested()

    VerbSummary {
        id: summary
        verb: page.verb
    }

    header: NavigationBar {
        title: summary.italian
        leading: ToolButton {
            visible: page.showsBackButton
            width: Theme.minimumTouchTarget
            height: Theme.minimumTouchTarget
            icon.source: "qrc:/norvella/icons/back.svg"
            icon.color: Theme.barText
            background: null
            Accessible.name: L10n.text("action.back")
            onClicked: page.backRequested()
        }
    }

    background: Rectangle { color: Theme.background }

    Column {
        anchors.centerIn: parent
        width: Math.min(parent.width - 48, 480)
        spacing: 8
        visible: summary.hasVerb

        Label {
            width: parent.width
            horizontalAlignment: Text.AlignHCenter
            wrapMode: Text.WordWrap
            text: summary.italian
            color: Theme.text
            font.bold: true
            font.pointSize: page.font.pointSize * 2
            Accessible.role: Accessible.Heading
        }
        Label {
            width: parent.width
            horizontalAlignment: Text.AlignHCenter
            wrapMode: Text.WordWrap
            text: summary.translation
            color: Theme.secondaryText
            font.pointSize: page.font.pointSize * 1.2
        }
    }

    Label {
        anchors.centerIn: parent
        width: Math.min(300, parent.width - 32)
        visible: !summary.hasVerb
        horizontalAlignment: Text.AlignHCenter
        wrapMode: Text.WordWrap
        text: L10n.text("detail.empty")
        color: Theme.secondaryText
    }
}
