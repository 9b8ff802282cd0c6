import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Norvella.Resources

// A heading between the blocks of the progress page.
Label {
    Layout.fillWidth: true
    Layout.topMargin: 6
    color: Theme.text
    font.bold: true
    font.pointSize: metrics.font.pointSize * 1.1
    wrapMode: Text.WordWrap
    Access.heading: true

    FontMetrics { id: metrics }
}
