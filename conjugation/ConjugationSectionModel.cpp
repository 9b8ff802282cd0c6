#include "ConjugationSectionModel.h"

#include "ConjugationFormItem.h"
#include "ConjugationGroups.h"
#include "VerbDetailTableViewController.h"
#include "VerbUsage.h"

namespace norvella {

namespace {
// A grid block has room for one row per person.
constexpr int GridRowsPerBlock = 6;
} // namespace

ConjugationSectionModel::ConjugationSectionModel(VerbDetailTableViewController &controller,
                                                 Presentation presentation, QObject *parent)
    : QAbstractListModel(parent), m_controller(controller), m_presentation(presentation)
{
}

int ConjugationSectionModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : int(m_forms.size());
}

int ConjugationSectionModel::sectionForRow(int row) const
{
    return m_presentation == Presentation::Table ? row : row + 1;
}

QVariant ConjugationSectionModel::data(const QModelIndex &index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid | CheckIndexOption::ParentIsInvalid))
        return {};
    const int section = sectionForRow(index.row());
    const bool verbRow = section == 0;
    switch (role) {
    case KindRole:
        return verbRow ? QStringLiteral("verb") : QStringLiteral("tense");
    case Qt::DisplayRole:
    case TitleRole:
        return verbRow ? m_controller.verbRowText() : m_controller.titleForHeaderInSection(section);
    case HeadingRole:
        return verbRow ? QString() : m_controller.headingForHeaderInSection(section);
    case SectionRole:
        return section;
    case FormCountRole:
        return m_forms.value(index.row()).size();
    case FormsRole:
        return m_forms.value(index.row());
    case EmptyNoteRole:
        // A tense the verb does not have says so instead of showing a blank block.
        return verbRow || !m_forms.value(index.row()).isEmpty() ? QString() : m_controller.noFormsNote(section);
    case NotesRole:
        return verbRow ? m_controller.usageNotes() : QString();
    case PatternRole:
        return verbRow ? m_controller.pattern() : QVariantMap();
    default:
        return {};
    }
}

QHash<int, QByteArray> ConjugationSectionModel::roleNames() const
{
    return {
        {KindRole, "kind"},       {TitleRole, "title"},         {FormsRole, "forms"},
        {FormCountRole, "formCount"}, {SectionRole, "section"},
        {EmptyNoteRole, "emptyNote"}, {HeadingRole, "heading"}, {NotesRole, "notes"},
        {PatternRole, "pattern"},
    };
}

QVariantList ConjugationSectionModel::buildForms(int section)
{
    QVariantList forms;
    const ConjugationList *list = section == 0 ? nullptr : m_controller.listForSection(section);
    if (!list)
        return forms;
    const auto *tense = ConjugationGroups::tense(m_controller.selectedSegment(), section - 1);
    const QString typeId = tense ? QLatin1String(tense->typeId) : QString();
    const bool che = takesChe(typeId);
    QList<VerbUsageNotes::Row> rows = VerbUsageNotes::rows(*m_controller.selectedVerb(), typeId, *list);
    if (m_presentation == Presentation::Grid)
        rows = rows.mid(0, GridRowsPerBlock);
    for (const VerbUsageNotes::Row &row : std::as_const(rows)) {
        // A speech key names the form's place in its list; a dash has none.
        const QString key = row.index < 0 ? QString()
                : VerbDetailTableViewController::keyFor(m_controller.selectedSegment(), section, row.index);
        const int irregular = row.index < 0 ? 0 : list->at(row.index).irregular;
        auto *item = new ConjugationFormItem(&m_controller, key, che ? withChe(row.pronoun) : row.pronoun, row.form,
                                             m_itemOwner, irregular);
        item->setMatchesSearch(row.index >= 0 && row.index < list->size()
                               && m_controller.matchesSearch(typeId, list->at(row.index), row.index));
        forms.append(QVariant::fromValue<QObject *>(item));
    }
    return forms;
}

void ConjugationSectionModel::reload()
{
    beginResetModel();
    // The views drop their delegates during the reset; the old rows go once they have.
    if (m_itemOwner)
        m_itemOwner->deleteLater();
    m_itemOwner = new QObject(this);
    m_forms.clear();
    const int rows = !m_controller.hasVerb() ? 0
            : m_presentation == Presentation::Table ? m_controller.numberOfSections()
                                                    : m_controller.numberOfItems();
    for (int row = 0; row < rows; ++row)
        m_forms.append(buildForms(sectionForRow(row)));
    endResetModel();
}

} // namespace norvella
