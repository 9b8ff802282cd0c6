#include "VerbListTableViewController.h"

#include "CrashLog.h"
#include "Database.h"
#include "SearchIndex.h"
#include "Settings.h"
#include "TranslationLanguages.h"

#include <algorithm>

namespace norvella {

VerbListTableViewController::VerbListTableViewController(QObject *parent)
    : InterstitialTableViewController(parent), m_irregular(new IrregularVerbListController(this))
{
    // The filtered list is part of this tab: same data, same detail column.
    connect(this, &VerbTableModel::queueChanged, m_irregular, [this] { m_irregular->setRepository(repository()); });
    connect(this, &VerbTableModel::highlightedVerbIdChanged, m_irregular,
            [this] { m_irregular->setHighlightedVerbId(highlightedVerbId()); });
    connect(m_irregular, &VerbTableModel::showDetail, this, &VerbTableModel::showDetail);
}

void VerbListTableViewController::setShowsIrregular(bool shows)
{
    if (shows == m_showsIrregular)
        return;
    m_showsIrregular = shows;
    if (shows && !m_irregular->isLoaded())
        m_irregular->load();
    emit showsIrregularChanged();
}

void VerbListTableViewController::viewDidLoad()
{
    m_observers.add(Notifications::VerbFavouriteToggled,
                    [this](const Notification &notification) { verbFavouriteToggled(notification); });
    m_irregular->setRepository(repository());
    m_irregular->viewDidLoad();
    reload();
}

void VerbListTableViewController::viewDidAppear()
{
    emit analyticsEvent(QStringLiteral("verb_list"));
    setVisible(true);
}

void VerbListTableViewController::viewDidDisappear()
{
    setVisible(false);
}

QString VerbListTableViewController::sortColumn(const Settings &settings, const QStringList &preferredLanguages)
{
    if (Preferences::sortByLang(settings))
        return QStringLiteral("simplified_italian");
    return QLatin1String(TranslationLanguages::listed(settings, preferredLanguages).listOrderColumn);
}

QString VerbListTableViewController::query(const QString &sortColumn)
{
    return QStringLiteral("SELECT distinct verb._id, voice_available, english, portuguese, simplified_portuguese, "
                          "german, simplified_german, french, simplified_french, dutch, simplified_dutch, spanish, "
                          "simplified_spanish, italian, simplified_italian, substr(")
            + sortColumn
            + QStringLiteral(", 1, 1) as index_letter, favourite._id as favourite_available\n"
                             "FROM verb LEFT OUTER JOIN favourite ON verb._id = favourite.verbid\n"
                             "ORDER BY ")
            + sortColumn;
}

void VerbListTableViewController::sortKeys(QStringList &keys)
{
    // Scalar-value order of the normalised text, not UTF-16 unit order.
    std::sort(keys.begin(), keys.end(), [](const QString &a, const QString &b) {
        const QList<uint> left = a.normalized(QString::NormalizationForm_C).toUcs4();
        const QList<uint> right = b.normalized(QString::NormalizationForm_C).toUcs4();
        return std::lexicographical_compare(left.begin(), left.end(), right.begin(), right.end());
    });
}

void VerbListTableViewController::reload()
{
    // Settings that reorder or retranslate this list do the same to the filtered one.
    m_irregular->setSettings(&settings());
    m_irregular->reload();
    const QString column = sortColumn(settings(), PreferredLanguages::get());
    m_verbs.clear();
    m_rowSources.clear();
    m_rowIndex.reset();
    m_rowPool.clear();
    if (!queue())
        return;
    if (readFromIndex(column))
        return;
    // The rows are packed as they come and made into records when shown:
    // a record for each of 6,000 rows held some 10 MB.
    QMap<QString, std::vector<RowSource>> sections;
    repository()->readVerbs(
            query(column), {}, VerbRowFields::Full, DatabaseErrors::ReadingVerbList,
            [this, &sections](const VerbPtr &verb, const ResultSet &row) {
                RowSource source;
                source.pooled = m_rowPool.add(*verb);
                sections[row.stringForColumn(QStringLiteral("index_letter")).toUpper()].push_back(source);
            },
            [this, &sections](bool read) {
                m_rowPool.squeeze();
                if (!read) {
                    // The old section titles stay, over an empty list.
                    m_rowPool.clear();
                    reloadData({});
                    return;
                }
                showSections(sections);
            });
}

void VerbListTableViewController::showSections(const QMap<QString, std::vector<RowSource>> &sections)
{
    QStringList keys = sections.keys();
    sortKeys(keys);
    if (keys != m_keys) {
        m_keys = keys;
        emit keysChanged();
    }
    std::vector<Row> flat;
    size_t total = 0;
    for (const auto &inSection : sections)
        total += inSection.size();
    flat.reserve(total);
    m_rowSources.reserve(total);
    for (const QString &key : std::as_const(m_keys)) {
        const std::vector<RowSource> &inSection = sections[key];
        m_verbs.insert(key, QList<VerbPtr>(qsizetype(inSection.size())));
        for (size_t i = 0; i < inSection.size(); ++i) {
            flat.push_back({nullptr, key});
            m_rowSources.push_back(inSection[i]);
            m_rowSources.back().section = key;
            m_rowSources.back().inSection = qsizetype(i);
        }
    }
    reloadData(std::move(flat));
}

// The statement sorts some 6,000 rows on every reload (a favourite toggled on
// another screen, a settings change): several frames. The search index holds
// the same rows in the same order, so only the favourites are read here.
bool VerbListTableViewController::readFromIndex(const QString &column)
{
    // The repository's index as soon as it is read, whoever asked for it.
    const auto index = m_readsFromIndex ? repository()->searchIndex() : nullptr;
    const SearchIndex::Column order = SearchIndex::columnNamed(column);
    if (!index || order == SearchIndex::ColumnCount)
        return false;
    std::vector<SearchIndex::Favourite> favourites;
    bool read = false;
    queue()->inDatabase([&](Database &db) { read = SearchIndex::readFavourites(db, favourites); });
    if (!read)
        return false;
    std::vector<SearchIndex::Hit> hits;
    index->everyVerb(order, favourites, hits);
    // Records are made when a row is shown: most of 6,000 never are.
    QMap<QString, std::vector<RowSource>> sections;
    for (const SearchIndex::Hit &hit : hits) {
        RowSource source;
        source.hit = hit;
        sections[index->listSection(hit, order)].push_back(source);
    }
    m_rowIndex = index;
    showSections(sections);
    return true;
}

VerbPtr VerbListTableViewController::createRowVerb(int row) const
{
    if (row < 0 || size_t(row) >= m_rowSources.size())
        return nullptr;
    const RowSource &source = m_rowSources[size_t(row)];
    auto section = m_verbs.find(source.section);
    if (section == m_verbs.end() || source.inSection >= section->size())
        return nullptr;
    VerbPtr &verb = (*section)[source.inSection];
    if (!verb)
        verb = m_rowIndex ? m_rowIndex->listVerb(source.hit) : m_rowPool.verb(source.pooled);
    return verb;
}

const QMap<QString, QList<VerbPtr>> &VerbListTableViewController::verbs() const
{
    for (int row = 0; row < int(m_rowSources.size()); ++row)
        verbAtRow(row);
    return m_verbs;
}

int VerbListTableViewController::numberOfRowsInSection(int section) const
{
    if (section < 0 || section >= m_keys.size())
        return 0;
    return int(m_verbs.value(m_keys.at(section)).size());
}

int VerbListTableViewController::sectionForSectionIndexTitle(const QString &title) const
{
    return int(m_keys.indexOf(title));
}

int VerbListTableViewController::firstRowForSectionIndexTitle(const QString &title) const
{
    const int section = sectionForSectionIndexTitle(title);
    if (section < 0)
        return -1;
    for (int row = 0; row < rowCount(); ++row) {
        if (data(index(row), SectionRole).toString() == title)
            return row;
    }
    return -1;
}

SwipeAction *VerbListTableViewController::trailingSwipeAction(int row)
{
    const VerbPtr verb = verbAtRow(row);
    if (!verb)
        return nullptr;
    const QString key = data(index(row), SectionRole).toString();
    if (!m_keys.contains(key) || !m_verbs.contains(key))
        return nullptr;
    return favouriteSwipeAction(verb);
}

void VerbListTableViewController::verbFavouriteToggled(const Notification &notification)
{
    if (qobject_cast<VerbListTableViewController *>(notification.sender()))
        return;
    reload();
}

} // namespace norvella
