#pragma once

// The real app in a folder of its own: its own HOME and XDG folders (CTest
// runs suites side by side), launched to its first frame, optionally killed
// at an instant or at a numbered step of an update (NORVELLA_KILL_AT).
// Header only: the suites that include it name the binary they run.

#include <QDir>
#include <QFile>
#include <QHash>
#include <QProcess>
#include <QTemporaryDir>

#include <csignal>
#include <memory>

namespace norvella::test {

class AppSandbox
{
public:
    struct Run
    {
        bool killed = false;
        int exitCode = -1;
        QByteArray err;
    };

    explicit AppSandbox(const QString &binary) : m_binary(binary)
    {
        m_docs = m_dir.filePath(QStringLiteral("data/Norvella/norvella"));
        m_config = m_dir.filePath(QStringLiteral("config/Norvella/norvella"));
        const QString run = m_dir.filePath(QStringLiteral("run"));
        m_ready = m_dir.isValid() && QDir().mkpath(m_docs) && QDir().mkpath(m_config) && QDir().mkpath(run)
                && QFile::setPermissions(run, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    }

    bool isReady() const { return m_ready; }
    QString filePath(const QString &name) const { return m_dir.filePath(name); }
    const QString &binary() const { return m_binary; }
    const QString &docs() const { return m_docs; }
    QString working() const { return m_docs + QStringLiteral("/verbs.db"); }
    QString settingsPath() const { return m_config + QStringLiteral("/settings.json"); }

    QProcessEnvironment environment() const
    {
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert(QStringLiteral("HOME"), m_dir.filePath(QStringLiteral("home")));
        env.insert(QStringLiteral("XDG_DATA_HOME"), m_dir.filePath(QStringLiteral("data")));
        env.insert(QStringLiteral("XDG_CONFIG_HOME"), m_dir.filePath(QStringLiteral("config")));
        env.insert(QStringLiteral("XDG_RUNTIME_DIR"), m_dir.filePath(QStringLiteral("run")));
        env.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
        env.insert(QStringLiteral("QT_QUICK_BACKEND"), QStringLiteral("software"));
        env.remove(QStringLiteral("NORVELLA_KILL_AT"));
        return env;
    }

    // A launch that reaches its first frame and exits; with killAfterMs it is
    // killed that long after it started, if still running.
    Run launch(const QHash<QString, QString> &extra = {}, int killAfterMs = -1) const
    {
        QProcessEnvironment env = environment();
        for (auto it = extra.cbegin(); it != extra.cend(); ++it)
            env.insert(it.key(), it.value());
        QProcess process;
        process.setProcessEnvironment(env);
        process.start(m_binary, {QStringLiteral("--first-frame")});
        Run run;
        if (!process.waitForStarted(10000))
            return run;
        if (killAfterMs >= 0 && !process.waitForFinished(killAfterMs))
            ::kill(pid_t(process.processId()), SIGKILL);
        process.waitForFinished(60000);
        run.killed = process.exitStatus() == QProcess::CrashExit;
        run.exitCode = run.killed ? -1 : process.exitCode();
        run.err = process.readAllStandardError();
        return run;
    }

    // The launch the update hook kills at its step'th step; not killed once
    // the step is past the update's last.
    Run launchKilledAtStep(int step) const
    {
        return launch({{QStringLiteral("NORVELLA_KILL_AT"), QString::number(step)}});
    }

    // A shell script in a mount namespace of its own, where it may mount a small
    // tmpfs, with this sandbox's environment and the extra variables.
    Run inMountNamespace(const QString &script, const QHash<QString, QString> &extra = {}, int timeoutMs = 120000) const
    {
        QProcessEnvironment env = environment();
        for (auto it = extra.cbegin(); it != extra.cend(); ++it)
            env.insert(it.key(), it.value());
        QProcess process;
        process.setProcessEnvironment(env);
        process.start(QStringLiteral("unshare"), {QStringLiteral("-rm"), QStringLiteral("sh"), QStringLiteral("-c"), script});
        Run run;
        if (!process.waitForFinished(timeoutMs))
            return run;
        run.killed = process.exitStatus() == QProcess::CrashExit;
        run.exitCode = run.killed ? -1 : process.exitCode();
        run.err = process.readAllStandardError();
        return run;
    }

    void removeWorkingFiles() const
    {
        for (const QString &name : QDir(m_docs).entryList(QDir::Files))
            QFile::remove(m_docs + QLatin1Char('/') + name);
    }

private:
    QTemporaryDir m_dir;
    QString m_binary, m_docs, m_config;
    bool m_ready = false;
};

} // namespace norvella::test
