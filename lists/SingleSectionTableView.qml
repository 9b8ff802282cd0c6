import QtQuick
import Norvella.Lists

// A one-section verb list with a destructive swipe and an empty state.
Item {
    id: view

    property SingleSectionListController controller: null
    property string emptyText
    property string accessibleName

    readonly property bool empty: controller === null || controller.showsEmptyState

    ListView {
        anchors.fill: parent
        clip: true
        model: view.controller
        boundsBehavior: Flickable.StopAtBounds
        visible: !view.empty
        Accessible.name: view.accessibleName

        delegate: VerbCell { swipeEnabled: true }

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
