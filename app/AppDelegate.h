#pragma once

#include "DatabaseQueue.h"
#include "RemoteConfig.h"
#include "VerbRepository.h"

#include <QObject>
#include <QQmlEngine>

#include <functional>
#include <memory>

namespace norvella {

class DatabaseCheck;
class Settings;

struct LaunchEnvironment
{
    QString documentsDirectory;
    QString masterPath;
    QString appVersion;
    QString remoteConfigDefaults = QStringLiteral(":/norvella/FirebaseConfigDefaults.plist");

    // The real locations: the app's data folder and the installed master.
    static LaunchEnvironment standard();
};

// Runs the launch sequence and answers quick actions. It owns the verb
// repository, and through it the one database queue and the search index,
// for the life of the process.
class AppDelegate : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Created at start-up")
    Q_PROPERTY(bool collapsed READ collapsed WRITE setCollapsed NOTIFY collapsedChanged)
    Q_PROPERTY(bool hasDatabase READ hasDatabase NOTIFY queueChanged)
    // The verb repository for the screens' `queue`, null without a database.
    Q_PROPERTY(QObject *queue READ queueObject NOTIFY queueChanged)

public:
    enum class Status { NotLaunched, Running, FatalError };
    using WindowFactory = std::function<void(AppDelegate &)>;

    explicit AppDelegate(LaunchEnvironment environment, Settings &settings, QObject *parent = nullptr);
    ~AppDelegate() override;

    // The window and home screen are built by the factory at their place in
    // the sequence, so quick actions find the home screen listening.
    void setWindowFactory(WindowFactory factory) { m_windowFactory = std::move(factory); }

    // False when a quick action given at launch has been handled here.
    bool didFinishLaunching(const QString &shortcutType = {});
    bool performActionForShortcutItem(const QString &type);

    Status status() const { return m_status; }
    const QString &fatalError() const { return m_fatalError; }
    std::shared_ptr<DatabaseQueue> queue() const { return m_queue; }
    VerbRepository *repository() const { return m_repository; }
    bool hasDatabase() const { return m_queue != nullptr; }
    QObject *queueObject() const { return m_repository; }
    const RemoteConfig &remoteConfig() const { return m_remoteConfig; }
    const LaunchEnvironment &environment() const { return m_environment; }
    bool hasInternetConnection() const { return m_hasInternetConnection; }
    // What the user is told once about this launch's data: a repair, or data
    // that could not be opened. Empty on an ordinary launch.
    const QString &launchNotice() const { return m_launchNotice; }

    bool collapsed() const { return m_collapsed; }
    void setCollapsed(bool collapsed);

    // Whether an empty detail column is dropped when the layout collapses.
    Q_INVOKABLE static bool shouldCollapseSecondary(bool detailIsConjugationScreen, bool detailHasVerb);

signals:
    void collapsedChanged();
    void queueChanged();
    // The search quick action on a phone layout: back to the home screen and focus the field.
    void focusSearchRequested();

private:
    void startRemoteConfig();
    bool prepareDatabase();

    LaunchEnvironment m_environment;
    Settings &m_settings;
    WindowFactory m_windowFactory;
    RemoteConfig m_remoteConfig;
    std::shared_ptr<DatabaseQueue> m_queue;
    std::unique_ptr<DatabaseCheck> m_check;
    VerbRepository *m_repository = nullptr;
    Status m_status = Status::NotLaunched;
    QString m_fatalError;
    QString m_launchNotice;
    bool m_collapsed = false;
    bool m_hasInternetConnection = false;
};

} // namespace norvella
