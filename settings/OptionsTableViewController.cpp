#include "OptionsTableViewController.h"

#include "BuildInfo.h"
#include "CrashLog.h"
#include "DesktopMail.h"
#include "LinkOpener.h"
#include "NotificationCenter.h"
#include "OptionsText.h"
#include "Settings.h"
#include "Strings.h"
#include "UserMessages.h"
#include "Verb.h"
#include "VerbRepository.h"

#include <QUrl>

#include <array>

namespace norvella {

using OptionsText::textOr;

namespace {

OptionsTableViewController::CollectionHandler &collectionHandler()
{
    static OptionsTableViewController::CollectionHandler handler;
    return handler;
}

OptionsTableViewController::EventHandler &eventHandler()
{
    static OptionsTableViewController::EventHandler handler;
    return handler;
}

constexpr int historyLimitShown = 50;

bool is(int section, int row, int wantedSection, int wantedRow)
{
    return section == wantedSection && row == wantedRow;
}

} // namespace

void OptionsTableViewController::setAnalyticsCollectionHandler(CollectionHandler handler)
{
    collectionHandler() = std::move(handler);
}

void OptionsTableViewController::setAnalyticsEventHandler(EventHandler handler)
{
    eventHandler() = std::move(handler);
}

OptionsTableViewController::OptionsTableViewController(QObject *parent)
    : QAbstractListModel(parent), m_settings(&Settings::standard())
{
}

OptionsTableViewController::~OptionsTableViewController() = default;

int OptionsTableViewController::numberOfRowsInSection(int section)
{
    if (section == AppearanceSection)
        return 1;
    return section >= 0 && section < AppearanceSection ? AppearanceSection - section : 0;
}

int OptionsTableViewController::rowCount(const QModelIndex &parent) const
{
    if (parent.isValid())
        return 0;
    int count = 0;
    for (int section = 0; section < numberOfSections(); ++section)
        count += numberOfRowsInSection(section);
    return count;
}

OptionsTableViewController::Place OptionsTableViewController::placeOf(int modelRow)
{
    for (int section = 0; section < numberOfSections(); ++section) {
        if (modelRow < numberOfRowsInSection(section))
            return {section, modelRow};
        modelRow -= numberOfRowsInSection(section);
    }
    return {-1, -1};
}

int OptionsTableViewController::modelRowOf(int section, int row)
{
    int modelRow = row;
    for (int s = 0; s < section; ++s)
        modelRow += numberOfRowsInSection(s);
    return modelRow;
}

QHash<int, QByteArray> OptionsTableViewController::roleNames() const
{
    return {
            {SectionRole, "section"},
            {RowInSectionRole, "rowInSection"},
            {CellTypeRole, "cellType"},
            {LabelRole, "label"},
            {CheckedRole, "checked"},
            {SegmentIndexRole, "segmentIndex"},
            {SegmentTitlesRole, "segmentTitles"},
            {DetailRole, "detail"},
            {DisclosureRole, "disclosure"},
            {SectionHeaderRole, "sectionHeader"},
            {SectionFooterRole, "sectionFooter"},
            {FirstInSectionRole, "firstInSection"},
            {LastInSectionRole, "lastInSection"},
    };
}

QString OptionsTableViewController::sectionHeader(int section) const
{
    switch (section) {
    case 0: return textOr(QStringLiteral("settings.search"), QStringLiteral("Search"));
    case 1: return textOr(QStringLiteral("settings.conjugations"), QStringLiteral("Conjugations"));
    case 2: return textOr(QStringLiteral("settings.history"), QStringLiteral("History"));
    case 3: return textOr(QStringLiteral("settings.analytics"), QStringLiteral("Data Collection"));
    case AppearanceSection: return Strings::text(QStringLiteral("settings.appearance"));
    default: return {};
    }
}

QString OptionsTableViewController::sectionFooter(int section) const
{
    switch (section) {
    case 0: return Strings::text(QStringLiteral("settings.conjugations.info"));
    case 2: return Strings::text(QStringLiteral("settings.history_info")).arg(historyLimitShown);
    case 3: return Strings::text(QStringLiteral("settings.analytics.info"));
    default: return {};
    }
}

QString OptionsTableViewController::rowLabel(const Place &place) const
{
    const int key = place.section * 10 + place.row;
    switch (key) {
    case 0:
        return Strings::text(QStringLiteral("settings.includeenglish"))
                .arg(Strings::text(OptionsText::effectiveLanguageNameKey(*m_settings, PreferredLanguages::get())));
    case 1: return Strings::text(QStringLiteral("settings.search"));
    case 2: return Strings::text(QStringLiteral("settings.sortby"));
    case 3: return textOr(QStringLiteral("settings.includeconjugations"), QStringLiteral("Include Conjugations"));
    case 10: return Strings::text(QStringLiteral("settings.descriptions"));
    case 11: return Strings::text(QStringLiteral("settings.translations"));
    case 12: return Strings::text(QStringLiteral("settings.audio.speed"));
    case 20: return Strings::text(QStringLiteral("settings.history"));
    case 21: return Strings::text(QStringLiteral("settings.history_clear"));
    case 30: return Strings::text(QStringLiteral("settings.analytics"));
    case 40: return Strings::text(QStringLiteral("settings.appearance"));
    default: return {};
    }
}

QVariant OptionsTableViewController::data(const QModelIndex &index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid | CheckIndexOption::ParentIsInvalid))
        return {};
    const Place place = placeOf(index.row());
    const int key = place.section * 10 + place.row;
    const Settings &s = *m_settings;
    switch (role) {
    case SectionRole: return place.section;
    case RowInSectionRole: return place.row;
    case CellTypeRole:
        if (key == 0 || key == 3 || key == 20 || key == 30)
            return QStringLiteral("switch");
        if (key == 1 || key == 2 || key == 10 || key == 40)
            return QStringLiteral("segment");
        return QStringLiteral("detail");
    case LabelRole: return rowLabel(place);
    case CheckedRole:
        switch (key) {
        case 0: return Preferences::includeEnglish(s);
        case 3: return Preferences::includeConjugations(s);
        case 20: return Preferences::useHistory(s);
        case 30: return Preferences::analyticsCollectionEnabled(s);
        default: return false;
        }
    case SegmentIndexRole:
        switch (key) {
        case 1: return Preferences::searchFromStart(s) ? 0 : 1;
        case 2: return Preferences::sortByLang(s) ? 1 : 0;
        // Unlike the conjugation screen, this control shows an unset value as "original".
        case 10: return strictBool(s.objectForKey(SettingsKeys::ShowTranslated)) == std::optional<bool>(false) ? 0 : 1;
        case 40: return OptionsText::appearanceChoices().indexOf(Preferences::appearance(s));
        default: return -1;
        }
    case SegmentTitlesRole:
        return OptionsText::segmentTitles(key);
    case DetailRole:
        if (key == 11)
            return Strings::text(OptionsText::languageNameKey(Preferences::translationLanguage(s),
                                                              s.contains(SettingsKeys::TranslationLanguage)));
        if (key == 12)
            return OptionsText::speedText(s);
        return QString();
    case DisclosureRole: return key == 11 || key == 12 || key == 21;
    case SectionHeaderRole: return sectionHeader(place.section);
    case SectionFooterRole: return sectionFooter(place.section);
    case FirstInSectionRole: return place.row == 0;
    case LastInSectionRole: return place.row == numberOfRowsInSection(place.section) - 1;
    default: return {};
    }
}

void OptionsTableViewController::setQueueObject(QObject *queue)
{
    VerbRepository *repository = VerbRepository::from(queue);
    if (m_repository == repository)
        return;
    m_repository = repository;
    emit queueChanged();
}

void OptionsTableViewController::setDelegate(QObject *delegate)
{
    if (m_delegate == delegate)
        return;
    m_delegate = delegate;
    emit delegateChanged();
}

void OptionsTableViewController::setPresenter(QObject *presenter)
{
    if (m_presenter == presenter)
        return;
    m_presenter = presenter;
    emit presenterChanged();
}

SupportEmailSender *OptionsTableViewController::supportEmailSender() const
{
    return m_supportEmailSender;
}

void OptionsTableViewController::setSettings(Settings *settings)
{
    beginResetModel();
    m_settings = settings;
    endResetModel();
}

QString OptionsTableViewController::title() const { return Strings::text(QStringLiteral("settings")); }
QString OptionsTableViewController::appTitle() const { return Strings::text(QStringLiteral("app.title")); }
QString OptionsTableViewController::copyright() const { return Strings::text(QStringLiteral("settings.copyright")); }
QString OptionsTableViewController::creditsTitle() const { return Strings::text(QStringLiteral("settings.credits.title")); }
QString OptionsTableViewController::credits() const { return Strings::text(QStringLiteral("settings.credits")); }
QString OptionsTableViewController::webUrl() const { return BuildInfo::webUrl(); }
QString OptionsTableViewController::supportEmail() const { return Strings::text(QStringLiteral("support.email")); }
QString OptionsTableViewController::doneText() const { return Strings::text(QStringLiteral("common.done")); }

void OptionsTableViewController::switchToggled(int section, int row, bool on)
{
    Settings &s = *m_settings;
    if (is(section, row, 0, 0)) {
        s.setBool(SettingsKeys::IncludeEnglish, on);
    } else if (is(section, row, 0, 3)) {
        s.setBool(SettingsKeys::IncludeConjugations, on);
    } else if (is(section, row, 2, 0)) {
        s.setBool(SettingsKeys::UseHistory, on);
        NotificationCenter::defaultCenter().post(Notifications::HistoryFeatureToggled, QVariant(on));
    } else if (is(section, row, 3, 0)) {
        s.setBool(SettingsKeys::AnalyticsCollectionEnabled, on);
        if (collectionHandler())
            collectionHandler()(on);
        emit analyticsCollectionChanged(on);
    }
    changed();
}

void OptionsTableViewController::segmentChanged(int section, int row, int segment)
{
    Settings &s = *m_settings;
    if (is(section, row, 0, 1))
        s.setString(SettingsKeys::SearchFrom, segment == 1 ? QStringLiteral("W") : QStringLiteral("S"));
    else if (is(section, row, 0, 2))
        s.setBool(SettingsKeys::SortByLang, segment == 1);
    else if (is(section, row, 1, 0))
        s.setBool(SettingsKeys::ShowTranslated, segment == 1);
    else if (is(section, row, AppearanceSection, 0) && segment >= 0 && segment < OptionsText::appearanceChoices().size())
        setAppearance(OptionsText::appearanceChoices().at(segment));
    changed();
}

void OptionsTableViewController::setAppearance(const QString &choice)
{
    m_settings->setString(SettingsKeys::Appearance, choice);
    // The palette follows at once; nothing waits for the screen to close.
    NotificationCenter::defaultCenter().post(Notifications::AppearanceChanged, QVariant(choice));
}

void OptionsTableViewController::rowTapped(int section, int row)
{
    if (is(section, row, 1, 1))
        emit sheetRequested(LanguageSheet, section, row);
    else if (is(section, row, 1, 2))
        emit sheetRequested(SpeedSheet, section, row);
    else if (is(section, row, 2, 1))
        emit sheetRequested(ClearHistorySheet, section, row);
}

QString OptionsTableViewController::sheetTitle(const QString &sheet) const
{
    return OptionsText::sheetTitle(sheet);
}

QStringList OptionsTableViewController::sheetChoices(const QString &sheet) const
{
    return OptionsText::sheetChoices(sheet);
}

QString OptionsTableViewController::sheetCancelText(const QString &sheet) const
{
    return OptionsText::sheetCancelText(sheet);
}

void OptionsTableViewController::choose(const QString &sheet, int index)
{
    Settings &s = *m_settings;
    if (sheet == LanguageSheet && OptionsText::languageCodeForChoice(index)) {
        const QString code = *OptionsText::languageCodeForChoice(index);
        if (code.isEmpty())
            s.removeObject(SettingsKeys::TranslationLanguage);
        else
            s.setString(SettingsKeys::TranslationLanguage, code);
    } else if (sheet == SpeedSheet && OptionsText::speedForChoice(index)) {
        // Normal speed is stored as the integer 1, the others as fractions.
        if (index == 0)
            s.setInteger(SettingsKeys::AudioSpeed, 1);
        else
            s.setDouble(SettingsKeys::AudioSpeed, *OptionsText::speedForChoice(index));
    } else if (sheet == ClearHistorySheet && index == 0) {
        clearHistory();
        return;
    } else {
        return;
    }
    changed();
}

void OptionsTableViewController::clearHistory()
{
    Q_ASSERT_X(m_repository, "OptionsTableViewController::clearHistory",
               "the screen was shown without a database queue");
    if (!m_repository) {
        CrashLog::log(QStringLiteral("Unable to delete favourites: no database is open"));
        return;
    }
    m_repository->clearHistory();
}

void OptionsTableViewController::changed()
{
    m_settings->synchronize();
    refreshRows();
    setFieldsChanged(true);
}

void OptionsTableViewController::refreshRows()
{
    if (rowCount() > 0)
        emit dataChanged(index(0), index(rowCount() - 1));
}

void OptionsTableViewController::setFieldsChanged(bool changed)
{
    if (m_fieldsChanged == changed)
        return;
    m_fieldsChanged = changed;
    emit fieldsChangedChanged();
}

void OptionsTableViewController::viewWillAppear()
{
    setFieldsChanged(false);
    refreshRows();
}

void OptionsTableViewController::viewDidAppear()
{
    const QString event = QStringLiteral("settings");
    if (eventHandler())
        eventHandler()(event, {});
    emit analyticsEvent(event, {});
}

bool OptionsTableViewController::close()
{
    if (!m_delegate)
        return false;
    emit dismissRequested();
    return true;
}

void OptionsTableViewController::didDismiss()
{
    if (!m_delegate)
        return;
    const bool changedWhileShown = m_fieldsChanged;
    emit optionsDidClose(changedWhileShown);
    const QMetaObject *meta = m_delegate->metaObject();
    const int method = meta->indexOfMethod("optionsDidClose(QVariant)");
    if (method >= 0)
        meta->method(method).invoke(m_delegate, Qt::DirectConnection, Q_ARG(QVariant, QVariant(changedWhileShown)));
    else if (meta->indexOfMethod("optionsDidClose(bool)") >= 0)
        QMetaObject::invokeMethod(m_delegate, "optionsDidClose", Qt::DirectConnection, Q_ARG(bool, changedWhileShown));
}

void OptionsTableViewController::openWebsite()
{
    LinkOpener::openOrReport(QUrl(webUrl(), QUrl::StrictMode), LinkOpener::linkFailedText());
}

void OptionsTableViewController::sendSupportEmail()
{
    if (m_supportEmailSender)
        m_supportEmailSender->deleteLater();
    m_supportEmailSender = new SupportEmailSender(m_presenter, this);
    emit supportEmailSenderChanged();
    m_supportEmailSender->sendEmail();
}

} // namespace norvella
