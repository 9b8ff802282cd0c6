import QtQuick
import QtQuick.Controls
import Norvella.Export
import Norvella.Resources
import Norvella.Settings

// The settings screen, shown over the whole window. The presenter sets `queue`
// and `delegate` (an object with optionsDidClose(fieldsChanged)) and opens it.
Popup {
    id: screen

    property alias queue: controller.queue
    property alias delegate: controller.delegate
    readonly property alias controller: controller

    signal optionsDidClose(bool fieldsChanged)

    // A sheet over the whole phone screen; a centred form on wide windows.
    readonly property bool formSheet: parent ? parent.width >= 700 && parent.height >= 600 : false

    parent: Overlay.overlay
    width: parent ? (formSheet ? Math.min(620, parent.width - 80) : parent.width) : 390
    height: parent ? (formSheet ? Math.min(900, parent.height - 80) : parent.height) : 844
    x: parent ? Math.round((parent.width - width) / 2) : 0
    y: parent ? Math.round((parent.height - height) / 2) : 0
    modal: true
    focus: true
    padding: 0
    closePolicy: Popup.NoAutoClose
    background: Rectangle { color: Theme.background }

    onAboutToShow: controller.viewWillAppear()
    onOpened: controller.viewDidAppear()
    onClosed: controller.didDismiss()

    OptionsTableViewController {
        id: controller
        presenter: screen
        onDismissRequested: screen.close()
        onOptionsDidClose: changed => screen.optionsDidClose(changed)
        onSheetRequested: sheet => choiceSheet.show(sheet)
    }

    Item {
        anchors.fill: parent
        // Escape is Done, as on the bar.
        focus: true
        Keys.onEscapePressed: controller.close()

        ToolBar {
            id: bar
            width: parent.width
            clip: true
            implicitHeight: Math.max(56, titleLabel.implicitHeight + 24)
            background: Rectangle { color: Theme.bar }

            TextMetrics {
                id: titleMetrics
                font: titleLabel.font
                text: titleLabel.text
            }

            // Centred while it fits; large text moves it left of Done rather than cutting it.
            Label {
                id: titleLabel
                anchors.verticalCenter: parent.verticalCenter
                width: Math.min(Math.ceil(titleMetrics.advanceWidth) + 2, bar.width - doneButton.width - 32)
                x: Math.max(16, Math.min((bar.width - width) / 2, bar.width - doneButton.width - 12 - width))
                text: controller.title
                color: Theme.barText
                horizontalAlignment: Text.AlignHCenter
                wrapMode: Text.WrapAtWordBoundaryOrAnywhere
                maximumLineCount: 2
                elide: Text.ElideRight
                font.bold: true
                font.pixelSize: Theme.titleSize
                Accessible.role: Accessible.Heading
                Access.heading: true
            }

            ToolButton {
                id: doneButton
                anchors.right: parent.right
                anchors.rightMargin: 4
                anchors.verticalCenter: parent.verticalCenter
                implicitHeight: Math.max(Theme.minimumTouchTarget, implicitContentHeight + topPadding + bottomPadding)
                implicitWidth: Math.max(Theme.minimumTouchTarget, implicitContentWidth + leftPadding + rightPadding)
                text: controller.doneText
                font.bold: true
                background: Rectangle {
                    radius: 6
                    color: doneButton.down ? Theme.barPressed : "transparent"
                    border.width: doneButton.visualFocus ? 1 : 0
                    border.color: Theme.barText
                }
                Accessible.name: controller.doneText
                Access.pressable: true
                contentItem: Label {
                    text: doneButton.text
                    font: doneButton.font
                    color: Theme.barText
                    horizontalAlignment: Text.AlignHCenter
                    verticalAlignment: Text.AlignVCenter
                }
                onClicked: controller.close()
            }
        }

        ListView {
            id: table
            objectName: "optionsList"
            anchors.top: bar.bottom
            anchors.bottom: parent.bottom
            width: parent.width
            clip: true
            model: controller
            boundsBehavior: Flickable.StopAtBounds
            ScrollIndicator.vertical: ScrollIndicator {}

            // The model is the controller, reached through the view from inside the delegate.
            delegate: OptionsRow {
                width: ListView.view.width
                onToggled: (section, row, on) => ListView.view.model.switchToggled(section, row, on)
                onSegmentSelected: (section, row, segment) => ListView.view.model.segmentChanged(section, row, segment)
                onTapped: (section, row) => ListView.view.model.rowTapped(section, row)
            }

            footer: OptionsAbout {
                width: ListView.view.width
                controller: ListView.view.model
            }
        }
    }

    ChoiceSheet {
        id: choiceSheet
        controller: controller
    }

    AlertDialog {
        sender: controller.supportEmailSender
    }
}
