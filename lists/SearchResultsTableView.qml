import QtQuick
import Norvella.Lists
import Norvella.Resources

// The search results, covering the tabs while the search is active.
Rectangle {
    id: view

    property SearchResultsTableViewController controller: null

    color: Theme.background

    ListView {
        anchors.fill: parent
        clip: true
        model: view.controller
        boundsBehavior: Flickable.StopAtBounds
        Accessible.name: L10n.text("search.results")

        delegate: VerbCell {}
    }
}
