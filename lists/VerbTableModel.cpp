#include "VerbTableModel.h"

#include "Database.h"
#include "DatabaseQueueRef.h"
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
        return verb.translation(settings());
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

void VerbTableModel::setQueue(std::shared_ptr<DatabaseQueue> queue)
{
    if (queue == m_queue)
        return;
    m_queue = std::move(queue);
    if (m_queueObject && m_queueObject->parent() == this)
        m_queueObject->deleteLater();
    m_queueObject = m_queue ? new DatabaseQueueRef(m_queue, this) : nullptr;
    emit queueChanged();
}

void VerbTableModel::setQueueObject(QObject *object)
{
    if (object == m_queueObject)
        return;
    if (m_queueObject && m_queueObject->parent() == this)
        m_queueObject->deleteLater();
    m_queue = DatabaseQueueRef::from(object);
    m_queueObject = m_queue ? object : nullptr;
    emit queueChanged();
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

std::vector<VerbTableModel::Row> VerbTableModel::rowsFor(const QList<VerbPtr> &verbs)
{
    std::vector<Row> rows;
    rows.reserve(size_t(verbs.size()));
    for (const VerbPtr &verb : verbs)
        rows.push_back({verb, {}});
    return rows;
}

VerbPtr VerbTableModel::readListVerb(const ResultSet &row)
{
    auto verb = std::make_shared<Verb>();
    verb->id = row.longLongIntForColumn(QStringLiteral("_id"));
    verb->english = row.stringForColumn(QStringLiteral("english"));
    verb->italian = row.stringForColumn(QStringLiteral("italian"));
    verb->portuguese = row.stringForColumn(QStringLiteral("portuguese"));
    verb->german = row.stringForColumn(QStringLiteral("german"));
    verb->spanish = row.stringForColumn(QStringLiteral("spanish"));
    verb->french = row.stringForColumn(QStringLiteral("french"));
    verb->dutch = row.stringForColumn(QStringLiteral("dutch"));
    verb->isFavourite = row.boolForColumn(QStringLiteral("favourite_available"));
    return verb;
}

} // namespace norvella
