import QtQuick
import QtQuick.Controls

// Phone layout: the verb row, then each tense of the mood as a titled section.
ListView {
    id: table

    // The verb row's model verb was chosen.
    signal modelVerbActivated()

    // The section whose row covers the top edge.
    function sectionAtTop(): int {
        const index = indexAt(width / 2, contentY + 1)
        return index < 0 ? 0 : index
    }

    function showSection(section: int) {
        forceLayout()
        if (section <= 0 || section >= count)
            positionViewAtBeginning()
        else
            positionViewAtIndex(section, ListView.Beginning)
    }

    clip: true
    bottomMargin: 24
    boundsBehavior: Flickable.StopAtBounds
    ScrollIndicator.vertical: ScrollIndicator {}

    // Brings a tense section into view, whole where it fits.
    function revealSection(section: int) {
        if (section >= 0 && section < count)
            positionViewAtIndex(section, ListView.Contain)
    }

    delegate: TableSection {
        width: ListView.view.width
        // Created inside this file, so the outer id is always there.
        onModelVerbActivated: table.modelVerbActivated() // qmllint disable unqualified
    }
}
