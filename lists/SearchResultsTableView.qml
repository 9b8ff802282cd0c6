import QtQuick
import Norvella.Lists
import Norvella.Resources

// The search results, covering the tabs while the search is active.
Rectangle {
    id: view

    property SearchResultsTableViewController controller: null

    // Keyboard focus enters at the first row on screen.
    function takeFocus() {
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

        delegate: VerbCell {}
    }

    EmptyState {
        anchors.fill: parent
        visible: view.controller !== null && results.count === 0 && view.controller.query.length > 0
        text: L10n.text("search.no_results")
    }
}
