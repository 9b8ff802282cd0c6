import QtQuick
import Norvella.Lists
import Norvella.Resources

// The favourites tab.
SingleSectionTableView {
    emptyText: L10n.text("favourites.empty")
    accessibleName: L10n.text("tabs.favourites")
    swipeTitle: L10n.text("action.favourite.remove")
}
