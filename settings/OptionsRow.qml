import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Norvella.Resources

// One settings row with, when it opens or closes a section, the section's
// header above it and its footer below.
Control {
    id: root

    required property int section
    required property int rowInSection
    required property string cellType
    required property string label
    required property bool checked
    required property int segmentIndex
    required property var segmentTitles
    required property string detail
    required property bool disclosure
    required property string sectionHeader
    required property string sectionFooter
    required property bool firstInSection
    required property bool lastInSection

    signal toggled(int section, int row, bool on)
    signal segmentSelected(int section, int row, int segment)
    signal tapped(int section, int row)

    readonly property color groupColor: Theme.groupedBackground
    readonly property int sideMargin: 16
    readonly property bool wide: width >= 560

    implicitHeight: column.implicitHeight
    padding: 0

    Column {
    id: column
    width: root.width

    Rectangle {
        visible: root.firstInSection
        width: root.width
        height: headerLabel.implicitHeight + 28
        color: root.groupColor
        Label {
            id: headerLabel
            anchors.left: parent.left
            anchors.right: parent.right
            anchors.bottom: parent.bottom
            anchors.leftMargin: root.sideMargin
            anchors.rightMargin: root.sideMargin
            anchors.bottomMargin: 6
            // Capitals by the interface language: the font's own know no Turkish İ.
            text: L10n.upper(root.sectionHeader)
            color: Theme.secondaryText
            font.pixelSize: Theme.secondarySize
            wrapMode: Text.WordWrap
            Accessible.role: Accessible.Heading
            Accessible.name: root.sectionHeader
            Access.heading: true
        }
    }

    AbstractButton {
        id: cell
        width: root.width
        implicitHeight: Math.max(Theme.minimumTouchTarget + 8, content.implicitHeight + 16)
        // Disabling the cell would disable the switch and segments inside it,
        // so it stays enabled and only answers taps where a row has a meaning.
        readonly property bool tappable: root.cellType === "detail" || root.cellType === "switch"
        focusPolicy: root.cellType === "detail" ? Qt.StrongFocus : Qt.NoFocus
        Accessible.name: root.detail.length > 0 ? root.label + ", " + root.detail : root.label
        // Only a detail row is a button. Around a switch or segments the cell
        // steps aside (Qt Quick Controls 6.4 would report it as a button that
        // does nothing), so the switch and the segments, which carry the row's
        // label in their names, are what a screen reader meets.
        Accessible.ignored: root.cellType !== "detail"
        Access.pressable: root.cellType === "detail"
        onClicked: {
            if (root.cellType === "detail")
                root.tapped(root.section, root.rowInSection);
            else if (root.cellType === "switch")
                root.toggled(root.section, root.rowInSection, !root.checked);
        }

        background: Rectangle {
            color: cell.down && cell.tappable ? Theme.pressed : Theme.background
            Rectangle {
                visible: !root.lastInSection
                anchors.bottom: parent.bottom
                x: root.sideMargin
                width: parent.width - root.sideMargin
                height: 1
                color: Theme.separator
            }
        }

        GridLayout {
            id: content
            anchors.left: parent.left
            anchors.right: parent.right
            anchors.verticalCenter: parent.verticalCenter
            anchors.leftMargin: root.sideMargin
            anchors.rightMargin: root.sideMargin
            // Segments go under their label on narrow screens, beside it on wide ones.
            columns: root.cellType === "segment" && !root.wide ? 1 : 3
            rowSpacing: 8
            columnSpacing: 8

            Label {
                Layout.fillWidth: true
                text: root.label
                color: Theme.text
                wrapMode: Text.WordWrap
            }

            Switch {
                id: switchControl
                visible: root.cellType === "switch"
                implicitHeight: Math.max(Theme.minimumTouchTarget, implicitIndicatorHeight)
                checked: root.checked
                palette.dark: Theme.selection
                palette.midlight: Theme.controlBorder
                Accessible.name: root.label
                Access.pressable: true
                onToggled: {
                    root.toggled(root.section, root.rowInSection, checked);
                    checked = Qt.binding(() => root.checked);
                }
            }

            SegmentedControl {
                visible: root.cellType === "segment"
                Layout.fillWidth: !root.wide
                // Segments grow with the text size, leaving the row's label at least 40 %.
                Layout.preferredWidth: root.wide ? Math.min(root.width * 0.6, 300 * Theme.textScale) : -1
                titles: root.segmentTitles
                currentIndex: root.segmentIndex
                accessibleContext: root.label
                onSelected: index => root.segmentSelected(root.section, root.rowInSection, index)
            }

            Label {
                visible: root.cellType === "detail" && root.detail.length > 0
                Layout.maximumWidth: root.width * 0.45
                text: root.detail
                color: Theme.secondaryText
                elide: Text.ElideRight
            }

            Image {
                visible: root.disclosure
                source: "qrc:/norvella/icons/back.svg"
                sourceSize.width: 18
                sourceSize.height: 18
                rotation: 180
                opacity: 0.55
            }
        }
    }

    Rectangle {
        width: root.width
        height: root.lastInSection ? footerLabel.implicitHeight + (footerLabel.text.length > 0 ? 16 : 8) : 0
        visible: root.lastInSection
        color: root.groupColor
        Label {
            id: footerLabel
            anchors.left: parent.left
            anchors.right: parent.right
            anchors.top: parent.top
            anchors.leftMargin: root.sideMargin
            anchors.rightMargin: root.sideMargin
            anchors.topMargin: 6
            text: root.sectionFooter
            color: Theme.secondaryText
            font.pixelSize: Theme.secondarySize
            wrapMode: Text.WordWrap
        }
    }
    }
}
