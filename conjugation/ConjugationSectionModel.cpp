#include "ConjugationSectionModel.h"

#include "ConjugationFormItem.h"
#include "ConjugationGroups.h"
#include "VerbDetailTableViewController.h"

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
        return verbRow || !m_forms.value(index.row()).isEmpty() ? QString() : m_controller.noFormsNote();
    default:
        return {};
    }
}

QHash<int, QByteArray> ConjugationSectionModel::roleNames() const
{
    return {
        {KindRole, "kind"},       {TitleRole, "title"},         {FormsRole, "forms"},
        {FormCountRole, "formCount"}, {SectionRole, "section"},
        {EmptyNoteRole, "emptyNote"}, {HeadingRole, "heading"},
    };
}

QVariantList ConjugationSectionModel::buildForms(int section)
{
    QVariantList forms;
    const ConjugationList *list = section == 0 ? nullptr : m_controller.listForSection(section);
    if (!list)
        return forms;
    int count = int(list->size());
    if (m_presentation == Presentation::Grid)
        count = std::min(count, GridRowsPerBlock);
    const auto *tense = ConjugationGroups::tense(m_controller.selectedSegment(), section - 1);
    const bool che = tense && takesChe(QLatin1String(tense->typeId));
    for (int row = 0; row < count; ++row) {
        const Conjugation &form = list->at(row);
        auto *item = new ConjugationFormItem(
                &m_controller, VerbDetailTableViewController::keyFor(m_controller.selectedSegment(), section, row),
                che ? withChe(form.pronoun) : form.pronoun, form.verb, m_itemOwner);
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
