// The palettes, how the light or dark one is chosen, and the type sizes.
#include "Appearance.h"
#include "CrashLog.h"
#include "NotificationCenter.h"
#include "SystemAppearance.h"
#include "TestSupport.h"

#include <QGuiApplication>
#include <QTemporaryDir>
#include <QtTest>

using namespace norvella;

class AppearanceTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        qunsetenv("NORVELLA_COLOR_SCHEME");
        qunsetenv("NORVELLA_TEXT_SCALE");
        QVERIFY(Appearance::shared().load());
    }

    void cleanup()
    {
        qunsetenv("NORVELLA_COLOR_SCHEME");
        qunsetenv("NORVELLA_TEXT_SCALE");
        Appearance::shared().setChoice(QStringLiteral("system"));
    }

    void contrastFollowsWcag()
    {
        QCOMPARE(qRound(Appearance::contrastRatio(Qt::black, Qt::white) * 100), 2100);
        QCOMPARE(Appearance::contrastRatio(QColor("#0B6E4F"), QColor("#0B6E4F")), 1.0);
        // The usual example at the edge of AA: #767676 on white is 4.54:1, either way round.
        QCOMPARE(qRound(Appearance::contrastRatio(QColor("#767676"), Qt::white) * 100), 454);
        QCOMPARE(Appearance::contrastRatio(Qt::white, QColor("#767676")),
                 Appearance::contrastRatio(QColor("#767676"), Qt::white));
    }

    // Every pair the screens draw keeps its contrast in both palettes, and no role
    // escapes the check: each one is in a pair or only ever decorates.
    void everyPairMeetsItsContrastInBothPalettes_data()
    {
        QTest::addColumn<int>("scheme");
        QTest::newRow("light") << int(ColorScheme::Light);
        QTest::newRow("dark") << int(ColorScheme::Dark);
    }

    void everyPairMeetsItsContrastInBothPalettes()
    {
        QFETCH(int, scheme);
        const auto palette = ColorScheme(scheme);
        const Appearance &theme = Appearance::shared();
        const QStringList roles = theme.roleNames(palette);
        QCOMPARE(roles, theme.roleNames(ColorScheme::Light));
        QVERIFY(roles.size() >= 15);

        QSet<QString> checked;
        for (const Appearance::ContrastPair &pair : Appearance::contrastPairs()) {
            QVERIFY2(roles.contains(pair.foreground), qPrintable(pair.foreground + " is not in the palette"));
            QVERIFY2(roles.contains(pair.background), qPrintable(pair.background + " is not in the palette"));
            const double ratio = Appearance::contrastRatio(theme.role(palette, pair.foreground),
                                                           theme.role(palette, pair.background));
            QVERIFY2(ratio >= pair.minimum, qPrintable(QStringLiteral("%1 on %2: %3:1, wants %4:1")
                                                               .arg(pair.foreground, pair.background)
                                                               .arg(ratio, 0, 'f', 2)
                                                               .arg(pair.minimum)));
            checked << pair.foreground << pair.background;
        }
        for (const QString &role : roles)
            QVERIFY2(checked.contains(role) || Appearance::decorativeRoles().contains(role),
                     qPrintable(role + " is in no contrast pair"));
        // The drawer's gradient runs between the brand colours under white text.
        for (const char *brand : {"ItalianPrimary", "ItalianSecondary"})
            QVERIFY(Appearance::contrastRatio(theme.role(palette, "barText"), theme.color(brand)) >= 4.5);
    }

    // Without the colour resource every pair still reads: black on white or the reverse.
    void missingResourceKeepsPairsReadable()
    {
        QTemporaryDir dir;
        QFile broken(dir.filePath("colors.json"));
        QVERIFY(broken.open(QIODevice::WriteOnly));
        broken.write("{ not json");
        broken.close();
        const QString log = dir.filePath("log.txt");
        CrashLog::setLogFilePath(log);
        Appearance &theme = Appearance::shared();
        QVERIFY(!theme.load(broken.fileName()));
        QVERIFY(test::readFile(log).contains("Unable to read colours"));
        CrashLog::setLogFilePath({});
        for (ColorScheme scheme : {ColorScheme::Light, ColorScheme::Dark}) {
            QVERIFY(theme.roleNames(scheme).isEmpty());
            for (const Appearance::ContrastPair &pair : Appearance::contrastPairs())
                QVERIFY2(Appearance::contrastRatio(theme.role(scheme, pair.foreground), theme.role(scheme, pair.background))
                                 >= pair.minimum,
                         qPrintable(pair.foreground + " on " + pair.background));
        }
        QVERIFY(theme.load());
    }

    void theFirstSourceWithAPreferenceDecides_data()
    {
        QTest::addColumn<QString>("override");
        QTest::addColumn<int>("portal");
        QTest::addColumn<QString>("gtkTheme");
        QTest::addColumn<QString>("gtkSettings");
        QTest::addColumn<int>("lightness");
        QTest::addColumn<bool>("dark");
        QTest::addColumn<QString>("source");
        const int none = -1;
        const QString preferDark = QStringLiteral("[Settings]\ngtk-application-prefer-dark-theme=1\n");
        QTest::newRow("nothing said") << "" << none << "" << "" << none << false << "default";
        QTest::newRow("override beats a light portal") << "dark" << 2 << "" << "" << 250 << true << "override";
        QTest::newRow("override light beats dark gtk") << " Light " << none << "Adwaita:dark" << "" << 20 << false << "override";
        QTest::newRow("unknown override is ignored") << "purple" << 1 << "" << "" << none << true << "portal";
        QTest::newRow("portal dark") << "" << 1 << "" << "" << 250 << true << "portal";
        QTest::newRow("portal light beats gtk dark") << "" << 2 << "Adwaita:dark" << preferDark << 20 << false << "portal";
        QTest::newRow("portal without preference") << "" << 0 << "Adwaita:dark" << "" << 250 << true << "GTK_THEME";
        QTest::newRow("GTK_THEME light beats settings") << "" << none << "Adwaita" << preferDark << 20 << false << "GTK_THEME";
        QTest::newRow("prefer-dark") << "" << none << "" << preferDark << 250 << true << "gtk settings";
        QTest::newRow("prefer-dark true") << "" << none << ""
                                          << "gtk-application-prefer-dark-theme = true\n" << 250 << true << "gtk settings";
        QTest::newRow("dark theme name") << "" << none << "" << "gtk-theme-name=Yaru-dark\n" << 250 << true << "gtk settings";
        QTest::newRow("prefer-dark off") << "" << none << ""
                                         << "gtk-application-prefer-dark-theme=0\n" << 250 << false << "palette";
        QTest::newRow("dark palette") << "" << none << "" << "" << 40 << true << "palette";
        QTest::newRow("light palette") << "" << none << "" << "" << 239 << false << "palette";
    }

    void theFirstSourceWithAPreferenceDecides()
    {
        QFETCH(QString, override);
        QFETCH(int, portal);
        QFETCH(QString, gtkTheme);
        QFETCH(QString, gtkSettings);
        QFETCH(int, lightness);
        QFETCH(bool, dark);
        QFETCH(QString, source);
        SchemeSignals in;
        in.override = override;
        if (portal >= 0)
            in.portal = uint(portal);
        in.gtkTheme = gtkTheme;
        in.gtkSettings = gtkSettings;
        if (lightness >= 0)
            in.windowLightness = lightness;
        const SchemeDecision decision = decideColorScheme(in);
        QCOMPARE(decision.scheme == ColorScheme::Dark, dark);
        QCOMPARE(decision.source, source);
    }

    // The environment override reaches the palette through the real detection.
    void overrideDrivesTheSystemChoice()
    {
        Appearance &theme = Appearance::shared();
        qputenv("NORVELLA_COLOR_SCHEME", "dark");
        QCOMPARE(SystemAppearance::gather().override, QStringLiteral("dark"));
        QSignalSpy changed(&theme, &Appearance::paletteChanged);
        theme.refreshSystemScheme();
        QVERIFY(theme.dark());
        QCOMPARE(theme.background(), theme.role(ColorScheme::Dark, "background"));
        QVERIFY(Appearance::contrastRatio(theme.text(), theme.background()) >= 4.5);

        // A stated choice wins over the system; "system" follows it again.
        theme.setChoice(QStringLiteral("light"));
        QVERIFY(!theme.dark());
        QCOMPARE(theme.background(), theme.role(ColorScheme::Light, "background"));
        theme.setChoice(QStringLiteral("system"));
        QVERIFY(theme.dark());
        qputenv("NORVELLA_COLOR_SCHEME", "light");
        theme.refreshSystemScheme();
        QVERIFY(!theme.dark());
        QCOMPARE(changed.count(), 4);
    }

    // The settings screen posts the new choice; the palette changes at once.
    void postedChoiceSwitchesThePaletteLive()
    {
        Appearance &theme = Appearance::shared();
        qputenv("NORVELLA_COLOR_SCHEME", "light");
        theme.refreshSystemScheme();
        QSignalSpy changed(&theme, &Appearance::paletteChanged);
        QSignalSpy choice(&theme, &Appearance::choiceChanged);
        NotificationCenter::defaultCenter().post(Notifications::AppearanceChanged, QVariant(QStringLiteral("dark")));
        QVERIFY(theme.dark());
        QCOMPARE(theme.choice(), QStringLiteral("dark"));
        QCOMPARE(changed.count(), 1);
        QCOMPARE(choice.count(), 1);
        // Choosing what is already shown changes nothing.
        NotificationCenter::defaultCenter().post(Notifications::AppearanceChanged, QVariant(QStringLiteral("dark")));
        QCOMPARE(changed.count(), 1);
        // Nonsense is logged and counts as "system".
        QTemporaryDir dir;
        CrashLog::setLogFilePath(dir.filePath("log.txt"));
        theme.setChoice(QStringLiteral("sepia"));
        CrashLog::setLogFilePath({});
        QCOMPARE(theme.choice(), QStringLiteral("system"));
        QVERIFY(!theme.dark());
        QVERIFY(test::readFile(dir.filePath("log.txt")).contains("Unknown appearance \"sepia\""));
    }

    void textScaleComesFromTheOverrideOrTheSystemFont_data()
    {
        QTest::addColumn<QString>("override");
        QTest::addColumn<double>("pointSize");
        QTest::addColumn<double>("scale");
        QTest::newRow("Qt's own 9 pt") << "" << 9.0 << 1.0;
        QTest::newRow("desktop default 11 pt") << "" << 11.0 << 1.0;
        QTest::newRow("larger system text") << "" << 16.5 << 1.5;
        QTest::newRow("huge system text stops at 2") << "" << 40.0 << 2.0;
        QTest::newRow("no font") << "" << -1.0 << 1.0;
        QTest::newRow("override factor") << "1.5" << 9.0 << 1.5;
        QTest::newRow("override percent") << "150%" << 9.0 << 1.5;
        QTest::newRow("override may shrink") << "0.8" << 16.5 << 0.8;
        QTest::newRow("bad override uses the system") << "big" << 16.5 << 1.5;
        QTest::newRow("zero override uses the system") << "0" << 11.0 << 1.0;
    }

    void textScaleComesFromTheOverrideOrTheSystemFont()
    {
        QFETCH(QString, override);
        QFETCH(double, pointSize);
        QFETCH(double, scale);
        QCOMPARE(Appearance::textScaleFor(override, pointSize), scale);
    }

    // Body 16 px and secondary 13 px at the default size, half as large again at 150 %.
    void typeSizesAtDefaultAndOneAndAHalf()
    {
        Appearance &theme = Appearance::shared();
        QGuiApplication::setFont(QFont(QStringLiteral("Sans Serif"), 9));
        theme.refreshTextScale();
        QCOMPARE(theme.textScale(), 1.0);
        QCOMPARE(theme.bodySize(), 16);
        QCOMPARE(theme.secondarySize(), 13);
        QVERIFY(theme.captionSize() >= 13);
        QVERIFY(theme.titleSize() > theme.bodySize());

        QSignalSpy changed(&theme, &Appearance::typeChanged);
        qputenv("NORVELLA_TEXT_SCALE", "150%");
        theme.refreshTextScale();
        QCOMPARE(changed.count(), 1);
        QCOMPARE(theme.bodySize(), 24);
        QCOMPARE(theme.secondarySize(), 20);
        qunsetenv("NORVELLA_TEXT_SCALE");

        // A larger system font is followed as it changes.
        QGuiApplication::setFont(QFont(QStringLiteral("Sans Serif"), 22));
        QTRY_COMPARE(theme.bodySize(), 32);
        QGuiApplication::setFont(QFont(QStringLiteral("Sans Serif"), 9));
        QTRY_COMPARE(theme.bodySize(), 16);
    }
};

QTEST_MAIN(AppearanceTest)
#include "tst_appearance.moc"
