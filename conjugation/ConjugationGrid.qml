import QtQuick
import QtQuick.Controls
import Norvella.Resources
import Norvella.Conjugation

// Wide layout: the verb's title, then one block per tense. As many columns as
// blocks of the minimum width fit, sharing the width between them; a block is
// as tall as its forms need and never smaller than the minimum.
Flickable {
    id: area

    property alias model: blocks.model
    property string heading
    property string notes
    // How the verb conjugates, {before, model, after, sentence}.
    property var pattern: ({})

    signal modelVerbActivated()

    readonly property int spacing: AdaptiveLayout.spacing
    readonly property int columns: AdaptiveLayout.gridColumns(width)
    readonly property real blockWidth: AdaptiveLayout.blockWidth(width, columns)

    // Where a block starts in the flickable's content, -1 when it does not exist.
    function blockTop(index: int): real {
        const block = blocks.itemAt(index)
        if (!block)
            return -1
        return block.mapToItem(content, 0, 0).y + content.y
    }

    // 0 for the heading, then 1 + the block's index, as the table counts sections:
    // the first block of the row at the top (shown a spacing below the edge).
    function sectionAtTop(): int {
        let section = 0
        let rowTop = -1
        for (let i = 0; i < blocks.count; ++i) {
            const top = blockTop(i)
            if (top >= 0 && top <= contentY + spacing + 1 && top > rowTop) {
                rowTop = top
                section = i + 1
            }
        }
        return section
    }

    function showSection(section: int) {
        grid.forceLayout()
        content.forceLayout()
        const top = section > 0 ? blockTop(section - 1) : -1
        const wanted = top >= 0 ? top - spacing : 0
        contentY = Math.max(0, Math.min(wanted, contentHeight - height))
    }

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
        width: area.columns * (area.blockWidth + area.spacing) - area.spacing
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
                    width: area.blockWidth // qmllint disable unqualified
                    height: Math.max(AdaptiveLayout.blockMinimum, implicitHeight)
                }
            }
        }
    }
}
