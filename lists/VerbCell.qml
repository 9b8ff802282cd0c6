import QtQuick
import QtQuick.Controls
import QtQuick.Controls.impl
import QtQuick.Layouts
import Norvella.Lists
import Norvella.Resources

// One verb row of a list whose model is a VerbTableModel: the infinitive over
// its translation, a star for a favourite, and, where the list offers one, a
// trailing swipe action built when the row starts to slide.
SwipeDelegate {
    id: cell

    required property int index
    required property string italian
    required property string translation
    required property bool isFavourite
    required property double verbId
    readonly property VerbTableModel table: ListView.view ? ListView.view.model : null
    property bool swipeEnabled: false
    property real separatorInset: 16
    property real trailingInset: 0
    property SwipeAction swipeAction: null
    // The swipe action's title, for those who reach it without swiping.
    property string swipeTitle
    // The verb open in the detail column beside the list.
    readonly property bool current: table !== null && table.highlightedVerbId === verbId

    width: ListView.view ? ListView.view.width : implicitWidth
    leftPadding: 16
    rightPadding: 16 + trailingInset
    topPadding: 8
    bottomPadding: 8
    implicitHeight: Math.max(Theme.minimumTouchTarget + 12, implicitContentHeight + topPadding + bottomPadding)
    Accessible.name: italian
    Accessible.description: isFavourite ? (translation.length > 0 ? translation + ", " : "") + L10n.text("list.favourite")
                                        : translation
    Access.pressable: true
    swipe.enabled: swipeEnabled && table !== null
    swipe.right: SwipeActionView { trailingInset: cell.trailingInset } // qmllint disable unqualified

    onClicked: {
        if (swipe.position !== 0)
            swipe.close()
        else if (table)
            table.selectRow(index)
    }

    // Runs what the trailing swipe offers without the swipe.
    function performSwipeAction() {
        const action = table ? table.trailingSwipeAction(index) : null
        if (action)
            action.trigger()
    }

    // The swipe action as its own button, listed with the row by screen readers.
    Item {
        visible: cell.swipe.enabled && cell.swipeTitle.length > 0
        width: 1
        height: 1
        Accessible.role: Accessible.Button
        Accessible.name: cell.swipeTitle
        Access.pressable: true
        Access.onActivated: cell.performSwipeAction()
    }

    Binding {
        target: cell.swipe.rightItem
        when: cell.swipe.rightItem !== null
        property: "action"
        value: cell.swipeAction
    }

    Connections {
        target: cell.swipe
        function onPositionChanged() {
            if (cell.swipe.position < 0 && cell.swipeAction === null && cell.table !== null) {
                cell.swipeAction = cell.table.trailingSwipeAction(cell.index)
                if (cell.swipeAction === null)
                    cell.swipe.close()
            }
        }
        function onClosed() { cell.swipeAction = null }
    }

    Connections {
        target: cell.swipeAction
        function onPerformed(completed) {
            if (completed && cell.swipeAction && !cell.swipeAction.destructive)
                cell.swipe.close()
        }
    }

    contentItem: RowLayout {
        spacing: 12

        ColumnLayout {
            Layout.fillWidth: true
            Layout.alignment: Qt.AlignVCenter
            // The row slides aside for its action; the verb stays where it was,
            // in the room the action leaves.
            Layout.leftMargin: cell.swipe.rightItem ? -cell.swipe.position * cell.swipe.rightItem.width : 0
            spacing: 2

            Label {
                Layout.fillWidth: true
                text: cell.italian
                color: Theme.text
                elide: Text.ElideRight
                font.pixelSize: Theme.headlineSize
            }
            Label {
                Layout.fillWidth: true
                visible: text.length > 0
                text: cell.translation
                color: Theme.secondaryText
                elide: Text.ElideRight
                font.pixelSize: Theme.secondarySize
            }
        }

        IconImage {
            visible: cell.isFavourite
            Layout.alignment: Qt.AlignVCenter
            sourceSize.width: 20
            sourceSize.height: 20
            source: "qrc:/norvella/icons/favourite-filled.svg"
            color: Theme.primary
            Accessible.ignored: true
        }
    }

    background: Rectangle {
        color: cell.down ? Theme.separator : cell.current ? Theme.pressed : Theme.background

        Rectangle {
            x: cell.separatorInset
            width: parent.width - x
            height: 1
            anchors.bottom: parent.bottom
            color: Theme.separator
        }
    }
}
