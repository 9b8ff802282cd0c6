import QtQuick
import QtQuick.Controls
import Norvella.Lists
import Norvella.Resources

// The alphabetical list: sections by initial, a sticky header for the current
// section, and the letter index on the right.
Control {
    id: view

    property VerbListTableViewController controller: null

    // Keyboard focus enters at the first row on screen.
    function takeFocus() {
        list.currentIndex = Math.max(0, list.indexAt(8, list.contentY + 8))
        list.forceActiveFocus()
    }

    ListView {
        id: list
        anchors.fill: parent
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

    SectionIndex {
        anchors.right: parent.right
        anchors.top: parent.top
        anchors.bottom: parent.bottom
        visible: view.controller !== null && view.controller.keys.length > 0
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
