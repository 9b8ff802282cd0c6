import QtQuick
import QtQuick.Controls
import Norvella.Resources

// The coloured bar above the screen: the verb as title, and a way back on phones.
ToolBar {
    id: bar

    property string title
    property bool showsBackButton: false

    signal backRequested()

    implicitHeight: Math.max(56, titleLabel.implicitHeight + 24)
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

    TextMetrics {
        id: titleMetrics
        font: titleLabel.font
        text: titleLabel.text
    }

    // Centred while it fits; a long name with large text moves right of the back
    // button and takes a second line rather than losing its end.
    Label {
        id: titleLabel
        readonly property real start: backButton.visible ? backButton.x + backButton.width + 8 : 16
        anchors.verticalCenter: parent.verticalCenter
        width: Math.min(Math.ceil(titleMetrics.advanceWidth) + 2, bar.width - start - 16)
        x: Math.max(start, Math.min((bar.width - width) / 2, bar.width - 16 - width))
        text: bar.title
        color: Theme.barText
        wrapMode: Text.WrapAtWordBoundaryOrAnywhere
        maximumLineCount: 2
        elide: Text.ElideRight
        horizontalAlignment: Text.AlignHCenter
        font.bold: true
        font.pixelSize: Theme.titleSize
        Accessible.role: Accessible.Heading
        Access.heading: true
    }
}
