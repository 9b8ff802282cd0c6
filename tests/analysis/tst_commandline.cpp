// norvella --analyse and --conjugate, run as a user runs them: the real binary,
// its exit status and its output lines, and nothing written to the user's folders.

#include <QDir>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

namespace {

struct Run
{
    int status = -1;
    QStringList out;
    QString err;
};

} // namespace

class TestCommandLine : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_dir;

    Run run(const QStringList &arguments)
    {
        QProcess process;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        for (const char *name : {"HOME", "XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_RUNTIME_DIR"}) {
            const QString folder = m_dir.filePath(QString::fromLatin1(name));
            QDir().mkpath(folder);
            environment.insert(QString::fromLatin1(name), folder);
        }
        // No display: a window would fail to start rather than pass unnoticed.
        environment.remove(QStringLiteral("QT_QPA_PLATFORM"));
        environment.remove(QStringLiteral("DISPLAY"));
        environment.remove(QStringLiteral("WAYLAND_DISPLAY"));
        process.setProcessEnvironment(environment);
        process.start(QStringLiteral(NORVELLA_BINARY), arguments);
        Run result;
        if (!process.waitForFinished(120000) || process.exitStatus() != QProcess::NormalExit)
            return result;
        result.status = process.exitCode();
        result.out = QString::fromUtf8(process.readAllStandardOutput()).split(u'\n', Qt::SkipEmptyParts);
        result.err = QString::fromUtf8(process.readAllStandardError());
        return result;
    }

    bool userFoldersEmpty() const
    {
        for (const char *name : {"HOME", "XDG_CONFIG_HOME", "XDG_DATA_HOME"}) {
            QDir folder(m_dir.filePath(QString::fromLatin1(name)));
            if (!folder.entryList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden).isEmpty())
                return false;
        }
        return true;
    }

private slots:
    void initTestCase() { QVERIFY(m_dir.isValid()); }

    void analyse()
    {
        const Run plain = run({QStringLiteral("--analyse"), QStringLiteral("andavamo")});
        QCOMPARE(plain.status, 0);
        QCOMPARE(plain.out, QStringList{QStringLiteral("andavamo\tandare\tind\timperfetto\tnoi")});

        const Run ambiguous = run({QStringLiteral("--analyse=parli")});
        QCOMPARE(ambiguous.status, 0);
        QCOMPARE(ambiguous.out, (QStringList{QStringLiteral("parli\tparlare\tind\tpresente\ttu"),
                                             QStringLiteral("parli\tparlare\tcong\tpresente\tio"),
                                             QStringLiteral("parli\tparlare\tcong\tpresente\ttu"),
                                             QStringLiteral("parli\tparlare\tcong\tpresente\tlui/lei")}));

        const Run unknown = run({QStringLiteral("--analyse"), QStringLiteral("andavammo")});
        QCOMPARE(unknown.status, 1);
        QVERIFY(unknown.out.isEmpty());
        QVERIFY2(unknown.err.contains(QStringLiteral("\"andavammo\" is not a form")), qPrintable(unknown.err));

        const Run missing = run({QStringLiteral("--analyse")});
        QCOMPARE(missing.status, 2);
        QVERIFY2(missing.err.contains(QStringLiteral("--analyse wants a text")), qPrintable(missing.err));
        QVERIFY(userFoldersEmpty());
    }

    void conjugate()
    {
        const Run venire = run({QStringLiteral("--conjugate"), QStringLiteral("venire")});
        QCOMPARE(venire.status, 0);
        QCOMPARE(venire.out.value(0), QStringLiteral("venire: irregular"));
        QVERIFY(venire.out.contains(QStringLiteral("  io\tvengo*")));
        QVERIFY(venire.out.contains(QStringLiteral("  noi\tveniamo")));
        QVERIFY(venire.out.contains(QStringLiteral("  io\tsono venuto/a*")));
        QVERIFY(venire.out.contains(QStringLiteral("* irregular form")));

        const Run dovere = run({QStringLiteral("--conjugate"), QStringLiteral("Dovere ")});
        QCOMPARE(dovere.status, 0);
        QVERIFY(dovere.out.contains(QStringLiteral("  io\tdevo* / debbo*")));

        const Run convenire = run({QStringLiteral("--conjugate"), QStringLiteral("convenire")});
        QCOMPARE(convenire.out.value(0), QStringLiteral("convenire: conjugates like venire"));

        const Run parlare = run({QStringLiteral("--conjugate"), QStringLiteral("parlare")});
        QCOMPARE(parlare.status, 0);
        QCOMPARE(parlare.out.value(0), QStringLiteral("parlare: regular (-are)"));
        QVERIFY(parlare.out.filter(QStringLiteral("*")).isEmpty());

        const Run unknown = run({QStringLiteral("--conjugate"), QStringLiteral("parlere")});
        QCOMPARE(unknown.status, 1);
        QVERIFY(unknown.out.isEmpty());
        QVERIFY2(unknown.err.contains(QStringLiteral("no verb \"parlere\"")), qPrintable(unknown.err));
        QVERIFY(userFoldersEmpty());
    }
};

QTEST_GUILESS_MAIN(TestCommandLine)
#include "tst_commandline.moc"
