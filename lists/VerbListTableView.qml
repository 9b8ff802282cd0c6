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
    Timer {
        id: restoreLater
        interval: 0
        onTriggered: keepTop.restore()
    }
    Connections {
        id: keepTop
        target: view.controller // qmllint disable
        property double topVerb: -1
        property int topRow: -1
        property real offset: 0
        // The first row under the top edge; an inline section header may cover
        // the edge itself.
        function rowAtTop(): int {
            for (let y = list.contentY + 1; y < list.contentY + list.height; y += 4) {
                const row = list.indexAt(list.width / 2, y)
                if (row >= 0)
                    return row
            }
            return -1
        }
        function onModelAboutToBeReset() {
            topRow = rowAtTop()
            const item = topRow >= 0 ? list.itemAtIndex(topRow) : null
            topVerb = item ? view.controller.verbIdAt(topRow) : -1 // qmllint disable
            offset = item ? list.contentY - item.y : 0
        }
        // After the view has taken in the reset, or it would undo the scrolling.
        function onModelReset() { restoreLater.restart() }
        function restore() {
            const row = view.controller.rowForVerbId(topVerb, topRow) // qmllint disable
            if (row < 0)
                return
            // Measured from the row itself: positioning at the beginning puts a
            // section's header, not its first row, at the top.
            list.positionViewAtIndex(row, ListView.Beginning)
            const item = list.itemAtIndex(row)
            if (item)
                list.contentY = Math.max(list.originY, Math.min(item.y + offset,
                                         list.originY + list.contentHeight - list.height))
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
