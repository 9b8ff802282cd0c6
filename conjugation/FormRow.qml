import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Norvella.Resources
import Norvella.Conjugation

// A pronoun and its form with a play control. In a grid block (compact) the
// row is as short as a touch target allows and a long form wraps.
Control {
    id: row

    property ConjugationFormItem item
    property bool compact: false
    // A hairline above the row, between it and the previous one.
    property bool separatorVisible: false
    readonly property bool speaking: item !== null && item.speaking

    readonly property bool placeholder: item !== null && item.placeholder
    // The form the verb was opened from in search: tinted with a leading bar,
    // and said to screen readers, so colour is never the only sign. Its text
    // keeps the usual weight: bold marks the irregular variants, here as in
    // every other cell.
    readonly property bool matched: item !== null && item.matchesSearch
    readonly property string matchNote: matched ? L10n.text("conjugation.matches_search") : ""

    // A dash has nothing to tap, so in the table it needs no touch-sized row.
    implicitHeight: compact ? Math.max(Theme.minimumTouchTarget, layout.implicitHeight + 4)
                            : placeholder ? layout.implicitHeight + 14
                                          : Math.max(Theme.minimumTouchTarget + 8, layout.implicitHeight + 12)

    FontMetrics {
        id: metrics
        font: row.font
    }

    RowLayout {
        id: layout
        anchors.fill: parent
        anchors.leftMargin: row.compact ? 12 : 16
        anchors.rightMargin: row.compact ? 4 : 8
        spacing: 8

        Label {
            visible: row.item !== null && row.item.pronoun.length > 0
            // Wide enough for the widest pronoun, so the forms line up.
            // The subjunctive's "che" widens every pronoun of its block alike.
            Layout.preferredWidth: Math.ceil(metrics.advanceWidth(
                    row.item && row.item.pronoun.startsWith("che ") ? "che lui/lei" : "lui/lei")
                    + metrics.averageCharacterWidth)
            Layout.fillHeight: row.compact
            text: row.item ? row.item.pronoun : ""
            color: Theme.secondaryText
            wrapMode: Text.Wrap
            verticalAlignment: Text.AlignVCenter
        }

        Label {
            Layout.fillWidth: true
            Layout.fillHeight: row.compact
            // Irregular variants in bold and underlined, never by colour alone.
            text: row.item ? row.item.formMarkup : ""
            textFormat: Text.StyledText
            Accessible.name: row.item ? row.item.accessibleForm : ""
            color: row.placeholder ? Theme.secondaryText : Theme.text
            font.weight: Font.Medium
            Accessible.description: row.matchNote
            wrapMode: Text.Wrap
            verticalAlignment: Text.AlignVCenter
        }

        PlayButton {
            id: play
            // A dash keeps the column, so the forms stay lined up.
            opacity: row.placeholder ? 0 : 1
            visible: !row.placeholder || row.compact
            enabled: opacity > 0
            Accessible.ignored: !enabled
            speaking: row.speaking
            Accessible.name: row.item ? (row.speaking ? row.item.stopName : row.item.playName) : ""
            Accessible.description: row.matchNote
            onClicked: {
                if (row.item)
                    row.item.toggleSpeech(play.ring)
            }
        }
    }

    background: Rectangle {
        visible: row.matched
        color: Theme.pressed

        Rectangle {
            width: 4
            height: parent.height
            color: Theme.primary
        }
    }

    Rectangle {
        visible: row.separatorVisible
        anchors.top: parent.top
        anchors.left: parent.left
        anchors.right: parent.right
        anchors.leftMargin: row.compact ? 12 : 16
        anchors.rightMargin: row.compact ? 12 : 0
        height: 1
        color: Theme.separator
    }
}
