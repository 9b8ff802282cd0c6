import QtQml
import QtQuick
import QtQuick.Controls
import Norvella.App
import Norvella.Conjugation
import Norvella.Export
import Norvella.Resources

// The window: the home column and the detail column side by side when both
// the list and a two-column grid fit, one stack of pages (home, then the
// chosen verb) otherwise. One conjugation screen serves both arrangements and
// moves between them, so a rotation keeps its verb, mood and place and never
// counts as another view of the verb.
ApplicationWindow {
    id: window

    required property AppDelegate appDelegate
    readonly property bool regularWidth: AdaptiveLayout.splits(width)
    readonly property real primaryWidth: AdaptiveLayout.primaryWidth(width)
    // The verb in the detail column (a VerbRef), null until one is chosen.
    property QtObject selectedVerb: null
    // The pushed page that holds the conjugation screen on narrow windows.
    property Item detailHost: null

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
    // The style writes a highlighted button's text in brightText over the highlight.
    palette.brightText: Theme.selectionText
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

    // A layout change moves the screen without the push animation.
    function pushDetail(operation) {
        if (stack.depth === 1)
            stack.push(detailPage, {}, operation === undefined ? StackView.PushTransition : operation)
        detail.forceActiveFocus()
    }

    onRegularWidthChanged: {
        if (regularWidth)
            stack.pop(null, StackView.Immediate)
        else if (!window.appDelegate.shouldCollapseSecondary(true, window.selectedVerb !== null))
            pushDetail(StackView.Immediate)
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

    Item {
        id: detailColumn
        objectName: "detailColumnArea"
        x: window.primaryWidth + 1
        visible: window.regularWidth
        width: window.width - x
        height: parent.height
    }

    VerbDetailTableView {
        id: detail
        objectName: window.detailHost && !window.regularWidth ? "detailPage" : "detailColumn"
        parent: window.detailHost && !window.regularWidth ? window.detailHost : detailColumn
        anchors.fill: parent
        verb: window.selectedVerb
        queue: window.appDelegate ? window.appDelegate.queue : null
        showsBackButton: !window.regularWidth
        onBackRequested: stack.pop()
        onExportRequested: verb => share.exportVerb(verb)
        onOpenVerbRequested: verb => home.controller.showVerbRef(verb)
    }

    Component {
        id: detailPage

        Item {
            id: host
            objectName: "detailHost"
            Component.onCompleted: window.detailHost = host // qmllint disable unqualified
            Component.onDestruction: if (window.detailHost === host) window.detailHost = null // qmllint disable unqualified
        }
    }

    ShareSheet {
        id: share
        anchorItem: detail.exportButton
    }

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
