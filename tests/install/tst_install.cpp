// The app as a user's system gets it: `cmake --install` into an empty prefix
// lays out every file a desktop or a phone shell needs, the validators accept
// them, and the installed binary starts from its installed master database.
// The Debian package's files are checked against the build they describe.
#include <QFile>
#include <QImage>
#include <QProcess>
#include <QRegularExpression>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QXmlStreamReader>
#include <QtTest>

namespace {
const QString AppId = QStringLiteral("com.quorbel.Norvella");

QString readText(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

struct Run
{
    int status = -1;
    QString output;
};

Run run(const QString &program, const QStringList &arguments, const QProcessEnvironment &environment = {})
{
    QProcess process;
    if (!environment.isEmpty())
        process.setProcessEnvironment(environment);
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.start(program, arguments);
    Run result;
    if (!process.waitForFinished(120000)) {
        process.kill();
        process.waitForFinished();
        result.output = QStringLiteral("did not finish: ") + program;
        return result;
    }
    result.status = process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
    result.output = QString::fromUtf8(process.readAll());
    return result;
}
} // namespace

class InstallTest : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_prefix;

    QString installed(const QString &relative) const { return m_prefix.filePath(relative); }

private slots:
    void initTestCase()
    {
        QVERIFY(m_prefix.isValid());
        const Run install = run(QStringLiteral(NORVELLA_CMAKE),
                                {QStringLiteral("--install"), QStringLiteral(NORVELLA_BUILD_DIR),
                                 QStringLiteral("--prefix"), m_prefix.path()});
        QVERIFY2(install.status == 0, qPrintable(install.output));
    }

    void everyFileIsInItsPlace()
    {
        const QStringList files{
                QStringLiteral("bin/norvella"),
                QStringLiteral("share/norvella/verbs.db"),
                QStringLiteral("share/applications/%1.desktop").arg(AppId),
                QStringLiteral("share/metainfo/%1.metainfo.xml").arg(AppId),
                QStringLiteral("share/icons/hicolor/scalable/apps/%1.svg").arg(AppId),
        };
        for (const QString &file : files)
            QVERIFY2(QFileInfo(installed(file)).isFile() && QFileInfo(installed(file)).size() > 0, qPrintable(file));
        QVERIFY(QFileInfo(installed(QStringLiteral("bin/norvella"))).isExecutable());
        // The master is the one the build made, byte for byte.
        QCOMPARE(QFileInfo(installed(QStringLiteral("share/norvella/verbs.db"))).size(),
                 QFileInfo(QStringLiteral(NORVELLA_MASTER)).size());

        for (int size : {16, 24, 32, 48, 64, 128, 256, 512}) {
            const QString png = installed(QStringLiteral("share/icons/hicolor/%1x%1/apps/%2.png").arg(size).arg(AppId));
            const QImage image(png);
            QVERIFY2(!image.isNull(), qPrintable(png));
            QCOMPARE(image.size(), QSize(size, size));
            // Drawn, not blank: the tile's centre is opaque.
            QVERIFY(qAlpha(image.pixel(size / 2, size / 2)) == 255);
        }
        // Nothing but the app's own files.
        QDirIterator it(m_prefix.path(), QDir::Files, QDirIterator::Subdirectories);
        int count = 0;
        while (it.hasNext()) {
            const QString path = it.next();
            ++count;
            QVERIFY2(QRegularExpression(QStringLiteral("/(bin/norvella|share/(norvella|applications|metainfo|icons)/.*)$"))
                             .match(path).hasMatch(),
                     qPrintable(path));
        }
        QCOMPARE(count, files.size() + 8);
    }

    void desktopEntryHasTheQuickActions()
    {
        const QString desktop = installed(QStringLiteral("share/applications/%1.desktop").arg(AppId));
        const QString validator = QStandardPaths::findExecutable(QStringLiteral("desktop-file-validate"));
        if (validator.isEmpty())
            QSKIP("desktop-file-validate is not installed (apt-get install desktop-file-utils)");
        const Run validation = run(validator, {desktop});
        QVERIFY2(validation.status == 0 && validation.output.trimmed().isEmpty(), qPrintable(validation.output));

        // "group/key" -> value; QSettings would take the ';' of lists for comments.
        QHash<QString, QString> entry;
        QString group;
        for (const QString &line : readText(desktop).split(u'\n')) {
            if (line.startsWith(u'['))
                group = line.mid(1, line.indexOf(u']') - 1);
            else if (line.contains(u'=') && !line.startsWith(u'#'))
                entry.insert(group + u'/' + line.section(u'=', 0, 0), line.section(u'=', 1));
        }
        QCOMPARE(entry.value(QStringLiteral("Desktop Entry/Exec")), QStringLiteral("norvella"));
        QCOMPARE(entry.value(QStringLiteral("Desktop Entry/Icon")), AppId);
        const QStringList actions = entry.value(QStringLiteral("Desktop Entry/Actions")).split(u';', Qt::SkipEmptyParts);
        QCOMPARE(actions, (QStringList{"search", "favourite", "history", "list"}));
        for (const QString &action : actions)
            QCOMPARE(entry.value(QStringLiteral("Desktop Action %1/Exec").arg(action)),
                     QStringLiteral("norvella --shortcut com.quorbel.shortcut.") + action);
    }

    void metainfoIsValidAndNamesTheScreenshots()
    {
        const QString metainfo = installed(QStringLiteral("share/metainfo/%1.metainfo.xml").arg(AppId));
        const QString validator = QStandardPaths::findExecutable(QStringLiteral("appstreamcli"));
        if (validator.isEmpty())
            QSKIP("appstreamcli is not installed (apt-get install appstream)");
        // --no-net: the screenshots are published on the maker's site, which a
        // build machine need not reach; the files themselves are checked below.
        const Run validation = run(validator, {QStringLiteral("validate"), QStringLiteral("--no-net"),
                                               QStringLiteral("--pedantic"), metainfo});
        QVERIFY2(validation.status == 0, qPrintable(validation.output));

        // Element texts by name, the first of each; images with their sizes.
        QHash<QString, QString> first;
        QStringList controls;
        QList<std::pair<QString, QSize>> images;
        QString releaseVersion;
        QXmlStreamReader xml(readText(metainfo));
        while (!xml.atEnd()) {
            if (xml.readNext() != QXmlStreamReader::StartElement)
                continue;
            const QString element = xml.name().toString();
            if (element == QLatin1String("release") && releaseVersion.isEmpty())
                releaseVersion = xml.attributes().value(QStringLiteral("version")).toString();
            if (element == QLatin1String("image")) {
                const QSize size(xml.attributes().value(QStringLiteral("width")).toInt(),
                                 xml.attributes().value(QStringLiteral("height")).toInt());
                images.append({xml.readElementText(), size});
            } else if (element == QLatin1String("control")) {
                controls << xml.readElementText();
            } else if (element == QLatin1String("id") || element == QLatin1String("launchable")
                       || element == QLatin1String("display_length")) {
                first.insert(element, xml.readElementText());
            }
        }
        QVERIFY2(!xml.hasError(), qPrintable(xml.errorString()));
        QCOMPARE(first.value(QStringLiteral("id")), AppId);
        QCOMPARE(first.value(QStringLiteral("launchable")), AppId + QStringLiteral(".desktop"));
        QCOMPARE(first.value(QStringLiteral("display_length")), QStringLiteral("360"));
        QCOMPARE(releaseVersion, QStringLiteral(NORVELLA_VERSION));
        QVERIFY(controls.contains(QStringLiteral("touch")) && controls.contains(QStringLiteral("keyboard")));

        // Each screenshot is a committed file of the size the metainfo states.
        QVERIFY(images.size() >= 2);
        for (const auto &[url, size] : images) {
            const QString name = QUrl(url).fileName();
            const QImage shot(QStringLiteral(NORVELLA_SOURCE_DIR "/dist/screenshots/") + name);
            QVERIFY2(!shot.isNull(), qPrintable(name));
            QCOMPARE(shot.size(), size);
        }
    }

    // The installed binary, started as a new user's first launch, copies the
    // installed master and draws its first screen.
    void installedAppStartsFromItsMaster()
    {
        QTemporaryDir home;
        QVERIFY(home.isValid());
        for (const char *folder : {"config", "data", "runtime"})
            QVERIFY(QDir(home.path()).mkpath(QString::fromLatin1(folder)));
        QFile::setPermissions(home.filePath(QStringLiteral("runtime")), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.remove(QStringLiteral("NORVELLA_MASTER_DB"));
        environment.insert(QStringLiteral("HOME"), home.path());
        environment.insert(QStringLiteral("XDG_CONFIG_HOME"), home.filePath(QStringLiteral("config")));
        environment.insert(QStringLiteral("XDG_DATA_HOME"), home.filePath(QStringLiteral("data")));
        environment.insert(QStringLiteral("XDG_RUNTIME_DIR"), home.filePath(QStringLiteral("runtime")));
        const QString shot = home.filePath(QStringLiteral("shot.png"));
        const Run app = run(installed(QStringLiteral("bin/norvella")),
                            {QStringLiteral("--screenshot"), shot, QStringLiteral("--size"), QStringLiteral("390x844"),
                             QStringLiteral("--open"), QStringLiteral("essere")},
                            environment);
        QVERIFY2(app.status == 0, qPrintable(app.output));
        QCOMPARE(QImage(shot).size(), QSize(390, 844));
        const QString working = home.filePath(QStringLiteral("data/Norvella/norvella/verbs.db"));
        QVERIFY2(QFileInfo(working).size() > 0, qPrintable(app.output));
    }

    // debian/ describes this build: its version, the tools its build needs
    // (which the set-up scripts install too) and every data source's licence.
    void debianFilesAgree()
    {
        const QString source = QStringLiteral(NORVELLA_SOURCE_DIR);
        const QString changelog = readText(source + QStringLiteral("/debian/changelog"));
        QVERIFY(changelog.startsWith(QStringLiteral("norvella (" NORVELLA_VERSION ")")));

        const QString control = readText(source + QStringLiteral("/debian/control"));
        const QString packages = readText(source + QStringLiteral("/scripts/packages.txt"));
        const QString buildDepends = control.section(QStringLiteral("Build-Depends:"), 1).section(QStringLiteral("\nStandards-Version"), 0, 0);
        const QStringList setUp = packages.split(u'\n');
        static const QRegularExpression name(QStringLiteral("^\\s*([a-z0-9][a-z0-9.+-]+)"));
        for (const QString &entry : buildDepends.split(u',')) {
            const QString package = name.match(entry).captured(1);
            QVERIFY(!package.isEmpty());
            if (package == QLatin1String("debhelper-compat"))
                continue;
            QVERIFY2(setUp.contains(package), qPrintable(package + QStringLiteral(" is missing from scripts/packages.txt")));
        }

        // Every file the data sources page lists has its licence in the copyright file.
        const QString copyright = readText(source + QStringLiteral("/debian/copyright"));
        const QString sources = readText(source + QStringLiteral("/resources/verbs/SOURCES.md"));
        static const QRegularExpression row(QStringLiteral("^\\| `([^`]+)` \\|.*\\| ([^|]+) \\|$"),
                                            QRegularExpression::MultilineOption);
        int rows = 0;
        for (auto m = row.globalMatch(sources); m.hasNext(); ++rows) {
            const auto match = m.next();
            QVERIFY2(copyright.contains(match.captured(1)), qPrintable(match.captured(1)));
        }
        QVERIFY(rows >= 10);
        for (const QString &credit : {QStringLiteral("Morph-it!"), QStringLiteral("Marco Baroni and Eros Zanchetta"),
                                      QStringLiteral("italian-verbs-dict 3.4.0"), QStringLiteral("Ludan Stoecklé"),
                                      QStringLiteral("License: CC-BY-SA-4.0"), QStringLiteral("OpenSubtitles 2018"),
                                      QStringLiteral("hunspell-it"), QStringLiteral("mythes-it")})
            QVERIFY2(copyright.contains(credit), qPrintable(credit));
    }
};

QTEST_GUILESS_MAIN(InstallTest)
#include "tst_install.moc"
