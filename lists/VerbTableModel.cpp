#include "VerbTableModel.h"

#include "SearchIndex.h"
#include "Settings.h"

namespace norvella {

VerbTableModel::VerbTableModel(QObject *parent) : QAbstractListModel(parent) {}

int VerbTableModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : int(m_rows.size());
}

QVariant VerbTableModel::data(const QModelIndex &index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid | CheckIndexOption::ParentIsInvalid))
        return {};
    const Row &row = m_rows[size_t(index.row())];
    if (!rowVerb(size_t(index.row())))
        return {};
    const Verb &verb = *row.verb;
    switch (role) {
    case Qt::DisplayRole:
    case ItalianRole:
    // The row's accessible name is the infinitive, as on every list.
    case Qt::AccessibleTextRole:
        return verb.italian;
    case TranslationRole:
        return translationBeside(verb.italian, verb.translation(settings()));
    case IsFavouriteRole:
        return verb.isFavourite;
    case SectionRole:
        return row.section;
    case VerbIdRole:
        return verb.id;
    default:
        return {};
    }
}

QHash<int, QByteArray> VerbTableModel::roleNames() const
{
    return {
        {ItalianRole, "italian"},
        {TranslationRole, "translation"},
        {IsFavouriteRole, "isFavourite"},
        {SectionRole, "section"},
        {VerbIdRole, "verbId"},
    };
}

void VerbTableModel::setRepository(VerbRepository *repository)
{
    if (repository == m_repository)
        return;
    m_repository = repository;
    if (m_ownRepository && m_ownRepository != repository) {
        // Later: QML may still read the old value while it takes the new one.
        m_ownRepository->deleteLater();
        m_ownRepository = nullptr;
    }
    emit queueChanged();
}

void VerbTableModel::setQueue(std::shared_ptr<DatabaseQueue> queue)
{
    if (queue == this->queue())
        return;
    if (!queue) {
        setRepository(nullptr);
        return;
    }
    auto *own = new VerbRepository(std::move(queue), &SearchIndex::build, this);
    setRepository(own);
    m_ownRepository = own;
}

void VerbTableModel::setHighlightedVerbId(qint64 id)
{
    if (id == m_highlightedVerbId)
        return;
    m_highlightedVerbId = id;
    emit highlightedVerbIdChanged();
}

Settings &VerbTableModel::settings() const
{
    return m_settings ? *m_settings : Settings::standard();
}

const VerbPtr &VerbTableModel::rowVerb(size_t row) const
{
    VerbPtr &verb = m_rows[row].verb;
    if (!verb)
        verb = createRowVerb(int(row));
    return verb;
}

VerbPtr VerbTableModel::verbAtRow(int row) const
{
    return row >= 0 && row < int(m_rows.size()) ? rowVerb(size_t(row)) : nullptr;
}

int VerbTableModel::rowOfVerb(const Verb *verb) const
{
    for (size_t i = 0; i < m_rows.size(); ++i) {
        if (m_rows[i].verb.get() == verb)
            return int(i);
    }
    return -1;
}

double VerbTableModel::verbIdAt(int row) const
{
    const VerbPtr verb = verbAtRow(row);
    return verb ? double(verb->id) : -1.0;
}

int VerbTableModel::rowForVerbId(double id, int hint) const
{
    const auto wanted = qint64(id);
    if (id < 0)
        return -1;
    if (const VerbPtr verb = verbAtRow(hint); verb && verb->id == wanted)
        return hint;
    for (int row = 0; row < count(); ++row) {
        if (const VerbPtr &verb = rowVerb(size_t(row)); verb && verb->id == wanted)
            return row;
    }
    return -1;
}

void VerbTableModel::selectRow(int row)
{
    if (VerbPtr verb = verbAtRow(row))
        emit showDetail(verb);
}

SwipeAction *VerbTableModel::trailingSwipeAction(int)
{
    return nullptr;
}

void VerbTableModel::reloadData(std::vector<Row> rows)
{
    const bool countChanges = rows.size() != m_rows.size();
    beginResetModel();
    m_rows = std::move(rows);
    endResetModel();
    if (countChanges)
        emit countChanged();
}

void VerbTableModel::deleteRow(const Verb *verb)
{
    const int row = rowOfVerb(verb);
    if (row < 0)
        return;
    beginRemoveRows({}, row, row);
    m_rows.erase(m_rows.begin() + row);
    endRemoveRows();
    emit countChanged();
}

void VerbTableModel::reloadRow(const Verb *verb)
{
    const int row = rowOfVerb(verb);
    if (row < 0)
        return;
    const QModelIndex changed = index(row);
    emit dataChanged(changed, changed);
}

SwipeAction *VerbTableModel::favouriteSwipeAction(const VerbPtr &verb)
{
    const bool favourite = verb->isFavourite;
    QPointer<VerbTableModel> self(this);
    return SwipeAction::forQml(new SwipeAction(
            SwipeAction::Style::Normal,
            favourite ? QStringLiteral("action.favourite.remove") : QStringLiteral("action.favourite"),
            favourite ? QStringLiteral("remove") : QStringLiteral("favourite"),
            favourite ? SwipeAction::destructiveColor() : SwipeAction::neutralColor(), verb,
            [self](const VerbPtr &verb) {
                if (!self)
                    return false;
                const bool wanted = !verb->isFavourite;
                verb->isFavourite = wanted;
                self->reloadRow(verb.get());
                // On failure the star goes back to what the table holds;
                // nobody else needs to reload.
                if (!VerbRepository::setFavourite(self->repository(), verb, wanted, self))
                    self->reloadRow(verb.get());
                return true;
            }));
}

std::vector<VerbTableModel::Row> VerbTableModel::rowsFor(const QList<VerbPtr> &verbs)
{
    std::vector<Row> rows;
    rows.reserve(size_t(verbs.size()));
    for (const VerbPtr &verb : verbs)
        rows.push_back({verb, {}});
    return rows;
}

} // namespace norvella
