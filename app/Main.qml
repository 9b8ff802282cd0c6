import QtQml
import QtQuick
import QtQuick.Controls
import Norvella.App
import Norvella.Conjugation
import Norvella.Export
import Norvella.Resources

// The window: the home column and the detail column side by side on wide
// windows, one stack of pages (home, then the chosen verb) on narrow ones.
ApplicationWindow {
    id: window

    required property AppDelegate appDelegate
    readonly property bool regularWidth: width >= 700
    readonly property real primaryWidth: regularWidth ? Math.min(420, Math.round(width * 0.4)) : width
    // The verb in the detail column (a VerbRef), null until one is chosen.
    property QtObject selectedVerb: null

    visible: true
    title: qsTr("Norvella")
    color: Theme.background
    Access.hidesBehindModals: true
    // Every control and popup inherits these, so nothing keeps the style's
    // light defaults in the dark palette or its small default type.
    font.pixelSize: Theme.bodySize
    palette.window: Theme.background
    palette.windowText: Theme.text
    palette.base: Theme.background
    palette.alternateBase: Theme.groupedBackground
    palette.text: Theme.text
    palette.button: Theme.background
    palette.buttonText: Theme.text
    palette.brightText: Theme.barText
    palette.highlight: Theme.selection
    palette.highlightedText: Theme.selectionText
    palette.placeholderText: Theme.secondaryText
    palette.toolTipBase: Theme.notice
    palette.toolTipText: Theme.noticeText
    palette.light: Theme.background
    palette.midlight: Theme.controlBorder
    palette.mid: Theme.controlBorder
    palette.dark: Theme.selection
    palette.shadow: Theme.separator
    palette.link: Theme.primary

    Binding {
        target: window.appDelegate
        property: "collapsed"
        value: !window.regularWidth
    }

    // A short notice for the user; the launch hands over those posted before
    // the window existed.
    function showMessage(text: string) { messageBar.show(text) }

    function pushDetail() {
        const properties = {verb: window.selectedVerb, queue: window.appDelegate.queue}
        if (stack.depth > 1)
            stack.replace(detailPage, properties)
        else
            stack.push(detailPage, properties)
    }

    onRegularWidthChanged: {
        if (regularWidth)
            stack.pop(null)
        else if (!window.appDelegate.shouldCollapseSecondary(true, window.selectedVerb !== null))
            pushDetail()
    }

    StackView {
        id: stack
        objectName: "stack"
        width: window.primaryWidth
        height: parent.height
        initialItem: home
    }

    HomeView {
        id: home
        appDelegate: window.appDelegate
        padIdiom: window.regularWidth
    }

    Rectangle {
        x: window.primaryWidth
        visible: window.regularWidth
        width: 1
        height: parent.height
        color: Theme.separator
    }

    VerbDetailTableView {
        id: detailColumn
        objectName: "detailColumn"
        x: window.primaryWidth + 1
        visible: window.regularWidth
        width: window.width - x
        height: parent.height
        // Hidden on narrow screens, where the pushed page shows the verb: it
        // must not load it too, or every view would count twice.
        verb: window.regularWidth ? window.selectedVerb : null
        queue: window.appDelegate ? window.appDelegate.queue : null
        onExportRequested: verb => share.exportVerb(verb)
        onOpenVerbRequested: verb => home.controller.showVerbRef(verb)
    }

    Component {
        id: detailPage

        VerbDetailTableView {
            objectName: "detailPage"
            focus: true
            showsBackButton: true
            onBackRequested: StackView.view.pop()
            onExportRequested: verb => share.exportVerb(verb)
            onOpenVerbRequested: verb => home.controller.showVerbRef(verb)
        }
    }

    ShareSheet { id: share }

    // Any link of the app that no program on the system took.
    LinkFailedDialog {}

    MessageBar {
        id: messageBar
        objectName: "messageBar"
        z: 2
        anchors.horizontalCenter: parent.horizontalCenter
        anchors.bottom: parent.bottom
        // Above the tab bar, which keeps working meanwhile.
        anchors.bottomMargin: 72
        width: Math.min(parent.width - 24, 480)
    }

    Connections {
        target: home.controller
        function onShowDetail() {
            window.selectedVerb = home.controller.detailVerb
            if (!window.regularWidth)
                window.pushDetail()
        }
    }

    Connections {
        target: window.appDelegate
        function onFocusSearchRequested() {
            stack.pop(null)
            home.focusSearch()
        }
    }

    Shortcut {
        sequences: ["Ctrl+F"]
        onActivated: {
            stack.pop(null)
            home.focusSearch()
        }
    }

    Shortcut {
        sequences: ["Esc", "Back"]
        enabled: stack.depth > 1
        onActivated: stack.pop()
    }
}
