import QtQuick
import Norvella.Lists
import Norvella.Resources

// The history tab.
SingleSectionTableView {
    emptyText: L10n.text("history.empty")
    accessibleName: L10n.text("tabs.history")
    swipeTitle: L10n.text("action.remove")
}
