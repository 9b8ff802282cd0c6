import QtQuick
import QtQuick.Controls
import QtQuick.Controls.impl
import QtQuick.Layouts
import Norvella.App
import Norvella.Export
import Norvella.Lists
import Norvella.Practice
import Norvella.Resources
import Norvella.Settings

// The primary column: title, search field, the list of the chosen tab and
// the tab bar; search results cover the tabs while the search is active.
Page {
    id: home

    property AppDelegate appDelegate
    property bool padIdiom: false
    readonly property HomeViewController controller: homeController
    readonly property bool searching: search.active

    function focusSearch() { search.focusField() }
    // The practice screen gets the database on first use: until then a
    // launch does not create the practice tables.
    property bool practiceUsed: false
    function openPractice() {
        practiceUsed = true
        practice.open()
        practiceView.begin()
    }
    // Keyboard focus leaves the search field for the rows below it.
    function focusList() {
        if (search.text.length > 0)
            results.takeFocus()
        else
            pages.children[pages.currentIndex].takeFocus()
    }

    // Typing on a list goes to the search.
    Keys.onPressed: event => {
        if (event.text.trim().length === 1 && !(event.modifiers & (Qt.ControlModifier | Qt.AltModifier | Qt.MetaModifier))) {
            search.focusField()
            search.text += event.text
            event.accepted = true
        }
    }

    HomeViewController {
        id: homeController
        objectName: "homeViewController"
        queue: home.appDelegate ? home.appDelegate.queue : null
        padIdiom: home.padIdiom
        onSearchFieldShouldResign: search.resign()
    }

    header: Column {
        NavigationBar {
            width: parent.width
            title: L10n.text("verb.list.full")
            leading: ToolButton {
                id: menuButton
                width: Theme.minimumTouchTarget
                height: Theme.minimumTouchTarget
                icon.source: "qrc:/norvella/icons/menu.svg"
                icon.color: Theme.barText
                hoverEnabled: false
                background: Rectangle {
                    radius: 6
                    color: menuButton.down ? Theme.barPressed : "transparent"
                }
                Accessible.name: L10n.text("menu.open")
                Access.pressable: true
                onClicked: drawer.open()
            }

            ToolButton {
                id: practiceButton
                objectName: "practiceButton"
                width: Theme.minimumTouchTarget
                height: Theme.minimumTouchTarget
                icon.source: "qrc:/norvella/icons/book.svg"
                icon.color: Theme.barText
                hoverEnabled: false
                background: Rectangle {
                    radius: 6
                    color: practiceButton.down ? Qt.darker(Theme.primary, 1.25) : "transparent"
                }
                Accessible.name: L10n.text("practice.open")
                Access.pressable: true
                onClicked: home.openPractice()
            }
        }
        SearchField {
            id: search
            width: parent.width
            placeholder: L10n.text("search.placeholder")
            onTextChanged: homeController.updateSearchResults(text)
            onActiveChanged: if (active) homeController.updateSearchResults(text)
            onCancelled: homeController.updateSearchResults(text)
            onLeaveRequested: home.focusList()
        }
    }

    background: Rectangle { color: Theme.background }

    StackLayout {
        id: pages
        anchors.fill: parent
        currentIndex: homeController.selectedTab

        VerbListTableView { controller: homeController.verbListTableViewController }
        FavouritesTableView { controller: homeController.favouritesTableViewController }
        HistoryTableView { controller: homeController.historyTableViewController }
    }

    SearchResultsTableView {
        id: results
        anchors.fill: parent
        visible: home.searching
        controller: homeController.searchResultsController
    }

    // Tab walks the page's children in order and Page adds its footer first:
    // moving the tab bar to the end of the children lets Tab read top to bottom.
    Component.onCompleted: {
        tabBar.parent = null
        tabBar.parent = home
    }

    footer: TabBar {
        id: tabBar
        visible: !home.searching
        currentIndex: homeController.selectedTabIndex
        onCurrentIndexChanged: homeController.selectTabAt(currentIndex)
        background: Rectangle {
            color: Theme.background

            Rectangle {
                width: parent.width
                height: 1
                color: Theme.separator
            }
        }

        Repeater {
            model: homeController.tabs

            TabButton {
                id: tabButton
                required property var modelData

                implicitHeight: Math.max(Theme.minimumTouchTarget + 12, implicitContentHeight + 14)
                display: AbstractButton.TextUnderIcon
                text: modelData.title
                icon.source: modelData.icon
                icon.width: 24
                icon.height: 24
                icon.color: checked ? Theme.selection : Theme.secondaryText
                Accessible.name: text
                Accessible.selectable: true
                Accessible.selected: checked
                Access.pressable: true
                background: null

                contentItem: IconLabel {
                    display: tabButton.display
                    spacing: 2
                    icon: tabButton.icon
                    text: tabButton.text
                    // A tab has a third of a phone's width whatever the text size: its label
                    // grows to 125 % like the rest of the caption text and no further.
                    font.pixelSize: Math.round(Theme.captionSize * Math.min(1, 1.25 / Theme.textScale))
                    font.bold: tabButton.checked
                    color: tabButton.icon.color
                }
            }
        }
    }

    // The drawer's destinations, opened once it has closed.
    NavigationDrawer {
        id: drawer
        objectName: "navigationDrawer"
    }

    Connections {
        target: drawer.controller
        function onOpenSettings() { options.open() }
        function onOpenMoreApps() { moreApps.open() }
        function onComposeSupportMail() { supportMail.sendEmail() }
        function onOpenPrivacyPage() { LinkOpener.openLink(drawer.controller.privacyAddress) }
    }

    OptionsTableView {
        id: options
        objectName: "optionsView"
        queue: home.appDelegate ? home.appDelegate.queue : null
        delegate: homeController
    }

    Popup {
        id: moreApps
        parent: Overlay.overlay
        width: parent ? parent.width : 0
        height: parent ? parent.height : 0
        padding: 0
        modal: true
        // Counted when shown, not when the home screen builds the popup.
        onOpened: moreAppsView.controller.viewDidAppear()

        MoreAppsTableView {
            id: moreAppsView
            anchors.fill: parent
            onClosed: moreApps.close()
        }
    }

    SupportEmailSender {
        id: supportMail
        sender: home
    }

    AlertDialog { sender: supportMail }

    Popup {
        id: practice
        objectName: "practicePopup"
        parent: Overlay.overlay
        width: parent ? parent.width : 0
        height: parent ? parent.height : 0
        padding: 0
        modal: true
        focus: true

        PracticeView {
            id: practiceView
            objectName: "practiceView"
            anchors.fill: parent
            queue: home.practiceUsed && home.appDelegate ? home.appDelegate.queue : null
            onCloseRequested: practice.close()
        }
    }
}
