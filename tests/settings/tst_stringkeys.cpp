#include "Strings.h"

#include <QDirIterator>
#include <QFile>
#include <QRegularExpression>
#include <QtTest>

using namespace norvella;

// Keys are dotted lower-case words under the families the string tables use.
class StringKeysTest : public QObject
{
    Q_OBJECT

private slots:
    void everyKeyUsedIsInBothTables()
    {
        static const QRegularExpression literal(QStringLiteral("\"((?:tense|settings|export|support|common|app)"
                                                               "(?:\\.[a-z_]+)+|settings)\""));
        QSet<QString> used;
        int files = 0;
        for (const QString &folder : QStringLiteral(NORVELLA_SCANNED_FOLDERS).split('|')) {
            QDirIterator it(folder, {"*.cpp", "*.h", "*.qml"}, QDir::Files, QDirIterator::Subdirectories);
            while (it.hasNext()) {
                QFile file(it.next());
                QVERIFY(file.open(QIODevice::ReadOnly));
                ++files;
                const QString text = QString::fromUtf8(file.readAll());
                for (auto match = literal.globalMatch(text); match.hasNext();) {
                    const QString key = match.next().captured(1);
                    used << key;
                    // Tense titles are also looked up with the "_italian" suffix.
                    if (key.startsWith(QLatin1String("tense.")) && key.count('.') == 2)
                        used << key + QStringLiteral("_italian");
                }
            }
        }
        QVERIFY(files >= 10);
        // Sanity: the scan sees keys from both folders and the composed ones.
        QVERIFY(used.contains("settings.history_info"));
        QVERIFY(used.contains("export.share.pdf"));
        QVERIFY(used.contains("tense.sub.trapassatoprossimo_italian"));
        QVERIFY(used.size() > 90);

        for (const QString &language : Strings::availableLanguages()) {
            const QStringList keys = Strings::shared().keys(language);
            const QSet<QString> table(keys.begin(), keys.end());
            QStringList missing;
            for (const QString &key : used) {
                if (!table.contains(key))
                    missing << key;
            }
            missing.sort();
            QVERIFY2(missing.isEmpty(), qPrintable(language + ": " + missing.join(", ")));
        }
    }

    void formatsKeepTheirPlaceholder()
    {
        for (const QString &language : Strings::availableLanguages()) {
            Strings::shared().selectLanguage({language});
            for (const QString key : {"settings.includeenglish", "settings.history_info", "export.share.title",
                                      "export.share.saved", "export.share.save_failed"})
                QVERIFY2(Strings::text(key).count(QStringLiteral("%1")) == 1, qPrintable(language + " " + key));
        }
    }

    void italianTenseNamesAreItalian()
    {
        Strings::shared().selectLanguage({"it"});
        // The Italian table names tenses in Italian whatever the setting.
        for (const QString key : {"tense.ind.passatoprossimo", "tense.con.past", "tense.other.gerund"})
            QCOMPARE(Strings::text(key), Strings::text(key + QStringLiteral("_italian")));
        Strings::shared().selectLanguage({"en"});
        QVERIFY(Strings::text("tense.ind.passatoprossimo") != Strings::text("tense.ind.passatoprossimo_italian"));
    }
};

QTEST_GUILESS_MAIN(StringKeysTest)
#include "tst_stringkeys.moc"
