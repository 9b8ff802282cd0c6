import QtQuick
import QtQuick.Controls
import Norvella.Resources

// The title above a section of the alphabetical list.
Control {
    id: header

    required property string section

    width: parent ? parent.width : implicitWidth
    leftPadding: 16
    topPadding: 4
    bottomPadding: 4
    Accessible.role: Accessible.Heading
    Accessible.name: section

    background: Rectangle { color: Theme.groupedBackground }

    contentItem: Label {
        text: header.section
        font.bold: true
        color: Theme.text
    }
}
