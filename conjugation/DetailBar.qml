import QtQuick
import QtQuick.Controls
import Norvella.Resources

// The coloured bar above the screen: the verb as title, and a way back on phones.
ToolBar {
    id: bar

    property string title
    property bool showsBackButton: false
    // Slim, with room on the right for the moods (see accessoryArea).
    property bool compact: false
    readonly property alias accessoryArea: accessory

    signal backRequested()

    // A phone on its side: one line of title, so the height comes from the type
    // scale rather than from the wrapped title (whose width the moods decide).
    implicitHeight: compact ? Math.max(Theme.minimumTouchTarget + 8, Math.ceil(Theme.titleSize * 1.5) + 8)
                            : Math.max(56, titleLabel.implicitHeight + 24)
    background: Rectangle { color: Theme.bar }

    BarButton {
        id: backButton
        anchors.left: parent.left
        anchors.leftMargin: 4
        anchors.verticalCenter: parent.verticalCenter
        visible: bar.showsBackButton
        icon.source: "qrc:/norvella/icons/back.svg"
        icon.color: Theme.barText
        pressedColor: Theme.barPressed
        Accessible.name: L10n.text("conjugation.back")
        onClicked: bar.backRequested()
    }

    Item {
        id: accessory
        anchors.right: parent.right
        anchors.rightMargin: 4
        anchors.verticalCenter: parent.verticalCenter
        width: bar.compact ? Math.min(480, Math.round(bar.width * 0.6)) : 0
        height: bar.compact ? bar.height - 4 : 0
    }

    TextMetrics {
        id: titleMetrics
        font: titleLabel.font
        text: titleLabel.text
    }

    // Centred while it fits; a long name with large text moves right of the back
    // button and takes a second line rather than losing its end. Beside the
    // moods it keeps to one line in the room they leave.
    Label {
        id: titleLabel
        readonly property real start: backButton.visible ? backButton.x + backButton.width + 8 : 16
        readonly property real end: bar.compact ? accessory.x - 8 : bar.width - 16
        anchors.verticalCenter: parent.verticalCenter
        width: Math.max(0, Math.min(Math.ceil(titleMetrics.advanceWidth) + 2, end - start))
        x: bar.compact ? start : Math.max(start, Math.min((bar.width - width) / 2, end - width))
        text: bar.title
        color: Theme.barText
        wrapMode: bar.compact ? Text.NoWrap : Text.WrapAtWordBoundaryOrAnywhere
        maximumLineCount: bar.compact ? 1 : 2
        elide: Text.ElideRight
        horizontalAlignment: Text.AlignHCenter
        font.bold: true
        font.pixelSize: Theme.titleSize
        Accessible.role: Accessible.Heading
        Access.heading: true
    }
}
