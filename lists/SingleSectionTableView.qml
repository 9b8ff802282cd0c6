import QtQuick
import Norvella.Lists

// A one-section verb list with a destructive swipe and an empty state.
Item {
    id: view

    property SingleSectionListController controller: null
    property string emptyText
    property string accessibleName
    property string swipeTitle

    readonly property bool empty: controller === null || controller.showsEmptyState

    // Keyboard focus enters at the first row on screen.
    function takeFocus() {
        rows.currentIndex = Math.max(0, rows.indexAt(8, rows.contentY + 8))
        rows.forceActiveFocus()
    }

    ListView {
        id: rows
        anchors.fill: parent
        clip: true
        model: view.controller
        boundsBehavior: Flickable.StopAtBounds
        visible: !view.empty
        Accessible.name: view.accessibleName

        // The rows are created inside this file, so the outer id is always there; the
        // linter cannot see that across the delegate's component boundary.
        delegate: VerbCell { swipeEnabled: true; swipeTitle: view.swipeTitle } // qmllint disable unqualified

        remove: Transition {
            NumberAnimation { property: "opacity"; to: 0; duration: 180 }
        }
        displaced: Transition {
            NumberAnimation { property: "y"; duration: 180 }
        }
    }

    EmptyState {
        anchors.fill: parent
        visible: view.empty
        text: view.emptyText
    }
}
