import QtQml
import QtQuick
import QtQuick.Controls
import Norvella.App
import Norvella.Resources

// The window: list column and detail column side by side on wide screens,
// one stack of pages on narrow ones.
ApplicationWindow {
    id: window

    required property AppDelegate appDelegate
    readonly property bool regularWidth: width >= 700

    visible: true
    title: qsTr("Norvella")
    color: Theme.background

    Binding {
        target: window.appDelegate
        property: "collapsed"
        value: !window.regularWidth
    }

    Row {
        anchors.fill: parent

        HomeView {
            id: home
            width: window.regularWidth ? Math.min(420, Math.round(window.width * 0.4)) : window.width
            height: parent.height
            appDelegate: window.appDelegate
        }

        Rectangle {
            visible: window.regularWidth
            width: 1
            height: parent.height
            color: Theme.separator
        }

        DetailPlaceholder {
            visible: window.regularWidth
            width: window.width - home.width - 1
            height: parent.height
        }
    }
}
