import QtQuick
import QtQuick.Controls
import Norvella.Resources

// Tablet layout: the verb's title, then one 300×300 block per tense, 20 apart
// and at least 20 from the edges, centred in the width.
Flickable {
    id: area

    property alias model: blocks.model
    property string heading
    property string notes
    // How the verb conjugates, {before, model, after, sentence}.
    property var pattern: ({})

    signal modelVerbActivated()

    readonly property int blockSize: 300
    readonly property int spacing: 20
    readonly property int columns: Math.max(1, Math.floor((width - spacing) / (blockSize + spacing)))

    clip: true
    contentWidth: width
    contentHeight: content.implicitHeight + spacing
    boundsBehavior: Flickable.StopAtBounds
    ScrollIndicator.vertical: ScrollIndicator {}

    Column {
        id: content
        // As wide as a full row of blocks, so a mood with fewer blocks lines up with the others.
        width: area.columns * (area.blockSize + area.spacing) - area.spacing
        x: Math.max(area.spacing, (area.width - width) / 2)
        spacing: area.spacing

        Control {
            id: headingBox
            width: content.width
            topPadding: area.spacing
            contentItem: Label {
                text: area.heading
                wrapMode: Text.Wrap
                color: Theme.text
                font.pointSize: headingBox.font.pointSize * 1.4
                font.weight: Font.DemiBold
                Accessible.role: Accessible.Heading
                Access.heading: true
            }
        }

        PatternLine {
            width: content.width
            pattern: area.pattern
            onModelActivated: area.modelVerbActivated()
        }

        UsageNotes {
            width: content.width
            text: area.notes
        }

        Grid {
            id: grid
            columns: area.columns
            spacing: area.spacing

            Repeater {
                id: blocks

                delegate: TenseBlock {
                    width: 300
                    height: 300
                }
            }
        }
    }
}
