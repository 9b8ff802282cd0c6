import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Norvella.Practice
import Norvella.Resources

// What to practise and how much a day, and the confirmed reset.
ColumnLayout {
    id: choices

    property PracticeProgressController controller
    spacing: 10

    SectionTitle { text: L10n.text("practice.settings") }

    Label {
        text: L10n.text("practice.deck")
        color: Theme.secondaryText
    }

    ComboBox {
        Layout.fillWidth: true
        Layout.preferredHeight: Theme.minimumTouchTarget
        model: choices.controller.deckTitles
        currentIndex: choices.controller.deck
        Accessible.name: L10n.text("practice.deck")
        Access.pressable: true
        onActivated: index => choices.controller.deck = index
    }

    Label {
        text: L10n.text("practice.tenses")
        color: Theme.secondaryText
    }

    Flow {
        Layout.fillWidth: true
        spacing: 4

        Repeater {
            model: choices.controller.tenseChoices

            CheckBox {
                required property var modelData
                text: modelData.title
                checked: modelData.on
                Accessible.name: text
                Access.pressable: true
                onToggled: choices.controller.setTenseOn(modelData.type, checked)
            }
        }
    }

    Label {
        text: L10n.text("practice.persons")
        color: Theme.secondaryText
    }

    Flow {
        Layout.fillWidth: true
        spacing: 4

        Repeater {
            model: choices.controller.personChoices

            CheckBox {
                required property var modelData
                text: modelData.title
                checked: modelData.on
                Accessible.name: text
                Access.pressable: true
                onToggled: choices.controller.setPersonOn(modelData.person, checked)
            }
        }
    }

    GridLayout {
        Layout.fillWidth: true
        columns: 2

        Label {
            Layout.fillWidth: true
            text: L10n.text("practice.newperday")
            color: Theme.text
            wrapMode: Text.WordWrap
        }

        SpinBox {
            from: 0
            to: 999
            editable: true
            value: choices.controller.newPerDay
            Accessible.name: L10n.text("practice.newperday")
            onValueModified: choices.controller.newPerDay = value
        }

        Label {
            Layout.fillWidth: true
            text: L10n.text("practice.reviewsperday")
            color: Theme.text
            wrapMode: Text.WordWrap
        }

        SpinBox {
            from: 0
            to: 999
            editable: true
            value: choices.controller.reviewsPerDay
            Accessible.name: L10n.text("practice.reviewsperday")
            onValueModified: choices.controller.reviewsPerDay = value
        }
    }

    Button {
        Layout.topMargin: 10
        Layout.preferredHeight: Theme.minimumTouchTarget
        text: L10n.text("practice.reset")
        palette.buttonText: Theme.secondary
        Access.pressable: true
        onClicked: confirmReset.open()
    }

    Dialog {
        id: confirmReset
        objectName: "practiceResetDialog"
        parent: Overlay.overlay
        anchors.centerIn: parent
        width: Math.min(parent ? parent.width - 40 : 320, 420)
        modal: true
        title: L10n.text("practice.reset")

        Label {
            width: confirmReset.availableWidth
            text: L10n.text("practice.reset.confirm")
            wrapMode: Text.WordWrap
            color: Theme.text
        }

        footer: DialogButtonBox {
            Button {
                text: L10n.text("practice.cancel")
                DialogButtonBox.buttonRole: DialogButtonBox.RejectRole
                Access.pressable: true
            }
            Button {
                text: L10n.text("practice.reset.do")
                palette.buttonText: Theme.secondary
                DialogButtonBox.buttonRole: DialogButtonBox.DestructiveRole
                Access.pressable: true
                onClicked: {
                    choices.controller.resetProgress()
                    confirmReset.close()
                }
            }
        }
    }
}
