import QtQuick
import Norvella.Lists
import Norvella.Resources

// The header of the search results: every reading of the text as a
// conjugated form ("andare · Indicative · Imperfect · noi") above the verbs
// found. Choosing one opens its verb at it.
Column {
    id: formsSection

    // The search results list this section heads.
    readonly property var results: ListView.view
    readonly property SearchResultsTableViewController controller: results ? results.model : null
    readonly property int count: controller !== null ? controller.forms.count : 0

    // Keyboard focus arrives from the search field (the verbs have no current
    // row then: the first reading) or up from the first verb (the last reading).
    onActiveFocusChanged: {
        if (!activeFocus || count === 0)
            return
        readings.currentIndex = results !== null && results.currentIndex >= 0 ? count - 1 : 0
        readings.forceActiveFocus()
    }

    width: results ? results.width : implicitWidth

    SectionHeader {
        visible: formsSection.count > 0
        section: L10n.text("search.forms")
    }

    ListView {
        id: readings
        width: formsSection.width
        height: contentHeight
        interactive: false
        model: formsSection.controller !== null ? formsSection.controller.forms : null
        Accessible.name: L10n.text("search.forms")
        // Down from the last reading: on to the verbs.
        Keys.onDownPressed: event => {
            if (readings.currentIndex + 1 < readings.count || formsSection.results === null) {
                event.accepted = false
                return
            }
            formsSection.results.currentIndex = 0
            formsSection.results.forceActiveFocus()
        }

        delegate: SearchFormRow {}
    }

    SectionHeader {
        visible: formsSection.count > 0 && formsSection.results !== null && formsSection.results.count > 0
        section: L10n.text("search.verbs")
    }
}
