import QtQuick
import QtQuick.Controls
import Norvella.Resources

// The coloured bar at the top of every column: white title on the primary colour.
ToolBar {
    id: bar

    property string title
    default property alias trailing: trailingRow.data
    property alias leading: leadingRow.data

    implicitHeight: Math.max(56, titleLabel.implicitHeight + 24)
    background: Rectangle { color: Theme.primary }

    Row {
        id: leadingRow
        anchors.left: parent.left
        anchors.verticalCenter: parent.verticalCenter
        anchors.leftMargin: 4
    }

    Label {
        id: titleLabel
        anchors.centerIn: parent
        width: Math.min(implicitWidth, bar.width - 2 * Math.max(leadingRow.width, trailingRow.width) - 24)
        text: bar.title
        color: Theme.barText
        elide: Text.ElideRight
        font.bold: true
        font.pointSize: bar.font.pointSize * 1.25
        Accessible.role: Accessible.Heading
        Access.heading: true
    }

    Row {
        id: trailingRow
        anchors.right: parent.right
        anchors.verticalCenter: parent.verticalCenter
        anchors.rightMargin: 4
    }
}
