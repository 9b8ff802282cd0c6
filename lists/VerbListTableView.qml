import QtQuick
import QtQuick.Controls
import Norvella.Lists
import Norvella.Resources

// The alphabetical list: sections by initial, a sticky header for the current
// section, and the letter index on the right. A filter above it swaps in the
// irregular verbs, most frequent first.
Control {
    id: view

    property VerbListTableViewController controller: null
    readonly property bool irregular: controller !== null && controller.showsIrregular
    readonly property IrregularVerbListController irregularVerbs: controller ? controller.irregularVerbs : null

    // Keyboard focus enters at the first row on screen.
    function takeFocus() {
        const shown = view.irregular ? irregularList : list
        shown.currentIndex = Math.max(0, shown.indexAt(8, shown.contentY + 8))
        shown.forceActiveFocus()
    }

    ListFilter {
        id: filter
        width: parent.width
        visible: view.irregularVerbs !== null && view.irregularVerbs.available
        irregular: view.irregular
        onChosen: irregular => { if (view.controller) view.controller.showsIrregular = irregular }
    }

    // A reload (a settings change, a favourite marked elsewhere) keeps the verb
    // at the top where it was, instead of jumping back to "A".
    Connections {
        target: view.controller
        property double topVerb: -1
        property int topRow: -1
        property real offset: 0
        function onModelAboutToBeReset() {
            topRow = list.indexAt(8, list.contentY + 1)
            topVerb = topRow >= 0 ? view.controller.verbIdAt(topRow) : -1
            offset = topRow >= 0 ? list.contentY - list.itemAtIndex(topRow).y : 0
        }
        function onModelReset() {
            const row = view.controller.rowForVerbId(topVerb, topRow)
            if (row < 0)
                return
            list.positionViewAtIndex(row, ListView.Beginning)
            list.contentY += offset
        }
    }

    ListView {
        id: list
        anchors.fill: parent
        anchors.topMargin: filter.visible ? filter.height : 0
        visible: !view.irregular
        clip: true
        model: view.controller
        boundsBehavior: Flickable.StopAtBounds
        Accessible.name: L10n.text("tabs.list")

        section.property: "section"
        section.criteria: ViewSection.FullString
        section.labelPositioning: ViewSection.InlineLabels | ViewSection.CurrentLabelAtStart
        section.delegate: SectionHeader {}

        delegate: VerbCell {
            swipeEnabled: true
            separatorInset: 0
            // Clear of the letter index.
            trailingInset: 28
            swipeTitle: isFavourite ? L10n.text("action.favourite.remove") : L10n.text("action.favourite")
        }
    }

    ListView {
        id: irregularList
        anchors.fill: parent
        anchors.topMargin: filter.visible ? filter.height : 0
        visible: view.irregular
        clip: true
        model: view.irregular ? view.irregularVerbs : null
        boundsBehavior: Flickable.StopAtBounds
        Accessible.name: L10n.text("list.irregular.caption")

        header: SectionHeader { section: L10n.text("list.irregular.caption") }

        delegate: VerbCell {
            swipeEnabled: true
            separatorInset: 0
            swipeTitle: isFavourite ? L10n.text("action.favourite.remove") : L10n.text("action.favourite")
        }
    }

    SectionIndex {
        anchors.right: parent.right
        anchors.top: list.top
        anchors.bottom: parent.bottom
        visible: !view.irregular && view.controller !== null && view.controller.keys.length > 0
        titles: view.controller ? view.controller.keys : []
        font.bold: true
        font.pixelSize: Theme.secondarySize
        onTitleActivated: title => {
            const row = view.controller.firstRowForSectionIndexTitle(title)
            if (row >= 0)
                list.positionViewAtIndex(row, ListView.Beginning)
        }
    }
}
