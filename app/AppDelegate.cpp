#include "AppDelegate.h"

#include "Analytics.h"
#include "Appearance.h"
#include "CrashLog.h"
#include "DatabaseCheck.h"
#include "LegacySettings.h"
#include "NotificationCenter.h"
#include "SearchIndex.h"
#include "ShortcutChannel.h"
#include "Settings.h"
#include "Strings.h"
#include "UserMessages.h"
#include "VerbStore.h"

#include <QCoreApplication>
#include <QTimer>

namespace norvella {

LaunchEnvironment LaunchEnvironment::standard()
{
    LaunchEnvironment environment;
    environment.documentsDirectory = VerbStore::documentsDirectory();
    environment.masterPath = VerbStore::findMasterDatabase();
    environment.appVersion = QCoreApplication::applicationVersion();
    return environment;
}

AppDelegate::AppDelegate(LaunchEnvironment environment, Settings &settings, QObject *parent)
    : QObject(parent), m_environment(std::move(environment)), m_settings(settings)
{
}

namespace {
// Long enough after launch that the first screens are drawn and the search
// index has its start.
constexpr int DatabaseCheckDelayMs = 3000;
// The index is ready by the time anyone types or the list reloads; until then
// the statements answer. It starts once the first frame is likely out, so it
// does not compete with building the window for the CPU.
constexpr int IndexBuildDelayMs = 600;
} // namespace

AppDelegate::~AppDelegate() = default;

bool AppDelegate::didFinishLaunching(const QString &shortcutType)
{
    Analytics::shared().start();
    startRemoteConfig();

    if (!prepareDatabase())
        return true;

    Appearance::shared().setChoice(Preferences::appearance(m_settings));
    if (m_windowFactory)
        m_windowFactory(*this);

    Preferences::registerFirstRunValues(m_settings);
    migrateLegacySettings(m_settings, m_environment.documentsDirectory);

    m_status = Status::Running;
    if (!shortcutType.isEmpty()) {
        performActionForShortcutItem(shortcutType);
        return false;
    }
    return true;
}

void AppDelegate::startRemoteConfig()
{
    m_remoteConfig.loadDefaults(m_environment.remoteConfigDefaults);
    if (m_remoteConfig.fetch(3600)) {
        if (!m_remoteConfig.activate())
            CrashLog::log(QStringLiteral("Unable to activate properties"));
        for (const QString &key : {QStringLiteral("is_native_ads"), QStringLiteral("is_interstitial_ads")})
            Analytics::shared().setUserProperty(key, m_remoteConfig.stringValue(key));
    }
}

bool AppDelegate::prepareDatabase()
{
    if (m_environment.documentsDirectory.isEmpty()) {
        // Nothing is written anywhere: without a home there is no safe place
        // for the user's rows, and the file system root is not one.
        m_status = Status::FatalError;
        m_fatalError = QStringLiteral("Norvella cannot start: HOME is not set, so there is no folder to keep "
                                      "your favourites and history in. Set HOME and start it again.");
        CrashLog::log(m_fatalError);
        return false;
    }
    const VerbStore::Result result = VerbStore::prepare(m_settings, m_environment.appVersion,
                                                        m_environment.documentsDirectory, m_environment.masterPath);
    switch (result.outcome) {
    case VerbStore::Outcome::MasterMissing:
        m_status = Status::FatalError;
        m_fatalError = QStringLiteral("Norvella cannot start: ") + result.error
                + QStringLiteral(". Reinstall the app or rebuild it.");
        CrashLog::log(m_fatalError);
        return false;
    case VerbStore::Outcome::Failed:
        // The app still opens, with empty lists, and the next launch tries again.
        CrashLog::log(QStringLiteral("Unable to initialise database ") + result.error);
        m_launchNotice = Strings::text(QStringLiteral("data.unavailable")).arg(result.error);
        UserMessages::post(m_launchNotice);
        m_queue.reset();
        return true;
    case VerbStore::Outcome::Ready:
        if (result.repaired) {
            m_launchNotice = Strings::text(QStringLiteral("data.repaired"))
                                     .arg(result.keptFavourites)
                                     .arg(result.keptHistory);
            UserMessages::post(m_launchNotice);
        }
        m_queue = std::make_shared<DatabaseQueue>(VerbStore::workingCopyPath(m_environment.documentsDirectory));
        m_check = std::make_unique<DatabaseCheck>(m_queue->path());
        QTimer::singleShot(DatabaseCheckDelayMs, this, [this] { m_check->start(); });
        m_repository = new VerbRepository(m_queue, &SearchIndex::build, this);
        QTimer::singleShot(IndexBuildDelayMs, m_repository, &VerbRepository::buildSearchIndex);
        emit queueChanged();
        return true;
    }
    return true;
}

bool AppDelegate::performActionForShortcutItem(const QString &type)
{
    const QString full = normalisedShortcutType(type);
    auto &center = NotificationCenter::defaultCenter();
    if (full == QLatin1String("com.quorbel.shortcut.search")) {
        if (m_collapsed)
            emit focusSearchRequested();
    } else if (full == QLatin1String("com.quorbel.shortcut.favourite")) {
        center.post(Notifications::TabOpenEvent, QVariant(), {{QStringLiteral("SelectedTab"), QStringLiteral("Favourites")}});
    } else if (full == QLatin1String("com.quorbel.shortcut.history")) {
        center.post(Notifications::TabOpenEvent, QVariant(), {{QStringLiteral("SelectedTab"), QStringLiteral("History")}});
    } else if (full == QLatin1String("com.quorbel.shortcut.list")) {
        center.post(Notifications::TabOpenEvent, QVariant(), {{QStringLiteral("SelectedTab"), QStringLiteral("List")}});
    }
    return true;
}

void AppDelegate::setCollapsed(bool collapsed)
{
    if (m_collapsed == collapsed)
        return;
    m_collapsed = collapsed;
    emit collapsedChanged();
}

bool AppDelegate::shouldCollapseSecondary(bool detailIsConjugationScreen, bool detailHasVerb)
{
    return detailIsConjugationScreen && !detailHasVerb;
}

} // namespace norvella
