import QtQuick
import QtQuick.Controls
import Norvella.App
import Norvella.Resources

// The primary column: navigation bar and the content area where the lists go.
Page {
    id: home

    property AppDelegate appDelegate

    header: NavigationBar {
        title: L10n.text("verb.list.full")
    }

    background: Rectangle { color: Theme.background }

    Label {
        anchors.centerIn: parent
        width: Math.min(300, parent.width - 40)
        horizontalAlignment: Text.AlignHCenter
        wrapMode: Text.WordWrap
        text: L10n.text("home.loading")
        color: Theme.secondaryText
    }
}
