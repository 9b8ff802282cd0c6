import QtQuick
import QtQuick.Controls
import Norvella.Resources
import Norvella.Settings

// Below the settings: the app's icon and title, the about line, the maker's
// web site, the support mail button and the credits the data's licence asks for.
Control {
    id: about

    required property OptionsTableViewController controller

    implicitHeight: column.implicitHeight
    padding: 0

    Column {
    id: column
    width: about.width
    topPadding: 28
    bottomPadding: 28
    spacing: 10

    Rectangle {
        anchors.horizontalCenter: parent.horizontalCenter
        width: 72
        height: 72
        radius: 10
        clip: true
        color: Theme.bar
        border.width: 1
        border.color: Theme.pressed
        Accessible.role: Accessible.Graphic
        Accessible.name: about.controller.appTitle

        Button {
            anchors.centerIn: parent
            enabled: false
            flat: true
            display: AbstractButton.IconOnly
            icon.source: "qrc:/norvella/icons/list.svg"
            icon.width: 40
            icon.height: 40
            icon.color: Theme.barText
            background: null
            Accessible.ignored: true
        }
    }

    Label {
        width: about.width
        horizontalAlignment: Text.AlignHCenter
        text: about.controller.appTitle
        color: Theme.text
        font.bold: true
        font.pixelSize: Theme.titleSize
        wrapMode: Text.WordWrap
        Accessible.role: Accessible.Heading
        Access.heading: true
    }

    Label {
        width: Math.min(about.width - 32, 480)
        anchors.horizontalCenter: parent.horizontalCenter
        horizontalAlignment: Text.AlignHCenter
        text: about.controller.copyright
        color: Theme.secondaryText
        wrapMode: Text.WordWrap
    }

    Button {
        id: website
        anchors.horizontalCenter: parent.horizontalCenter
        width: Math.min(implicitWidth, about.width - 32)
        flat: true
        implicitHeight: Math.max(Theme.minimumTouchTarget, implicitContentHeight + topPadding + bottomPadding)
        text: about.controller.webUrl
        Accessible.name: about.controller.webUrl
        Access.pressable: true
        onClicked: about.controller.openWebsite()
        contentItem: Label {
            text: website.text
            color: Theme.primary
            elide: Text.ElideMiddle
            horizontalAlignment: Text.AlignHCenter
            verticalAlignment: Text.AlignVCenter
        }
    }

    Button {
        id: supportButton
        anchors.horizontalCenter: parent.horizontalCenter
        width: Math.min(implicitWidth, about.width - 32)
        flat: true
        implicitHeight: Math.max(Theme.minimumTouchTarget, implicitContentHeight + topPadding + bottomPadding)
        text: about.controller.supportEmail
        icon.source: "qrc:/norvella/icons/contact.svg"
        icon.color: Theme.primary
        Accessible.name: about.controller.supportEmail
        Access.pressable: true
        onClicked: about.controller.sendSupportEmail()
        palette.windowText: Theme.primary
    }

    Label {
        objectName: "creditsTitle"
        width: Math.min(about.width - 32, 480)
        anchors.horizontalCenter: parent.horizontalCenter
        topPadding: 12
        text: about.controller.creditsTitle
        color: Theme.text
        font.bold: true
        wrapMode: Text.WordWrap
        Accessible.role: Accessible.Heading
    }

    Label {
        objectName: "credits"
        width: Math.min(about.width - 32, 480)
        anchors.horizontalCenter: parent.horizontalCenter
        text: about.controller.credits
        color: Theme.secondaryText
        font.pixelSize: Theme.secondarySize
        wrapMode: Text.WordWrap
    }
    }
}
