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
    background: Rectangle { color: Theme.primary }

    BarButton {
        id: backButton
        anchors.left: parent.left
        anchors.leftMargin: 4
        anchors.verticalCenter: parent.verticalCenter
        visible: bar.showsBackButton
        icon.source: "qrc:/norvella/icons/back.svg"
        icon.color: Theme.barText
        pressedColor: Qt.rgba(1, 1, 1, 0.2)
        Accessible.name: L10n.text("conjugation.back")
        onClicked: bar.backRequested()
    }

    Label {
        id: titleLabel
        anchors.centerIn: parent
        width: Math.min(implicitWidth, bar.width - 2 * (backButton.width + 16))
        text: bar.title
        color: Theme.barText
        elide: Text.ElideRight
        horizontalAlignment: Text.AlignHCenter
        font.bold: true
        font.pointSize: bar.font.pointSize * 1.25
        Accessible.role: Accessible.Heading
        Access.heading: true
    }
}
