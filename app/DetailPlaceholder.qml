import QtQuick
import QtQuick.Controls
import Norvella.Resources

// The detail column before a verb is chosen.
Page {
    header: NavigationBar { title: "" }
    background: Rectangle { color: Theme.background }
}
