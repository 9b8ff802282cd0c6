#include "Strings.h"

#include <QDirIterator>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QtTest>

#include <cstdio>

using namespace norvella;

// Every string key the code uses must be in every table. A key is found as the literal of a
// lookup (Strings::text, L10n.text, textOr), as a dotted literal under a key family anywhere
// ("tabs.list", "tense.ind.presente"), as a tense title with "_italian" appended at run time,
// or as a one-word key beside an icon name in the drawer's rows. Any other key composed at
// run time fails the test until it gets a rule here.
class StringKeysTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        // Strings are matched first so that "//" inside them is not taken for a comment.
        static const QRegularExpression comment(QStringLiteral("(\"(?:[^\"\\\\\\n]|\\\\.)*\")|//[^\\n]*|/\\*.*?\\*/"),
                                                QRegularExpression::DotMatchesEverythingOption);
        static const QRegularExpression lookup(QStringLiteral(
                "\\b(?:Strings::text|L10n\\.text|textOr)\\s*\\(\\s*(?:[\\w:]+\\s*\\(\\s*)?[\"']([^\"'\\n]*)[\"']"
                "\\s*(?:\\)\\s*)?(?:\\)\\s*)?(\\.arg\\(|\\+)?"));
        static const QRegularExpression familyKey(QStringLiteral(
                "\"((?:action|app|common|conjugation|detail|export|favourites|history|home|list|menu|options|search|"
                "settings|speech|support|tabs|tense|type|verb|volume)(?:\\.[a-z][a-z_]*)*)([._]?)\""));
        static const QRegularExpression fileName(QStringLiteral("^[a-z]+\\.(json|db|log|html|txt|pdf|js|qml|svg|png)$"));
        static const QRegularExpression drawerRow(QStringLiteral("\\{\"[a-z-]+\", \"([a-z.]+)\"\\}"));
        static const QRegularExpression tenseTitle(QStringLiteral("^tense\\.[a-z]+\\.[a-z]+$"));

        for (const QString &folder : QStringLiteral(NORVELLA_SCANNED_FOLDERS).split(u'|')) {
            QDirIterator it(folder, {"*.cpp", "*.h", "*.qml", "*.js"}, QDir::Files, QDirIterator::Subdirectories);
            while (it.hasNext()) {
                QFile file(it.next());
                QVERIFY2(file.open(QIODevice::ReadOnly), qPrintable(file.fileName()));
                m_folders << QFileInfo(folder).fileName();
                const QString where = QFileInfo(folder).fileName() + u'/' + QFileInfo(file.fileName()).fileName();
                const QString text = QString::fromUtf8(file.readAll()).replace(comment, QStringLiteral("\\1"));

                for (auto m = lookup.globalMatch(text); m.hasNext();) {
                    const auto match = m.next();
                    if (match.captured(2) == QLatin1String("+"))
                        m_problems << where + QStringLiteral(": key composed at run time from \"%1\"").arg(match.captured(1));
                    else
                        m_keys << match.captured(1);
                    if (match.captured(2) == QLatin1String(".arg("))
                        m_formatted << match.captured(1);
                }
                for (auto m = familyKey.globalMatch(text); m.hasNext();) {
                    const auto match = m.next();
                    if (!match.captured(2).isEmpty())
                        m_problems << where + QStringLiteral(": key prefix \"%1\" composed at run time")
                                                      .arg(match.captured(1) + match.captured(2));
                    else if (match.captured(1).contains(u'.') && !fileName.match(match.captured(1)).hasMatch())
                        m_keys << match.captured(1);
                }
                if (where == QLatin1String("app/NavigationDrawerTableTableViewController.cpp")) {
                    int rows = 0;
                    for (auto m = drawerRow.globalMatch(text); m.hasNext(); ++rows)
                        m_keys << m.next().captured(1);
                    QVERIFY2(rows >= 4, "the drawer's rows of icon and key are no longer found: update the rule");
                }
            }
        }
        for (const QString &key : QSet<QString>(m_keys)) {
            if (tenseTitle.match(key).hasMatch())
                m_keys << key + QStringLiteral("_italian");
        }
    }

    void everyKeyUsedIsInEveryTable()
    {
        // The scan still sees every kind of use.
        QCOMPARE(m_folders.size(), 8);
        for (const QString key : {"tabs.list", "search.clear", "conjugation.play", "action.favourite.remove",
                                  "export.share.pdf", "settings.history_info", "settings", "select", "privacy",
                                  "tense.sub.trapassatoprossimo_italian", "type.other.full"})
            QVERIFY2(m_keys.contains(key), qPrintable(key));
        QVERIFY(m_formatted.contains("settings.includeenglish"));
        QVERIFY2(m_problems.isEmpty(), qPrintable(m_problems.join(u'\n')));

        // Against the English table: everyTableMatchesTheEnglishOne holds the others to its keys.
        const QStringList english = Strings::shared().keys("en");
        QStringList missing;
        for (const QString &key : std::as_const(m_keys)) {
            if (!english.contains(key))
                missing << key;
        }
        missing.sort();
        QVERIFY2(missing.isEmpty(), qPrintable(missing.join(", ")));
    }

    void textsFitTheirUse()
    {
        // Placeholders only where the code fills them (the other tables have English's).
        static const QRegularExpression placeholder(QStringLiteral("%\\d"));
        Strings::shared().selectLanguage({"en"});
        for (const QString &key : Strings::shared().keys("en")) {
            const QString text = Strings::text(key);
            QVERIFY2(m_formatted.contains(key) ? text.count(QStringLiteral("%1")) == 1 : !text.contains(placeholder),
                     qPrintable(key));
        }
        // Tense names in Italian read the same in every table; the Italian one uses them for its plain names.
        int titles = 0;
        for (const QString &key : Strings::shared().keys("en")) {
            if (!key.endsWith(QLatin1String("_italian")))
                continue;
            ++titles;
            Strings::shared().selectLanguage({"en"});
            const QString inEnglishTable = Strings::text(key);
            for (const QString &language : Strings::availableLanguages()) {
                Strings::shared().selectLanguage({language});
                QVERIFY2(Strings::text(key) == inEnglishTable, qPrintable(language + ' ' + key));
            }
            Strings::shared().selectLanguage({"it"});
            QVERIFY2(Strings::text(key.chopped(8)) == inEnglishTable, qPrintable(key));
        }
        QCOMPARE(titles, 22); // 18 tenses and the 4 moods
        QCOMPARE(Strings::text("tense.ind.passatoprossimo"), QStringLiteral("Passato prossimo"));
        Strings::shared().selectLanguage({"en"});
        QCOMPARE(Strings::text("tense.ind.passatoprossimo"), QStringLiteral("Present Perfect"));
    }

    // Every table is a translation of the English one: the same keys, each with text and
    // with the placeholders its English text has, and no key given twice.
    void everyTableMatchesTheEnglishOne()
    {
        static const QRegularExpression placeholder(QStringLiteral("%\\d+|\\{\\w+\\}"));
        static const QRegularExpression entry(QStringLiteral("^\\s*\"(?:[^\"\\\\]|\\\\.)*\"\\s*:"),
                                              QRegularExpression::MultilineOption);
        const auto placeholders = [](const QString &text) {
            QStringList found;
            for (auto m = placeholder.globalMatch(text); m.hasNext();)
                found << m.next().captured();
            found.sort();
            return found;
        };
        const auto read = [](const QString &language, QString *raw) {
            QFile file(QStringLiteral(":/norvella/strings/%1.json").arg(language));
            if (!file.open(QIODevice::ReadOnly))
                return QJsonObject();
            const QByteArray bytes = file.readAll();
            *raw = QString::fromUtf8(bytes);
            QJsonParseError error{};
            const QJsonDocument doc = QJsonDocument::fromJson(bytes, &error);
            return error.error == QJsonParseError::NoError ? doc.object() : QJsonObject();
        };

        QString raw;
        const QJsonObject english = read("en", &raw);
        QVERIFY(english.size() > 100);
        QCOMPARE(Strings::availableLanguages().size(), 8);
        QStringList problems;
        for (const QString &language : Strings::availableLanguages()) {
            const QJsonObject table = read(language, &raw);
            if (table.isEmpty()) {
                problems << language + QStringLiteral(": missing or not valid JSON");
                continue;
            }
            if (raw.count(entry) != table.size())
                problems << language + QStringLiteral(": a key is given twice");
            for (auto it = english.begin(); it != english.end(); ++it) {
                if (!table.contains(it.key()))
                    problems << language + QStringLiteral(": no ") + it.key();
            }
            for (auto it = table.begin(); it != table.end(); ++it) {
                const QString where = language + u' ' + it.key();
                if (!english.contains(it.key()))
                    problems << where + QStringLiteral(": not in English");
                else if (!it.value().isString() || it.value().toString().trimmed().isEmpty())
                    problems << where + QStringLiteral(": no text");
                else if (placeholders(it.value().toString()) != placeholders(english.value(it.key()).toString()))
                    problems << where + QStringLiteral(": placeholders differ from English");
            }
        }
        QVERIFY2(problems.isEmpty(), qPrintable(problems.join(u'\n')));
    }

    // The interface speaks the first preferred language it has a table for.
    void languageComesFromThePreferredOnes_data()
    {
        QTest::addColumn<QStringList>("preferred");
        QTest::addColumn<QString>("language");
        QTest::newRow("first has a table") << QStringList{"de-DE", "en-US"} << "de";
        QTest::newRow("first has none") << QStringList{"ja-JP", "zh-Hans-CN", "pt-BR", "fr"} << "pt";
        QTest::newRow("English before others") << QStringList{"en-GB", "it-IT"} << "en";
        QTest::newRow("regional variants") << QStringList{"nl-BE"} << "nl";
        QTest::newRow("Latin American Spanish") << QStringList{"es-419"} << "es";
        QTest::newRow("POSIX form") << QStringList{"tr_TR.UTF-8"} << "tr";
        QTest::newRow("upper case") << QStringList{"FR-ca"} << "fr";
        QTest::newRow("none has a table") << QStringList{"ja", "ko-KR"} << "en";
        QTest::newRow("C locale") << QStringList{"C"} << "en";
        QTest::newRow("nothing preferred") << QStringList{} << "en";
        QTest::newRow("a longer code sharing a prefix") << QStringList{"ita", "esu", "de"} << "de";
    }

    void languageComesFromThePreferredOnes()
    {
        QFETCH(QStringList, preferred);
        QFETCH(QString, language);
        QCOMPARE(Strings::languageFor(preferred), language);
        Strings::shared().selectLanguage(preferred);
        QCOMPARE(Strings::shared().language(), language);
        Strings::shared().selectLanguage({"en"});
    }

    // The same choice from the system's settings as a started app sees them.
    void languageComesFromTheEnvironment_data()
    {
        QTest::addColumn<QStringList>("environment");
        QTest::addColumn<QString>("language");
        QTest::newRow("LANGUAGE list") << QStringList{"LANGUAGE=ja:tr:de", "LANG=en_US.UTF-8"} << "tr";
        QTest::newRow("LANGUAGE before LANG") << QStringList{"LANGUAGE=nl", "LANG=fr_FR.UTF-8"} << "nl";
        QTest::newRow("LC_ALL before LANG") << QStringList{"LC_ALL=pt_BR.UTF-8", "LANG=de_DE.UTF-8"} << "pt";
        QTest::newRow("LANG alone") << QStringList{"LANG=es_ES.UTF-8"} << "es";
        QTest::newRow("no table for it") << QStringList{"LANG=ja_JP.UTF-8"} << "en";
        QTest::newRow("C") << QStringList{"LANG=C"} << "en";
    }

    void languageComesFromTheEnvironment()
    {
        QFETCH(QStringList, environment);
        QFETCH(QString, language);
        QTemporaryDir home;
        QVERIFY(home.isValid());
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        for (const char *name : {"LANGUAGE", "LC_ALL", "LC_MESSAGES", "LANG"})
            env.remove(QString::fromLatin1(name));
        for (const char *folder : {"HOME", "XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_RUNTIME_DIR"}) {
            QDir(home.path()).mkpath(QString::fromLatin1(folder));
            env.insert(QString::fromLatin1(folder), home.filePath(QString::fromLatin1(folder)));
        }
        for (const QString &setting : environment)
            env.insert(setting.section(u'=', 0, 0), setting.section(u'=', 1));
        QProcess child;
        child.setProcessEnvironment(env);
        child.start(QCoreApplication::applicationFilePath(), {QStringLiteral("--print-ui-language")});
        QVERIFY(child.waitForFinished(30000));
        QCOMPARE(child.exitCode(), 0);
        QCOMPARE(QString::fromUtf8(child.readAllStandardOutput()).trimmed(), language);
    }

    void capitalsFollowTheLanguage()
    {
        QCOMPARE(Strings::upper(QStringLiteral("Şimdiki zaman"), "tr"), QStringLiteral("ŞİMDİKİ ZAMAN"));
        QCOMPARE(Strings::upper(QStringLiteral("Dilek kipi ılık"), "tr"), QStringLiteral("DİLEK KİPİ ILIK"));
        QCOMPARE(Strings::upper(QStringLiteral("Participio presente"), "it"), QStringLiteral("PARTICIPIO PRESENTE"));
    }

private:
    QSet<QString> m_keys;
    QSet<QString> m_formatted; // keys whose text gets .arg() applied
    QStringList m_problems;
    QSet<QString> m_folders;
};

// Started again by languageComesFromTheEnvironment: the language a starting app picks.
int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    if (app.arguments().contains(QStringLiteral("--print-ui-language"))) {
        std::printf("%s\n", qPrintable(Strings::shared().language()));
        return 0;
    }
    StringKeysTest test;
    QTEST_SET_MAIN_SOURCE_PATH
    return QTest::qExec(&test, argc, argv);
}
#include "tst_stringkeys.moc"
