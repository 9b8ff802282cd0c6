import QtQuick
import QtQuick.Controls
import Norvella.Export
import Norvella.Resources

// The share sheet of an export. exportVerb(verbRef) renders the verb and,
// when that gives both documents, rises from the bottom with the ways to
// hand them on.
Popup {
    id: sheet

    // The button the sheet points at on wide windows, where it is a popover.
    property Item anchorItem
    property alias excludedActivityTypes: shareController.excludedActivityTypes
    property alias saveFolder: shareController.saveFolder
    readonly property alias controller: shareController

    // A phone on its side has the width but not the height for a popover.
    readonly property bool popover: anchorItem !== null && parent !== null && parent.width >= 700
                                    && parent.height >= 500

    function exportVerb(verbRef) {
        if (shareController.exportVerb(verbRef))
            open();
    }

    function place() {
        if (!parent)
            return;
        if (popover) {
            // Below the button when it fits there, else above it (a button in a
            // bottom bar), so the sheet never covers what it was opened from.
            const top = anchorItem.mapToItem(parent, 0, 0);
            const corner = anchorItem.mapToItem(parent, anchorItem.width, anchorItem.height);
            x = Math.max(8, Math.min(corner.x - width, parent.width - width - 8));
            if (corner.y + 4 + height <= parent.height - 8)
                y = corner.y + 4;
            else
                y = Math.max(8, top.y - height - 4);
        } else {
            x = Math.round((parent.width - width) / 2);
            y = parent.height - height - 8;
        }
    }

    parent: Overlay.overlay
    modal: true
    focus: true
    width: parent ? Math.min(parent.width - 16, popover ? 380 : 480) : 374
    onAboutToShow: place()
    onHeightChanged: place()
    onWidthChanged: place()
    padding: 0
    background: Rectangle { radius: 12; color: Theme.background }

    ShareSheetController { id: shareController }

    Column {
        width: sheet.availableWidth

        Label {
            width: parent.width
            padding: 16
            bottomPadding: 8
            text: shareController.title
            color: Theme.text
            font.bold: true
            font.pixelSize: Theme.headlineSize
            elide: Text.ElideRight
            horizontalAlignment: Text.AlignHCenter
            Accessible.role: Accessible.Heading
            Access.heading: true
        }

        ShareActivityButton {
            width: parent.width
            controller: shareController
            type: "copyText"
        }

        ShareActivityButton {
            width: parent.width
            controller: shareController
            type: "saveHtml"
        }

        ShareActivityButton {
            width: parent.width
            controller: shareController
            type: "saveText"
        }

        ShareActivityButton {
            width: parent.width
            controller: shareController
            type: "savePdf"
        }

        ShareActivityButton {
            width: parent.width
            controller: shareController
            type: "mail"
        }

        Label {
            visible: text.length > 0
            width: parent.width
            leftPadding: 16
            rightPadding: 16
            topPadding: 8
            text: shareController.statusMessage
            color: Theme.secondaryText
            wrapMode: Text.WrapAnywhere
        }

        Row {
            anchors.right: parent.right
            anchors.rightMargin: 8
            spacing: 4
            topPadding: 4
            bottomPadding: 8

            Button {
                visible: shareController.lastSavedPath.length > 0
                flat: true
                implicitHeight: Math.max(Theme.minimumTouchTarget, implicitContentHeight + topPadding + bottomPadding)
                text: shareController.openFileText
                palette.windowText: Theme.primary
                Accessible.name: text
                Access.pressable: true
                onClicked: shareController.openLastSavedFile()
            }

            Button {
                visible: shareController.statusCopyText.length > 0
                flat: true
                implicitHeight: Math.max(Theme.minimumTouchTarget, implicitContentHeight + topPadding + bottomPadding)
                text: shareController.copyText
                palette.windowText: Theme.primary
                Accessible.name: text
                onClicked: shareController.copyStatusText()
            }

            Button {
                flat: true
                implicitHeight: Math.max(Theme.minimumTouchTarget, implicitContentHeight + topPadding + bottomPadding)
                text: shareController.closeText
                font.bold: true
                palette.windowText: Theme.primary
                Accessible.name: text
                Access.pressable: true
                onClicked: sheet.close()
            }
        }
    }
}
