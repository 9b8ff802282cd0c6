import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Norvella.Lists
import Norvella.Resources

// One reading of a typed form: the infinitive over its mood, tense and person.
ItemDelegate {
    id: row

    required property int index
    required property string italian
    required property string detail
    required property string accessibleName
    readonly property SearchFormsModel forms: ListView.view ? ListView.view.model : null

    width: ListView.view ? ListView.view.width : implicitWidth
    leftPadding: 16
    rightPadding: 16
    topPadding: 8
    bottomPadding: 8
    implicitHeight: Math.max(Theme.minimumTouchTarget + 12, implicitContentHeight + topPadding + bottomPadding)
    Accessible.name: accessibleName
    Access.pressable: true
    onClicked: {
        if (forms)
            forms.select(index)
    }

    contentItem: ColumnLayout {
        spacing: 2

        Label {
            Layout.fillWidth: true
            text: row.italian
            color: Theme.text
            elide: Text.ElideRight
            font.pointSize: row.font.pointSize * 1.05
            font.weight: Font.DemiBold
        }
        Label {
            Layout.fillWidth: true
            text: row.detail
            color: Theme.secondaryText
            wrapMode: Text.Wrap
            font.pointSize: row.font.pointSize * 0.9
        }
    }

    background: Rectangle {
        color: row.down || row.activeFocus ? Theme.separator : Theme.background

        Rectangle {
            x: 16
            width: parent.width - x
            height: 1
            anchors.bottom: parent.bottom
            color: Theme.separator
        }
    }
}
