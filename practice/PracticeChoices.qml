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

    // Each entry carries its own action: a delegate reaches nothing outside it.
    function withActions(list, set) {
        return list.map(choice => ({title: choice.title, on: choice.on, set: on => set(choice, on)}))
    }

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
            model: choices.withActions(choices.controller.tenseChoices, (choice, on) => choices.controller.setTenseOn(choice.type, on))

            CheckBox {
                id: box
                required property var modelData
                text: box.modelData.title
                checked: box.modelData.on
                Accessible.name: text
                Access.pressable: true
                onToggled: box.modelData.set(box.checked)
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
            model: choices.withActions(choices.controller.personChoices,
                                       (choice, on) => choices.controller.setPersonOn(choice.person, on))

            CheckBox {
                id: personBox
                required property var modelData
                text: personBox.modelData.title
                checked: personBox.modelData.on
                Accessible.name: text
                Access.pressable: true
                onToggled: personBox.modelData.set(personBox.checked)
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
        // Placed, not anchored: centring by anchors feeds the popup's height back into
        // its own layout while the wrapped text settles.
        x: parent ? Math.round((parent.width - width) / 2) : 0
        y: parent ? Math.round((parent.height - height) / 2) : 0
        width: Math.min(parent ? parent.width - 40 : 320, 420)
        modal: true
        title: L10n.text("practice.reset")

        Column {
            width: confirmReset.availableWidth

            Label {
                width: parent.width
                text: L10n.text("practice.reset.confirm")
                wrapMode: Text.WordWrap
                color: Theme.text
            }
        }

        footer: RowLayout {
            spacing: 8

            Item { Layout.fillWidth: true }

            Button {
                text: L10n.text("practice.cancel")
                Access.pressable: true
                onClicked: confirmReset.close()
            }

            Button {
                objectName: "practiceResetConfirm"
                Layout.rightMargin: 12
                Layout.bottomMargin: 12
                text: L10n.text("practice.reset.do")
                palette.buttonText: Theme.secondary
                Access.pressable: true
                onClicked: {
                    choices.controller.resetProgress()
                    confirmReset.close()
                }
            }
        }
    }
}
