import QtQuick
import QtQuick.Controls
import Norvella.Resources

// The coloured bar at the top of every column: white title on the bar colour.
ToolBar {
    id: bar

    property string title
    default property alias trailing: trailingRow.data
    property alias leading: leadingRow.data

    implicitHeight: Math.max(56, titleLabel.implicitHeight + 24)
    background: Rectangle { color: Theme.bar }

    Row {
        id: leadingRow
        anchors.left: parent.left
        anchors.verticalCenter: parent.verticalCenter
        anchors.leftMargin: 4
    }

    Label {
        id: titleLabel
        anchors.centerIn: parent
        width: bar.width - 2 * Math.max(leadingRow.width, trailingRow.width) - 24
        text: bar.title
        color: Theme.barText
        horizontalAlignment: Text.AlignHCenter
        // Large text takes a second line rather than losing the end of the title.
        wrapMode: Text.WordWrap
        maximumLineCount: 2
        elide: Text.ElideRight
        font.bold: true
        font.pixelSize: Theme.titleSize
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
