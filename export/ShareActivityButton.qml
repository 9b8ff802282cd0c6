import QtQuick
import QtQuick.Controls
import Norvella.Export
import Norvella.Resources

// One way to hand on the export; absent when the sheet excludes its type.
ItemDelegate {
    id: button

    required property ShareSheetController controller
    required property string type

    visible: controller.isOffered(type)
    height: visible ? implicitHeight : 0
    implicitHeight: Math.max(Theme.minimumTouchTarget + 8, implicitContentHeight + topPadding + bottomPadding)
    leftPadding: 16
    text: controller.activityTitle(type)
    icon.source: controller.activityIcon(type)
    icon.color: Theme.primary
    palette.windowText: Theme.text
    Accessible.name: text
    Access.pressable: true
    onClicked: controller.perform(type)
}
