import QtQuick
import QtQuick.Controls
import Norvella.Resources
import Norvella.Settings

// An action sheet rising from the bottom: an optional title, one button per
// choice and a cancel button set apart.
Popup {
    id: sheet

    required property OptionsTableViewController controller
    property string kind
    readonly property var choices: kind.length > 0 ? controller.sheetChoices(kind) : []
    readonly property string title: kind.length > 0 ? controller.sheetTitle(kind) : ""

    function show(sheetKind) {
        kind = sheetKind;
        open();
    }

    function pick(index) {
        close();
        controller.choose(kind, index);
    }

    parent: Overlay.overlay
    modal: true
    focus: true
    width: parent ? Math.min(parent.width - 16, 480) : 374
    x: parent ? Math.round((parent.width - width) / 2) : 0
    y: parent ? parent.height - height - 8 : 0
    padding: 0
    background: Item {}

    Column {
        width: sheet.availableWidth
        spacing: 8

        Rectangle {
            width: parent.width
            height: choiceColumn.implicitHeight
            radius: 12
            color: Theme.background
            clip: true

            Column {
                id: choiceColumn
                width: parent.width

                Label {
                    visible: sheet.title.length > 0
                    width: parent.width
                    padding: 14
                    horizontalAlignment: Text.AlignHCenter
                    text: sheet.title
                    color: Theme.secondaryText
                    font.pixelSize: Theme.secondarySize
                    wrapMode: Text.WordWrap
                    Accessible.role: Accessible.Heading
                    Access.heading: true
                }

                // As many as the longest sheet, the languages, has.
                ChoiceButton {
                    width: parent.width
                    choices: sheet.choices
                    choiceIndex: 0
                    separatorAbove: sheet.title.length > 0
                    destructive: sheet.kind === "clearHistory"
                    onPicked: index => sheet.pick(index)
                }
                ChoiceButton {
                    width: parent.width
                    choices: sheet.choices
                    choiceIndex: 1
                    separatorAbove: true
                    onPicked: index => sheet.pick(index)
                }
                ChoiceButton {
                    width: parent.width
                    choices: sheet.choices
                    choiceIndex: 2
                    separatorAbove: true
                    onPicked: index => sheet.pick(index)
                }
                ChoiceButton {
                    width: parent.width
                    choices: sheet.choices
                    choiceIndex: 3
                    separatorAbove: true
                    onPicked: index => sheet.pick(index)
                }
                ChoiceButton {
                    width: parent.width
                    choices: sheet.choices
                    choiceIndex: 4
                    separatorAbove: true
                    onPicked: index => sheet.pick(index)
                }
                ChoiceButton {
                    width: parent.width
                    choices: sheet.choices
                    choiceIndex: 5
                    separatorAbove: true
                    onPicked: index => sheet.pick(index)
                }
                ChoiceButton {
                    width: parent.width
                    choices: sheet.choices
                    choiceIndex: 6
                    separatorAbove: true
                    onPicked: index => sheet.pick(index)
                }
                ChoiceButton {
                    width: parent.width
                    choices: sheet.choices
                    choiceIndex: 7
                    separatorAbove: true
                    onPicked: index => sheet.pick(index)
                }
            }
        }

        Button {
            id: cancelButton
            width: parent.width
            implicitHeight: Math.max(Theme.minimumTouchTarget + 8, implicitContentHeight + topPadding + bottomPadding)
            text: sheet.kind.length > 0 ? sheet.controller.sheetCancelText(sheet.kind) : ""
            font.bold: true
            Accessible.name: text
            Access.pressable: true
            onClicked: sheet.close()
            contentItem: Label {
                text: cancelButton.text
                font: cancelButton.font
                color: Theme.primary
                horizontalAlignment: Text.AlignHCenter
                verticalAlignment: Text.AlignVCenter
            }
            background: Rectangle {
                radius: 12
                color: cancelButton.down ? Theme.pressed : Theme.background
            }
        }
    }
}
