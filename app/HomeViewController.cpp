#include "HomeViewController.h"

#include "Analytics.h"
#include "CrashLog.h"
#include "SearchIndex.h"
#include "Settings.h"
#include "Strings.h"
#include "VerbRef.h"

#include <QUrl>

namespace norvella {

HomeViewController::HomeViewController(QObject *parent) : QObject(parent) {}

HomeViewController::~HomeViewController()
{
    // The children are deleted after this body; none may call back into it.
    if (m_searchResults)
        m_searchResults->setDelegate(nullptr);
}

Settings &HomeViewController::settings() const
{
    return m_settings ? *m_settings : Settings::standard();
}

void HomeViewController::setSettings(Settings *settings)
{
    m_settings = settings;
    for (VerbTableModel *child : std::initializer_list<VerbTableModel *>{m_verbList, m_favourites, m_history, m_searchResults}) {
        if (child)
            child->setSettings(settings);
    }
}

void HomeViewController::setRepository(VerbRepository *repository)
{
    if (repository == m_repository)
        return;
    m_repository = repository;
    if (m_ownRepository && m_ownRepository != repository) {
        m_ownRepository->deleteLater();
        m_ownRepository = nullptr;
    }
    for (VerbTableModel *child : std::initializer_list<VerbTableModel *>{m_verbList, m_favourites, m_history, m_searchResults}) {
        if (child)
            child->setRepository(m_repository);
    }
    emit queueChanged();
}

void HomeViewController::setQueue(std::shared_ptr<DatabaseQueue> queue)
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

void HomeViewController::viewDidLoad()
{
    if (m_loaded)
        return;
    m_loaded = true;
    m_observers.add(Notifications::HistoryFeatureToggled, [this](const Notification &) { applyHistoryRule(); });
    m_observers.add(Notifications::TabOpenEvent, [this](const Notification &notification) { openTab(notification); });

    m_searchResults = new SearchResultsTableViewController(this);
    m_searchResults->setSettings(m_settings);
    m_searchResults->setDelegate(this);
    m_searchResults->setRepository(m_repository);
    emit searchResultsControllerChanged();
    updateCrashReportContext();

    showTab(ListTab);
    applyHistoryRule();
}

QList<int> HomeViewController::tabTags() const
{
    if (m_historyTabVisible)
        return {ListTab, FavouritesTab, HistoryTab};
    return {ListTab, FavouritesTab};
}

QVariantList HomeViewController::tabs() const
{
    QVariantList items;
    for (int tag : tabTags()) {
        static const char *const keys[] = {"tabs.list", "tabs.favourites", "tabs.history"};
        static const char *const icons[] = {"list", "favourite", "history"};
        items.append(QVariantMap{
                {QStringLiteral("tag"), tag},
                {QStringLiteral("title"), Strings::text(QString::fromLatin1(keys[tag]))},
                {QStringLiteral("icon"), QUrl(QStringLiteral("qrc:/norvella/icons/%1.svg").arg(QLatin1String(icons[tag])))},
        });
    }
    return items;
}

int HomeViewController::tabForName(const QString &name)
{
    if (name == QLatin1String("list"))
        return ListTab;
    if (name == QLatin1String("favourites"))
        return FavouritesTab;
    if (name == QLatin1String("history"))
        return HistoryTab;
    return -1;
}

void HomeViewController::selectTabAt(int index)
{
    const QList<int> tags = tabTags();
    if (index >= 0 && index < tags.size())
        showTab(tags.at(index));
}

void HomeViewController::showTab(int tag)
{
    // With history switched off there is no history tab to show.
    if (tag == HistoryTab && !m_historyTabVisible)
        tag = ListTab;
    InterstitialTableViewController *child = childForTab(tag);
    if (!child)
        return;
    if (tag != m_selectedTab) {
        m_selectedTab = tag;
        emit selectedTabChanged();
    }
    if (child == m_currentChild)
        return;
    if (m_currentChild)
        m_currentChild->viewDidDisappear();
    m_currentChild = child;
    child->viewDidAppear();
}

template<typename T> T *HomeViewController::makeChild()
{
    auto *child = new T(this);
    child->setSettings(m_settings);
    child->setRepository(m_repository);
    connect(child, &VerbTableModel::showDetail, this, qOverload<const VerbPtr &>(&HomeViewController::showVerb));
    child->setHighlightedVerbId(m_padIdiom && m_detailVerb ? m_detailVerb->verbId() : -1);
    connect(child, &InterstitialTableViewController::analyticsEvent, this,
            [](const QString &name) { Analytics::shared().logEvent(name); });
    child->viewDidLoad();
    return child;
}

InterstitialTableViewController *HomeViewController::childForTab(int tag)
{
    bool created = false;
    auto lazily = [&](auto *&child) {
        if (!child) {
            child = makeChild<std::remove_reference_t<decltype(*child)>>();
            created = true;
        }
        return child;
    };
    InterstitialTableViewController *child = nullptr;
    switch (tag) {
    case ListTab:
        child = lazily(m_verbList);
        break;
    case FavouritesTab:
        child = lazily(m_favourites);
        break;
    case HistoryTab:
        child = lazily(m_history);
        break;
    default:
        return nullptr;
    }
    if (created)
        emit childrenChanged();
    return child;
}

void HomeViewController::openTab(const Notification &notification)
{
    const QString tab = notification.userInfo.value(QStringLiteral("SelectedTab")).toString();
    if (tab == QLatin1String("History"))
        showTab(HistoryTab);
    else if (tab == QLatin1String("Favourites"))
        showTab(FavouritesTab);
    else
        showTab(ListTab);
}

void HomeViewController::applyHistoryRule()
{
    const bool visible = Preferences::useHistory(settings());
    if (visible != m_historyTabVisible) {
        m_historyTabVisible = visible;
        emit tabsChanged();
        emit selectedTabChanged();
    }
    showTab(ListTab);
}

void HomeViewController::updateSearchResults(const QString &text)
{
    if (m_searchResults)
        m_searchResults->search(text);
}

void HomeViewController::searchResultSelected(const VerbPtr &verb)
{
    m_selectedSearchResult = verb;
    showVerb(verb);
    if (m_padIdiom)
        emit searchFieldShouldResign();
}

void HomeViewController::searchFormSelected(const VerbPtr &verb, const QList<FormCell> &cells)
{
    m_selectedSearchResult = verb;
    showVerb(verb, cells);
    if (m_padIdiom)
        emit searchFieldShouldResign();
}

void HomeViewController::showVerbRef(QObject *verb)
{
    showVerb(VerbRef::from(verb));
}

void HomeViewController::showVerb(const VerbPtr &verb)
{
    showVerb(verb, {});
}

void HomeViewController::showVerb(const VerbPtr &verb, const QList<FormCell> &cells)
{
    if (!verb)
        return;
    VerbRef *previous = m_detailVerb;
    m_detailVerb = new VerbRef(verb, this);
    m_detailVerb->setMatches(cells);
    emit detailVerbChanged();
    updateHighlight();
    emit showDetail();
    // Later, so a page still bound to it can move to the new one first.
    if (previous)
        previous->deleteLater();
}

QObject *HomeViewController::detailVerb() const
{
    return m_detailVerb;
}

void HomeViewController::setPadIdiom(bool pad)
{
    if (pad == m_padIdiom)
        return;
    m_padIdiom = pad;
    emit padIdiomChanged();
    updateHighlight();
}

// Side by side, the lists mark the verb the detail column shows; stacked, the
// list is behind the verb and a mark would only linger after going back.
void HomeViewController::updateHighlight()
{
    const qint64 id = m_padIdiom && m_detailVerb ? m_detailVerb->verbId() : -1;
    for (VerbTableModel *child : std::initializer_list<VerbTableModel *>{m_verbList, m_favourites, m_history, m_searchResults}) {
        if (child)
            child->setHighlightedVerbId(id);
    }
}

void HomeViewController::optionsDidClose(bool fieldsChanged)
{
    if (!fieldsChanged)
        return;
    if (m_verbList)
        m_verbList->reload();
    // The translation under every row follows the language chosen, on every tab.
    if (m_favourites)
        m_favourites->reload();
    if (m_history)
        m_history->reload();
    NotificationCenter::defaultCenter().post(Notifications::RefreshConjugations);
    updateCrashReportContext();
}

void HomeViewController::updateCrashReportContext()
{
    const Settings &s = settings();
    CrashLog::setCustomValue(QStringLiteral("IncludeEnglish"), Preferences::includeEnglish(s));
    CrashLog::setCustomValue(QStringLiteral("SearchFromStart"), Preferences::searchFromStart(s));
    CrashLog::setCustomValue(QStringLiteral("ShowTranslated"), Preferences::showTranslated(s));
    CrashLog::setCustomValue(QStringLiteral("SortByLang"), Preferences::sortByLang(s));
    CrashLog::setCustomValue(QStringLiteral("TranslationLanguage"), Preferences::translationLanguage(s));
    const QStringList languages = PreferredLanguages::get();
    if (!languages.isEmpty())
        CrashLog::setCustomValue(QStringLiteral("Locale"), languages.first());
}

} // namespace norvella
