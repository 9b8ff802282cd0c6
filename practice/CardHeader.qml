import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Norvella.Practice
import Norvella.Resources

// What a card asks: the verb and its translation, the tense, how many are left.
ColumnLayout {
    id: header
    FontMetrics { id: metrics }

    property PracticeController controller
    property bool showsVerb: true
    spacing: 4

    Item {
        Layout.fillWidth: true
        implicitHeight: remainingLabel.implicitHeight

        Label {
            id: remainingLabel
            anchors.left: parent.left
            anchors.right: newLabel.left
            text: L10n.text("practice.remaining").arg(header.controller.remaining)
            color: Theme.secondaryText
            elide: Text.ElideRight
        }

        Label {
            id: newLabel
            anchors.right: parent.right
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
        font.pointSize: metrics.font.pointSize * 1.6
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
