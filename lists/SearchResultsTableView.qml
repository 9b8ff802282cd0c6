import QtQuick
import Norvella.Lists
import Norvella.Resources

// The search results, covering the tabs while the search is active: the
// readings of a typed form first, then the verbs found.
Rectangle {
    id: view

    property SearchResultsTableViewController controller: null
    readonly property int formCount: view.controller !== null ? view.controller.forms.count : 0

    // Keyboard focus enters at the first reading, or the first row on screen.
    function takeFocus() {
        if (view.formCount > 0 && results.headerItem) {
            results.positionViewAtBeginning()
            results.currentIndex = -1
            results.headerItem.forceActiveFocus()
            return
        }
        results.currentIndex = Math.max(0, results.indexAt(8, results.contentY + 8))
        results.forceActiveFocus()
    }

    color: Theme.background

    ListView {
        id: results
        anchors.fill: parent
        clip: true
        model: view.controller
        boundsBehavior: Flickable.StopAtBounds
        Accessible.name: L10n.text("search.results")
        // Up from the first verb: back to the readings above it.
        Keys.onUpPressed: event => {
            if (results.currentIndex <= 0 && view.formCount > 0 && results.headerItem)
                results.headerItem.forceActiveFocus()
            else
                event.accepted = false
        }

        header: SearchFormsSection {}
        delegate: VerbCell {}
    }

    EmptyState {
        anchors.fill: parent
        visible: view.controller !== null && results.count === 0 && view.formCount === 0
                 && view.controller.query.length > 0
        text: L10n.text("search.no_results")
    }
}
