import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Norvella.Practice
import Norvella.Resources

// Progress: what is due, the streak, accuracy, the costly verbs, and what to practise.
Flickable {
    id: page
    FontMetrics { id: metrics }

    property PracticeProgressController controller

    contentHeight: column.implicitHeight + 40
    clip: true
    boundsBehavior: Flickable.StopAtBounds
    ScrollBar.vertical: ScrollBar {}

    ColumnLayout {
        id: column
        x: Math.max(16, (page.width - width) / 2)
        y: 20
        width: Math.min(page.width - 32, 560)
        spacing: 14

        RowLayout {
            Layout.fillWidth: true
            spacing: 12

            Repeater {
                model: [{value: page.controller.dueToday, title: L10n.text("practice.progress.due"),
                         size: metrics.font.pointSize * 2},
                        {value: page.controller.streak, title: L10n.text("practice.progress.streak"),
                         size: metrics.font.pointSize * 2}]

                Rectangle {
                    id: stat
                    required property var modelData
                    Layout.fillWidth: true
                    implicitHeight: figure.implicitHeight + 24
                    radius: 8
                    color: Theme.background

                    Column {
                        id: figure
                        anchors.centerIn: parent
                        width: parent.width - 16

                        Label {
                            width: parent.width
                            horizontalAlignment: Text.AlignHCenter
                            text: stat.modelData.value
                            color: Theme.primary
                            font.bold: true
                            font.pointSize: stat.modelData.size
                        }

                        Label {
                            width: parent.width
                            horizontalAlignment: Text.AlignHCenter
                            text: stat.modelData.title
                            color: Theme.secondaryText
                            wrapMode: Text.WordWrap
                        }
                    }
                }
            }
        }

        SectionTitle { text: L10n.text("practice.progress.accuracy") }

        Label {
            visible: page.controller.accuracy.length === 0
            text: L10n.text("practice.progress.none")
            color: Theme.secondaryText
        }

        AccuracyChart {
            Layout.fillWidth: true
            visible: page.controller.accuracy.length > 0
            series: page.controller.accuracy
        }

        SectionTitle {
            visible: page.controller.costlyVerbs.length > 0
            text: L10n.text("practice.progress.costly")
        }

        Repeater {
            model: page.controller.costlyVerbs

            RowLayout {
                id: costly
                required property var modelData
                Layout.fillWidth: true

                Label {
                    Layout.fillWidth: true
                    text: costly.modelData.title
                    color: Theme.text
                    font.bold: true
                }

                Label {
                    text: costly.modelData.detail
                    color: Theme.secondaryText
                }
            }
        }

        PracticeChoices {
            Layout.fillWidth: true
            controller: page.controller
        }
    }
}
