// The real binary, run as a user runs it: one instance, to which later launches hand their
// request over a socket in the user's private runtime folder; clients that send garbage, far
// too much or too many connections at once do not stop it; and a working copy that cannot
// be written is reported with SQLite's own reason. Every process gets folders of its own.
#include "AppSandbox.h"
#include "ShortcutChannel.h"

#include <QFile>
#include <QLocalSocket>
#include <QProcess>
#include <QtTest>

#include <csignal>
#include <memory>

#include <unistd.h>

using namespace norvella;

namespace {
// One process of the app, its stdout and stderr (where its log lines go too) kept as they come.
class App
{
public:
    explicit App(const QProcessEnvironment &environment)
    {
        m_process.setProcessEnvironment(environment);
        m_process.setProcessChannelMode(QProcess::MergedChannels);
    }
    ~App()
    {
        if (m_process.state() != QProcess::NotRunning) {
            m_process.kill();
            m_process.waitForFinished(5000);
        }
    }
    void start(const QStringList &arguments = {}) { m_process.start(QStringLiteral(NORVELLA_BINARY), arguments); }
    // Runs to its end; its exit code, or -1 when it did not end by itself.
    int run(const QStringList &arguments = {})
    {
        start(arguments);
        if (!m_process.waitForFinished(30000) || m_process.exitStatus() != QProcess::NormalExit)
            return -1;
        return m_process.exitCode();
    }
    QString output()
    {
        m_output += m_process.readAll();
        return QString::fromUtf8(m_output);
    }
    QProcess &process() { return m_process; }

private:
    QProcess m_process;
    QByteArray m_output;
};

// Resident memory of a process in kB, -1 when unknown.
qint64 residentKilobytes(qint64 pid)
{
    QFile status(QStringLiteral("/proc/%1/status").arg(pid));
    if (!status.open(QIODevice::ReadOnly))
        return -1;
    for (const QByteArray &line : status.readAll().split('\n')) {
        if (line.startsWith("VmRSS:"))
            return line.mid(6).trimmed().split(' ').value(0).toLongLong();
    }
    return -1;
}
} // namespace

class RunningTest : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<test::AppSandbox> m_dir;
    QProcessEnvironment m_environment;

    QString runtimeFolder() const { return m_dir->filePath(QStringLiteral("run")); }
    QString socketPath() const { return ShortcutChannel::socketPath(runtimeFolder()); }

    // An instance that takes requests (it has answered one window request); null when it never does.
    std::unique_ptr<App> startFirst()
    {
        auto app = std::make_unique<App>(m_environment);
        app->start();
        // Connecting fails at once until it listens (a crashed instance's socket answers
        // nobody); once connected, the answer comes when its window is up.
        for (int attempt = 0; attempt < 150 && app->process().state() != QProcess::NotRunning; ++attempt) {
            if (ShortcutChannel::forward(socketPath(), "activate", 20000))
                return app;
            QTest::qWait(100);
        }
        qWarning().noquote() << "The first instance never answered:" << app->output();
        return nullptr;
    }

    // Memory once the launch has stopped growing (the search index is built after the
    // first frame): unchanged for two seconds.
    static qint64 settledKilobytes(qint64 pid)
    {
        qint64 settled = residentKilobytes(pid);
        for (int sample = 0, steady = 0; sample < 200 && steady < 7; ++sample) {
            QTest::qWait(300);
            const qint64 now = residentKilobytes(pid);
            steady = qAbs(now - settled) < 512 ? steady + 1 : 0;
            if (steady == 0)
                settled = now;
        }
        return settled;
    }

private slots:
    void init()
    {
        m_dir = std::make_unique<test::AppSandbox>(QStringLiteral(NORVELLA_BINARY));
        QVERIFY(m_dir->isReady() && QDir().mkpath(m_dir->filePath(QStringLiteral("tmp"))));
        m_environment = m_dir->environment();
        m_environment.insert(QStringLiteral("TMPDIR"), m_dir->filePath(QStringLiteral("tmp")));
    }

    // A plain launch and a quick action go to the running instance and end at once;
    // screenshot and timing runs neither forward nor take its place.
    void laterLaunchesHandTheirRequestToTheFirst()
    {
        auto first = startFirst();
        QVERIFY(first);
        QTRY_VERIFY(first->output().contains(QLatin1String("Another launch asked for the window")));

        App plain(m_environment);
        QCOMPARE(plain.run(), 0);
        QTRY_COMPARE(first->output().count(QLatin1String("Another launch asked for the window")), 2);
        App action(m_environment);
        QCOMPARE(action.run({QStringLiteral("--shortcut"), QStringLiteral("history")}), 0);
        QTRY_VERIFY(first->output().contains(QLatin1String("Quick action from another launch: com.quorbel.shortcut.history")));
        // A type the channel does not carry still brings the window forward, and nothing else.
        App odd(m_environment);
        QCOMPARE(odd.run({QStringLiteral("--shortcut"), QStringLiteral("no.such.action")}), 0);
        QTRY_COMPARE(first->output().count(QLatin1String("Another launch asked for the window")), 3);

        App screenshot(m_environment);
        QCOMPARE(screenshot.run({QStringLiteral("--screenshot"), m_dir->filePath(QStringLiteral("shot.png"))}), 0);
        QVERIFY(QFile::exists(m_dir->filePath(QStringLiteral("shot.png"))));
        App timing(m_environment);
        QCOMPARE(timing.run({QStringLiteral("--first-frame")}), 0);
        QVERIFY(timing.output().contains(QLatin1String("first-frame ")));
        QVERIFY(ShortcutChannel::forward(socketPath(), "com.quorbel.shortcut.list"));
        QTRY_VERIFY(first->output().contains(QLatin1String("Quick action from another launch: com.quorbel.shortcut.list")));
        QCOMPARE(first->output().count(QLatin1String("Another launch asked for the window")), 3);
        QCOMPARE(first->process().state(), QProcess::Running);
    }

    // Garbage, a line of 10 MB and 200 connections at once: each is logged and dropped, memory
    // stays where it was, and a quick action afterwards still works.
    void badClientsDoNotStopIt()
    {
        auto first = startFirst();
        QVERIFY(first);
        const qint64 pid = first->process().processId();
        const qint64 before = settledKilobytes(pid);
        QVERIFY(before > 0);

        QVERIFY(!ShortcutChannel::forward(socketPath(), "rm -rf ~\x01", 2000));
        QTRY_VERIFY(first->output().contains(QLatin1String("Instance channel: ignored an unknown message \"rm -rf ~?\"")));

        QLocalSocket flood;
        flood.connectToServer(socketPath());
        QVERIFY(flood.waitForConnected(2000));
        const QByteArray megabyte(1024 * 1024, 'x');
        for (int i = 0; i < 10; ++i)
            flood.write(megabyte);
        for (int wait = 0; wait < 30 && flood.bytesToWrite() > 0 && flood.state() == QLocalSocket::ConnectedState; ++wait)
            flood.waitForBytesWritten(1000);
        QTRY_VERIFY(first->output().contains(QLatin1String("Instance channel: dropped a message longer than 256 bytes")));
        QVERIFY(flood.state() != QLocalSocket::ConnectedState || flood.bytesToWrite() > 0);

        std::vector<std::unique_ptr<QLocalSocket>> crowd;
        for (int i = 0; i < 200; ++i) {
            crowd.push_back(std::make_unique<QLocalSocket>());
            crowd.back()->connectToServer(socketPath());
        }
        QTRY_VERIFY(first->output().contains(QLatin1String("Instance channel: 8 connections open, refusing more")));
        QTRY_VERIFY(first->output().contains(
                QLatin1String("Instance channel: dropped a connection without a message after 2000 ms")));
        const qint64 after = residentKilobytes(pid);
        QVERIFY2(after - before < 5 * 1024, qPrintable(QStringLiteral("%1 kB before, %2 kB after").arg(before).arg(after)));

        // The crowd still holds its connections: a request gets in as the idle ones are dropped.
        QTRY_VERIFY_WITH_TIMEOUT(ShortcutChannel::forward(socketPath(), "com.quorbel.shortcut.list", 1000), 20000);
        QTRY_VERIFY(first->output().contains(QLatin1String("Quick action from another launch: com.quorbel.shortcut.list")));
        crowd.clear();
        QCOMPARE(first->process().state(), QProcess::Running);
    }

    // The socket and lock a killed instance leaves behind are taken over by the next launch.
    void aCrashedInstanceIsReplaced()
    {
        auto crashed = startFirst();
        QVERIFY(crashed);
        ::kill(pid_t(crashed->process().processId()), SIGKILL);
        QVERIFY(crashed->process().waitForFinished(5000));
        QVERIFY(QFile::exists(socketPath()));

        auto next = startFirst();
        QVERIFY(next);
        App later(m_environment);
        QCOMPARE(later.run({QStringLiteral("--shortcut"), QStringLiteral("list")}), 0);
        QTRY_VERIFY(next->output().contains(QLatin1String("Quick action from another launch: com.quorbel.shortcut.list")));
    }

    // A runtime folder others may enter is refused, and so is such a folder in its place;
    // the app then runs on without the channel, a window of its own per launch.
    void foldersOthersCanUseAreRefused()
    {
        QVERIFY(QFile::setPermissions(runtimeFolder(), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner
                                                               | QFile::ReadGroup | QFile::ExeGroup | QFile::ReadOther
                                                               | QFile::ExeOther));
        {
            // The private folder made in the temporary folder takes over.
            auto first = std::make_unique<App>(m_environment);
            first->start();
            QTRY_VERIFY_WITH_TIMEOUT(first->output().contains(QStringLiteral("Refused the runtime folder %1 for the "
                                                                             "instance channel: others may use it (mode 755)")
                                                                      .arg(runtimeFolder())),
                                     20000);
            App second(m_environment);
            QCOMPARE(second.run(), 0);
            QTRY_VERIFY(first->output().contains(QLatin1String("Another launch asked for the window")));
            QVERIFY(!QFile::exists(socketPath()));
        }

        const QString fallback = m_dir->filePath(QStringLiteral("tmp/norvella-%1").arg(::getuid()));
        QVERIFY(QFileInfo(fallback).isDir());
        QVERIFY(QFile::setPermissions(fallback, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner
                                                        | QFile::WriteOther | QFile::ExeOther));
        App alone(m_environment);
        alone.start();
        QTRY_VERIFY_WITH_TIMEOUT(alone.output().contains(QStringLiteral("Refused the folder %1 for the instance channel: "
                                                                         "others may use it (mode 703); running without it")
                                                                  .arg(fallback)),
                                 20000);
        // Still a running app, with its window.
        QTRY_VERIFY_WITH_TIMEOUT(alone.output().contains(QLatin1String("analytics: verb_list")), 20000);
        QCOMPARE(alone.process().state(), QProcess::Running);
    }

    // A working copy on a file system that has turned read-only: opening a verb still shows
    // it, and the lost history entry is logged with SQLite's reason.
    void aReadOnlyWorkingCopyIsReported()
    {
        const QString data = m_dir->filePath(QStringLiteral("data"));
        QProcess shell;
        shell.setProcessEnvironment(m_environment);
        shell.setProcessChannelMode(QProcess::MergedChannels);
        shell.start(QStringLiteral("unshare"),
                    {QStringLiteral("-rm"), QStringLiteral("sh"), QStringLiteral("-c"),
                     QStringLiteral("mount -t tmpfs -o size=96m tmpfs \"$2\" || exit 77\n"
                                    "\"$0\" --screenshot \"$1/first.png\" || exit 3\n"
                                    "mount -o remount,ro \"$2\" || exit 77\n"
                                    "exec \"$0\" --screenshot \"$1/second.png\" --open andare"),
                     QStringLiteral(NORVELLA_BINARY), m_dir->filePath(QStringLiteral(".")), data});
        if (!shell.waitForStarted())
            QSKIP("unshare cannot be started: no private tmpfs for this test");
        QVERIFY(shell.waitForFinished(60000));
        const QString output = QString::fromUtf8(shell.readAll());
        if (shell.exitCode() == 77 || (shell.exitCode() != 0 && output.contains(QLatin1String("unshare:"))))
            QSKIP(qPrintable(QStringLiteral("no private tmpfs (unshare -rm, then mount): ") + output.trimmed()));
        QVERIFY2(shell.exitCode() == 0, qPrintable(output));
        QVERIFY(QFile::exists(m_dir->filePath(QStringLiteral("second.png"))));
        QVERIFY2(output.contains(QLatin1String(
                         "An error occurred when reading verb conjugation: attempt to write a readonly database (8)")),
                 qPrintable(output));
        QVERIFY(!output.contains(QLatin1String("cannot rollback")));
    }
};

QTEST_GUILESS_MAIN(RunningTest)
#include "tst_running.moc"
