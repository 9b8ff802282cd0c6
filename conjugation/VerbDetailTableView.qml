import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Norvella.Conjugation
import Norvella.Resources
import Norvella.Export as Export

// The conjugation screen: one verb's forms, a mood at a time, as a table of
// titled sections on narrow screens and as a grid of tense blocks on wide ones.
Page {
    id: screen

    // The verb to show (a VerbRef) and the verb repository, which holds the database queue.
    property QtObject verb
    property QtObject queue
    // Shown as a preview: no mood selector and no toolbar.
    property bool peeking: false
    property bool showsBackButton: false
    // The grid once two tense blocks fit side by side.
    property bool regularWidth: width >= 660
    // For the window's collapse rule: an empty detail column may be dropped.
    readonly property bool hasVerb: controller.hasVerb

    signal backRequested()
    signal exportRequested(QtObject verb)
    // Another verb to open the normal way (the model this one conjugates like).
    signal openVerbRequested(QtObject verb)

    // Shows a mood as if its segment were chosen: 0 indicative, 1 subjunctive,
    // 2 conditional, 3 other forms.
    function selectMood(index: int) {
        controller.selectVerbTypes(index)
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
    Component.onCompleted: if (controller.matchedSection >= 0) revealLater.restart()

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
        title: controller.title
        showsBackButton: screen.showsBackButton
        onBackRequested: screen.backRequested()
    }

    footer: DetailToolbar {
        visible: controller.toolbarVisible
        favouriteIcon: controller.favouriteIcon
        favouriteName: controller.favouriteName
        reportName: controller.reportName
        onFavouriteClicked: controller.toggleFavourite()
        onReportClicked: reportMail.sendEmail()
        onExportClicked: screen.exportRequested(screen.verb)
    }

    ColumnLayout {
        anchors.fill: parent
        spacing: 0

        MoodSelector {
            Layout.fillWidth: true
            visible: controller.segmentsVisible
            titles: controller.segmentTitles
            currentIndex: controller.selectedSegment
            onSegmentSelected: index => controller.selectVerbTypes(index)
        }

        // Both presentations are fed together; the width decides which one shows.
        ConjugationTable {
            id: table
            Layout.fillWidth: true
            onHeightChanged: pendingLater.restart()
            Layout.fillHeight: true
            visible: controller.hasVerb && !screen.regularWidth
            model: controller.tableModel
            onModelVerbActivated: controller.openModelVerb()
        }

        ConjugationGrid {
            id: grid
            Layout.fillWidth: true
            onHeightChanged: pendingLater.restart()
            Layout.fillHeight: true
            visible: controller.hasVerb && screen.regularWidth
            model: controller.gridModel
            heading: controller.verbRowText
            notes: controller.usageNotes
            pattern: controller.pattern
            onModelVerbActivated: controller.openModelVerb()
        }
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
