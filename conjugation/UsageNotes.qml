import QtQuick
import QtQuick.Controls
import Norvella.Resources

// How the verb is used, under its name: a grammar's small print beside the
// headword (used only in the third person, when each auxiliary is used, ...).
Label {
    visible: text.length > 0
    wrapMode: Text.Wrap
    color: Theme.secondaryText
    lineHeight: 1.15
}
