import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Norvella.Lists
import Norvella.Resources

// Above the verbs found: every reading of the text as a conjugated form
// ("andare · Indicative · Imperfect · noi"). Choosing one opens its verb at it.
Column {
    id: formsSection

    property SearchResultsTableViewController controller: null
    // Rows of the verb list below, for its own heading.
    property int verbCount: 0
    readonly property int count: controller !== null ? controller.forms.count : 0

    // Down from the last reading: on to the verbs.
    signal leaveDown()

    function focusFirst() { focusRow(0) }
    function focusLast() { focusRow(readings.count - 1) }
    function focusRow(row: int) {
        const item = readings.itemAt(row)
        if (item)
            item.forceActiveFocus(Qt.TabFocusReason)
    }

    SectionHeader {
        visible: formsSection.count > 0
        section: L10n.text("search.forms")
    }

    Repeater {
        id: readings
        model: formsSection.controller !== null ? formsSection.controller.forms : null

        delegate: ItemDelegate {
            id: row

            required property int index
            required property string italian
            required property string detail
            required property string accessibleName

            width: formsSection.width
            leftPadding: 16
            rightPadding: 16
            topPadding: 8
            bottomPadding: 8
            implicitHeight: Math.max(Theme.minimumTouchTarget + 12, implicitContentHeight + topPadding + bottomPadding)
            Accessible.name: accessibleName
            Access.pressable: true
            Keys.onDownPressed: {
                if (index + 1 < readings.count)
                    formsSection.focusRow(index + 1)
                else
                    formsSection.leaveDown()
            }
            Keys.onUpPressed: formsSection.focusRow(index - 1)
            onClicked: formsSection.controller.selectForm(index)

            contentItem: ColumnLayout {
                spacing: 2

                Label {
                    Layout.fillWidth: true
                    text: row.italian
                    color: Theme.text
                    elide: Text.ElideRight
                    font.pointSize: row.font.pointSize * 1.05
                    font.weight: Font.DemiBold
                }
                Label {
                    Layout.fillWidth: true
                    text: row.detail
                    color: Theme.secondaryText
                    wrapMode: Text.Wrap
                    font.pointSize: row.font.pointSize * 0.9
                }
            }

            background: Rectangle {
                color: row.down ? Theme.separator : Theme.background

                Rectangle {
                    x: 16
                    width: parent.width - x
                    height: 1
                    anchors.bottom: parent.bottom
                    color: Theme.separator
                }
            }
        }
    }

    SectionHeader {
        visible: formsSection.count > 0 && formsSection.verbCount > 0
        section: L10n.text("search.verbs")
    }
}
