import QtQuick
import Norvella.Lists
import Norvella.Resources

// The search results, covering the tabs while the search is active.
Rectangle {
    id: view

    property SearchResultsTableViewController controller: null

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
