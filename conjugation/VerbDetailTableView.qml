import QtQuick
import QtQuick.Controls
import Norvella.Conjugation
import Norvella.Resources
import Norvella.Export as Export

// The conjugation screen: one verb's forms, a mood at a time, as a table of
// titled sections where two tense blocks do not fit side by side and as a grid
// of blocks where they do. A change of size keeps the tense at the top.
Page {
    id: screen

    // The verb to show (a VerbRef) and the verb repository, which holds the database queue.
    property QtObject verb
    property QtObject queue
    // Shown as a preview: no mood selector and no toolbar.
    property bool peeking: false
    property bool showsBackButton: false
    // The grid once two tense blocks fit side by side.
    readonly property bool regularWidth: AdaptiveLayout.usesGrid(width)
    // A phone on its side: slim bars, the mood control beside the title. Read
    // from the room the screen is given, not from its own height: the bars'
    // heights depend on this, and through them the screen's implicit height.
    readonly property bool compact: AdaptiveLayout.compact(parent ? parent.height : 0)
    // The section at the top of whichever presentation shows: 0 the verb, then
    // the tenses of the mood. Read from the scrolling, restored after a resize.
    property int placeSection: 0
    property bool keepingPlace: false
    // For the window's collapse rule: an empty detail column may be dropped.
    readonly property bool hasVerb: controller.hasVerb
    readonly property Item exportButton: toolbar.exportButton

    signal backRequested()
    signal exportRequested(QtObject verb)
    // Another verb to open the normal way (the model this one conjugates like).
    signal openVerbRequested(QtObject verb)

    // Shows a mood as if its segment were chosen: 0 indicative, 1 subjunctive,
    // 2 conditional, 3 other forms.
    function selectMood(index: int) {
        controller.selectVerbTypes(index)
    }

    function notePlace(presentation: Item) {
        if (!keepingPlace && presentation.visible)
            placeSection = presentation === grid ? grid.sectionAtTop() : table.sectionAtTop()
    }

    function showPlace() {
        if (regularWidth)
            grid.showSection(placeSection)
        else
            table.showSection(placeSection)
    }

    // Hold the place from the first moment of a resize: the presentations
    // scroll while their content rewraps, and that is not the user moving.
    // The blocks and sections settle over the next frames, so the place is
    // shown again on each of a few frames before the scrolling is the user's.
    property int framesToHold: 0
    function keepPlace() {
        framesToHold = 3
        releasePlace.restart()
        if (keepingPlace)
            return
        keepingPlace = true
        showPlaceLater.restart()
    }
    Timer {
        id: showPlaceLater
        interval: 0
        onTriggered: screen.showPlace()
    }
    Connections {
        target: screen.Window.window
        enabled: screen.keepingPlace
        function onFrameSwapped() {
            screen.showPlace()
            if (--screen.framesToHold <= 0)
                releasePlace.triggered()
        }
    }
    // Also when no frame comes (nothing changed on screen).
    Timer {
        id: releasePlace
        interval: 250
        onTriggered: {
            stop()
            if (screen.keepingPlace)
                screen.showPlace()
            screen.keepingPlace = false
        }
    }

    onWidthChanged: keepPlace()
    onHeightChanged: keepPlace()
    Connections {
        target: controller
        function onSelectedSegmentChanged() { screen.placeSection = 0 }
        function onVerbChanged() { screen.placeSection = 0 }
    }

    background: Rectangle { color: Theme.groupedBackground }

    // Left and Right step through the moods from anywhere on the screen.
    Keys.onLeftPressed: if (controller.segmentsVisible) controller.selectVerbTypes(Math.max(0, controller.selectedSegment - 1))
    Keys.onRightPressed: if (controller.segmentsVisible) controller.selectVerbTypes(Math.min(3, controller.selectedSegment + 1))

    VerbDetailTableViewController {
        id: controller
        verb: screen.verb
        queue: screen.queue
        peeking: screen.peeking
        onAlertRequested: message => alert.show(message)
        onMatchRevealRequested: revealLater.restart()
        onOpenVerbRequested: verb => screen.openVerbRequested(verb)
    }

    // Opened from a searched form: its section or block comes into view, once
    // the presentation shown has its size (a column just given its first verb
    // is laid out after this).
    property int pendingReveal: -1
    function revealMatch() {
        pendingReveal = controller.matchedSection
        revealPending()
    }
    function revealPending() {
        if (pendingReveal < 0)
            return
        const view = screen.regularWidth ? grid : table
        if (!view.visible || view.height <= 0)
            return
        if (screen.regularWidth)
            grid.revealBlock(pendingReveal - 1)
        else
            table.revealSection(pendingReveal)
        pendingReveal = -1
    }
    Component.onCompleted: {
        // Tab walks the page's children in order, and Page adds the footer
        // first, so the first Tab went to the bottom toolbar: moving the
        // footer to the end of the children puts it last, as it reads.
        toolbar.parent = null
        toolbar.parent = screen
        if (controller.matchedSection >= 0)
            revealLater.restart()
    }

    // After the bindings and the reset views have settled.
    Timer {
        id: revealLater
        interval: 0
        onTriggered: screen.revealMatch()
    }
    Timer {
        id: pendingLater
        interval: 0
        onTriggered: screen.revealPending()
    }

    header: DetailBar {
        id: bar
        compact: screen.compact
        title: controller.title
        showsBackButton: screen.showsBackButton
        onBackRequested: screen.backRequested()
    }

    footer: DetailToolbar {
        id: toolbar
        compact: screen.compact
        visible: controller.toolbarVisible
        favouriteIcon: controller.favouriteIcon
        favouriteName: controller.favouriteName
        reportName: controller.reportName
        onFavouriteClicked: controller.toggleFavourite()
        onReportClicked: reportMail.sendEmail()
        onExportClicked: screen.exportRequested(screen.verb)
    }

    Item {
        id: moodArea
        width: parent.width
        height: moods.visible && !screen.compact ? moods.implicitHeight : 0
    }

    MoodSelector {
        id: moods
        // On a phone on its side the title bar has room for the moods, and the
        // forms get the height a row of its own would take.
        parent: screen.compact ? bar.accessoryArea : moodArea
        anchors.fill: parent
        compact: screen.compact
        visible: controller.segmentsVisible
        titles: controller.segmentTitles
        currentIndex: controller.selectedSegment
        onSegmentSelected: index => controller.selectVerbTypes(index)
    }

    // The width decides which presentation shows, and only that one is fed:
    // the hidden one would keep a delegate for every form of the mood (the
    // grid makes all its blocks at once), megabytes no one sees.
    ConjugationTable {
        id: table
        objectName: "conjugationTable"
        anchors.top: moodArea.bottom
        anchors.bottom: parent.bottom
        width: parent.width
        visible: controller.hasVerb && !screen.regularWidth
        model: screen.regularWidth ? null : controller.tableModel
        onModelVerbActivated: controller.openModelVerb()
        onHeightChanged: pendingLater.restart()
        onContentYChanged: screen.notePlace(table)
        onVisibleChanged: screen.keepPlace()
    }

    ConjugationGrid {
        id: grid
        objectName: "conjugationGrid"
        anchors.top: moodArea.bottom
        anchors.bottom: parent.bottom
        width: parent.width
        visible: controller.hasVerb && screen.regularWidth
        model: screen.regularWidth ? controller.gridModel : null
        heading: controller.verbRowText
        notes: controller.usageNotes
        pattern: controller.pattern
        onModelVerbActivated: controller.openModelVerb()
        onHeightChanged: pendingLater.restart()
        onContentYChanged: screen.notePlace(grid)
        onVisibleChanged: screen.keepPlace()
    }

    SelectVerbLabel {
        anchors.centerIn: parent
        width: Math.min(implicitWidth, parent.width - 40)
        visible: controller.selectVerbVisible
        text: controller.selectVerbText
    }

    AlertDialog {
        id: alert
    }

    Export.SupportEmailSender {
        id: reportMail
        sender: screen
        topic: controller.reportSubject
        details: controller.reportDetails
    }

    Export.AlertDialog { sender: reportMail }
}
