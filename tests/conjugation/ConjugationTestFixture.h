#pragma once

#include "ConjugationServices.h"
#include "CrashLog.h"
#include "DatabaseQueue.h"
#include "Settings.h"
#include "Strings.h"
#include "TestSupport.h"
#include "Verb.h"
#include "VerbDetailTableViewController.h"

#include <QFile>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QtTest>

#include <memory>

namespace norvella::test {

// A working database with the conjugation fixture, a settings store and a
// crash log, all in a fresh temporary folder; English texts and translations.
// The analytics events the screen logs meanwhile are kept in `events`.
class ConjugationFixture
{
public:
    ConjugationFixture()
    {
        QStandardPaths::setTestModeEnabled(true);
        PreferredLanguages::setOverride({QStringLiteral("en-GB")});
        Strings::shared().selectLanguage({QStringLiteral("en-GB")});
        CrashLog::setLogFilePath(dir.filePath(QStringLiteral("norvella.log")));
        ready = QFile::copy(templateDatabase(), databasePath())
                && QFile::setPermissions(databasePath(), QFile::ReadOwner | QFile::WriteOwner);
        settings = std::make_unique<Settings>(dir.filePath(QStringLiteral("settings.json")));
        queue = std::make_shared<DatabaseQueue>(databasePath());
        current() = this;
        ConjugationServices::setEventHandler([](const QString &name, const QVariantMap &parameters) {
            if (current())
                current()->events.append({name, parameters});
        });
    }
    ~ConjugationFixture()
    {
        screen.reset();
        if (current() == this) // the next test's fixture may be made before this one goes
            current() = nullptr;
    }
    static ConjugationFixture *&current()
    {
        static ConjugationFixture *fixture = nullptr;
        return fixture;
    }

    // Built once per test program and copied for each test: SQLite syncs every statement.
    static QString templateDatabase()
    {
        static QTemporaryDir folder;
        static const bool built = [] {
            QFile sql(QStringLiteral(NORVELLA_CONJUGATION_FIXTURE_SQL));
            return sql.open(QIODevice::ReadOnly)
                    && createFixtureDatabase(folder.filePath(QStringLiteral("template.db")),
                                             QString::fromUtf8(sql.readAll()), false);
        }();
        if (!built)
            qFatal("Cannot build the conjugation fixture database");
        return folder.filePath(QStringLiteral("template.db"));
    }

    // Opens the screen as a list does: settings and queue first, then the verb.
    VerbDetailTableViewController &show(const VerbPtr &verb, const QStringList &arguments = {})
    {
        auto next = std::make_unique<VerbDetailTableViewController>();
        next->setSettings(*settings);
        next->setLaunchArguments(arguments);
        next->setQueue(queue);
        next->setSelectedVerb(verb);
        next->viewDidLoad();
        return *(screen = std::move(next));
    }

    QString databasePath() const { return dir.filePath(QStringLiteral("verbs.db")); }
    QString log() const { return QString::fromUtf8(readFile(CrashLog::logFilePath())); }
    QStringList column(const QString &sql) const { return querySingleColumn(databasePath(), sql); }
    bool run(const QString &sql) const { return runSql(databasePath(), sql); }

    // A verb as a list screen hands it over: the row's fields, no forms yet.
    static VerbPtr verb(qint64 id, const char *italian, const char *english, const char *german = "")
    {
        auto verb = std::make_shared<Verb>();
        verb->id = id;
        verb->italian = verb->simplified_italian = QString::fromUtf8(italian);
        verb->english = QString::fromUtf8(english);
        verb->german = QString::fromUtf8(german);
        return verb;
    }
    static VerbPtr andare() { return verb(1, "andare", "to go", "gehen"); }
    static VerbPtr alzarsi() { return verb(5, "alzarsi", "to get up"); }
    static VerbPtr provare() { return verb(7, "provare", "to try"); }
    static VerbPtr zittire() { return verb(8, "zittire", "to silence"); }
    static VerbPtr piovere() { return verb(20, "piovere", "to rain"); }
    static VerbPtr passare() { return verb(21, "passare", "to pass"); }

    QTemporaryDir dir;
    bool ready = false;
    std::unique_ptr<Settings> settings;
    std::shared_ptr<DatabaseQueue> queue;
    std::unique_ptr<VerbDetailTableViewController> screen;
    QList<QPair<QString, QVariantMap>> events;
};

} // namespace norvella::test
