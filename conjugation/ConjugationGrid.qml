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

    // Brings a tense block into view, scrolling no further than needed.
    function revealBlock(index: int) {
        const block = blocks.itemAt(index)
        if (!block)
            return
        const top = block.mapToItem(content, 0, 0).y + content.y
        const bottom = top + block.height + spacing
        if (top < contentY)
            contentY = Math.max(0, top - spacing)
        else if (bottom > contentY + height)
            contentY = Math.min(Math.max(0, contentHeight - height), bottom - height)
    }

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
                font.pixelSize: Theme.titleSize
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
