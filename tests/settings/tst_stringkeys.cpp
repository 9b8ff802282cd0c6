#include "Strings.h"

#include <QDirIterator>
#include <QFile>
#include <QRegularExpression>
#include <QtTest>

using namespace norvella;

// Every string key the code uses must be in both tables. A key is found as the literal of a
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

    void everyKeyUsedIsInBothTables()
    {
        // The scan still sees every kind of use.
        QCOMPARE(m_folders.size(), 7);
        for (const QString key : {"tabs.list", "search.clear", "conjugation.play", "action.favourite.remove",
                                  "export.share.pdf", "settings.history_info", "settings", "select", "privacy",
                                  "tense.sub.trapassatoprossimo_italian", "type.other.full"})
            QVERIFY2(m_keys.contains(key), qPrintable(key));
        QVERIFY(m_formatted.contains("settings.includeenglish"));
        QVERIFY2(m_problems.isEmpty(), qPrintable(m_problems.join(u'\n')));

        QStringList missing;
        for (const QString &language : Strings::availableLanguages()) {
            const QStringList keys = Strings::shared().keys(language);
            QVERIFY2(keys.size() > 100, qPrintable(language));
            for (const QString &key : std::as_const(m_keys)) {
                if (!keys.contains(key))
                    missing << language + u':' + key;
            }
        }
        missing.sort();
        QVERIFY2(missing.isEmpty(), qPrintable(missing.join(", ")));
        // A key only one table has would quietly show the other language.
        const QStringList english = Strings::shared().keys("en"), italian = Strings::shared().keys("it");
        QCOMPARE(QSet<QString>(italian.cbegin(), italian.cend()), QSet<QString>(english.cbegin(), english.cend()));
    }

    void textsFitTheirUse()
    {
        // Placeholders only where the code fills them.
        static const QRegularExpression placeholder(QStringLiteral("%\\d"));
        for (const QString &language : Strings::availableLanguages()) {
            Strings::shared().selectLanguage({language});
            for (const QString &key : Strings::shared().keys(language)) {
                const QString text = Strings::text(key);
                QVERIFY2(m_formatted.contains(key) ? text.count(QStringLiteral("%1")) == 1 : !text.contains(placeholder),
                         qPrintable(language + ' ' + key));
            }
        }
        // Tense names in Italian read the same in both tables; the Italian one uses them for its plain names.
        int titles = 0;
        for (const QString &key : Strings::shared().keys("en")) {
            if (!key.endsWith(QLatin1String("_italian")))
                continue;
            ++titles;
            Strings::shared().selectLanguage({"en"});
            const QString inEnglishTable = Strings::text(key);
            Strings::shared().selectLanguage({"it"});
            QVERIFY2(Strings::text(key) == inEnglishTable && Strings::text(key.chopped(8)) == inEnglishTable, qPrintable(key));
        }
        QCOMPARE(titles, 18);
        QCOMPARE(Strings::text("tense.ind.passatoprossimo"), QStringLiteral("Passato prossimo"));
        Strings::shared().selectLanguage({"en"});
        QCOMPARE(Strings::text("tense.ind.passatoprossimo"), QStringLiteral("Present Perfect"));
    }

private:
    QSet<QString> m_keys;
    QSet<QString> m_formatted; // keys whose text gets .arg() applied
    QStringList m_problems;
    QSet<QString> m_folders;
};

QTEST_GUILESS_MAIN(StringKeysTest)
#include "tst_stringkeys.moc"
