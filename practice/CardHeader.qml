import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Norvella.Practice
import Norvella.Resources

// What a card asks: the verb and its translation, the tense, how many are left.
ColumnLayout {
    id: header

    property PracticeController controller
    property bool showsVerb: true
    spacing: 4

    RowLayout {
        Layout.fillWidth: true

        Label {
            Layout.fillWidth: true
            text: L10n.text("practice.remaining").arg(header.controller.remaining)
            color: Theme.secondaryText
        }

        Label {
            visible: header.controller.isNewCard
            text: L10n.text("practice.new")
            color: Theme.primary
            font.bold: true
        }
    }

    Label {
        Layout.fillWidth: true
        visible: header.showsVerb
        text: header.controller.infinitive
        color: Theme.text
        font.bold: true
        font.pointSize: Qt.application.font.pointSize * 1.6
        wrapMode: Text.WordWrap
        Access.heading: true
    }

    Label {
        Layout.fillWidth: true
        visible: header.showsVerb && header.controller.translation.length > 0
        text: header.controller.translation
        color: Theme.secondaryText
        wrapMode: Text.WordWrap
    }

    Label {
        Layout.fillWidth: true
        visible: header.showsVerb
        text: header.controller.moodTitle + " · " + header.controller.tenseTitle
        color: Theme.text
        wrapMode: Text.WordWrap
    }
}
