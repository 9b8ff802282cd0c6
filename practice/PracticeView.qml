import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Norvella.Practice
import Norvella.Resources

// The Practice screen: two drills and the progress page under one bar.
Page {
    id: view

    property QtObject queue
    // 0 Write, 1 Recognise, 2 Progress.
    property alias section: sections.currentIndex
    readonly property PracticeController controller: drill
    readonly property PracticeProgressController progressController: progress
    signal closeRequested()

    function begin() {
        progress.refresh()
        if (!drill.hasCard)
            drill.start()
    }

    // One store for the drill and the progress page.
    PracticeData {
        id: practiceTables
        queue: view.queue
    }

    PracticeController {
        id: drill
        objectName: "practiceController"
        practiceData: practiceTables
        mode: view.section === 1 ? PracticeController.Recognise : PracticeController.Produce
        onProgressChanged: progress.refresh()
    }

    PracticeProgressController {
        id: progress
        objectName: "practiceProgressController"
        practiceData: practiceTables
    }

    background: Rectangle { color: Theme.groupedBackground }

    header: Column {
        ToolBar {
            width: parent.width
            implicitHeight: Math.max(56, titleLabel.implicitHeight + 24)
            background: Rectangle { color: Theme.bar }

            ToolButton {
                id: closeButton
                anchors.left: parent.left
                anchors.verticalCenter: parent.verticalCenter
                width: Theme.minimumTouchTarget
                height: Theme.minimumTouchTarget
                icon.source: "qrc:/norvella/icons/back.svg"
                icon.color: Theme.barText
                background: Rectangle {
                    radius: 6
                    color: closeButton.down ? Theme.barPressed : "transparent"
                }
                Accessible.name: L10n.text("action.back")
                Access.pressable: true
                onClicked: view.closeRequested()
            }

            Label {
                id: titleLabel
                anchors.centerIn: parent
                text: L10n.text("practice.title")
                color: Theme.barText
                font.bold: true
                font.pointSize: view.font.pointSize * 1.25
                Access.heading: true
            }
        }

        TabBar {
            id: sections
            width: parent.width
            background: Rectangle { color: Theme.background }

            Repeater {
                model: [L10n.text("practice.produce"), L10n.text("practice.recognise"), L10n.text("practice.progress")]

                TabButton {
                    id: tab
                    required property string modelData
                    text: tab.modelData
                    implicitHeight: Theme.minimumTouchTarget
                    font.bold: checked
                    contentItem: Label {
                        text: tab.text
                        font: tab.font
                        color: tab.checked ? Theme.primary : Theme.secondaryText
                        horizontalAlignment: Text.AlignHCenter
                        verticalAlignment: Text.AlignVCenter
                        elide: Text.ElideRight
                    }
                    background: Rectangle {
                        color: Theme.background

                        Rectangle {
                            anchors.bottom: parent.bottom
                            width: parent.width
                            height: tab.checked ? 3 : 1
                            color: tab.checked ? Theme.primary : Theme.separator
                        }
                    }
                    Accessible.name: text
                    Accessible.selectable: true
                    Accessible.selected: checked
                    Access.pressable: true
                }
            }
        }
    }

    StackLayout {
        anchors.fill: parent
        currentIndex: view.section

        ProduceDrill { controller: drill }
        RecogniseDrill { controller: drill }
        ProgressPage { controller: progress }
    }
}
