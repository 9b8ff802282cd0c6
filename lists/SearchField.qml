import QtQuick
import QtQuick.Controls
import QtQuick.Controls.impl
import QtQuick.Layouts
import Norvella.Resources

// The search bar under the home screen's title: a white rounded field on the
// bar colour, a clear button inside it and a cancel button while searching.
Control {
    id: bar

    property alias text: field.text
    property string placeholder
    readonly property bool active: field.activeFocus || field.text.length > 0

    signal cancelled()
    // Down, Enter or Return in the field: on to the rows below.
    signal leaveRequested()

    function focusField() { field.forceActiveFocus() }
    function resign() { field.focus = false; bar.forceActiveFocus() }

    focusPolicy: Qt.ClickFocus
    implicitHeight: row.implicitHeight + 8
    background: Rectangle { color: Theme.bar }

    RowLayout {
        id: row
        anchors.fill: parent
        anchors.leftMargin: 8
        anchors.rightMargin: 8
        anchors.bottomMargin: 8
        spacing: 8

        TextField {
            id: field
            objectName: "searchField"
            Layout.fillWidth: true
            Layout.preferredHeight: Math.max(Theme.minimumTouchTarget, implicitHeight)
            leftPadding: 36
            rightPadding: clearButton.visible ? clearButton.width + 4 : 12
            placeholderText: bar.placeholder
            placeholderTextColor: Theme.secondaryText
            color: Theme.text
            inputMethodHints: Qt.ImhNoPredictiveText | Qt.ImhNoAutoUppercase
            Accessible.name: bar.placeholder
            Accessible.role: Accessible.EditableText
            Keys.onDownPressed: bar.leaveRequested()
            Keys.onReturnPressed: bar.leaveRequested()
            Keys.onEnterPressed: bar.leaveRequested()
            Keys.onEscapePressed: cancelButton.clicked()
            background: Rectangle {
                radius: 10
                color: Theme.background
            }

            IconImage {
                anchors.left: parent.left
                anchors.leftMargin: 10
                anchors.verticalCenter: parent.verticalCenter
                sourceSize.width: 18
                sourceSize.height: 18
                source: "qrc:/norvella/icons/search.svg"
                color: Theme.secondaryText
                Accessible.ignored: true
            }

            ToolButton {
                id: clearButton
                anchors.right: parent.right
                anchors.verticalCenter: parent.verticalCenter
                width: Theme.minimumTouchTarget
                height: Theme.minimumTouchTarget
                visible: field.text.length > 0
                focusPolicy: Qt.NoFocus
                icon.source: "qrc:/norvella/icons/clear.svg"
                icon.color: Theme.secondaryText
                icon.width: 18
                icon.height: 18
                background: null
                Accessible.name: L10n.text("search.clear")
                Access.pressable: true
                onClicked: field.clear()
            }
        }

        Button {
            id: cancelButton
            visible: bar.active
            flat: true
            focusPolicy: Qt.NoFocus
            Layout.preferredHeight: Theme.minimumTouchTarget
            text: L10n.text("search.cancel")
            Accessible.name: text
            Access.pressable: true
            contentItem: Label {
                text: cancelButton.text
                color: Theme.barText
                verticalAlignment: Text.AlignVCenter
            }
            background: null
            onClicked: {
                field.clear()
                bar.resign()
                bar.cancelled()
            }
        }
    }
}
