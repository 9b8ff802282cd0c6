#include "QmlLoadHarness.h"

#include "Appearance.h"
#include "OptionsTableViewController.h"
#include "Settings.h"
#include "Strings.h"
#include "Verb.h"

#include <QStandardPaths>

#define NORVELLA_QML_SETTINGS
#define NORVELLA_QML_EXPORT
#include "QmlModules.h"

using namespace norvella;

namespace {
const QByteArray settingsWindow = R"(
import QtQuick
import QtQuick.Controls
import Norvella.Settings

ApplicationWindow {
    id: window
    visible: true
    property var closedWith: []
    function optionsDidClose(fieldsChanged) { closedWith.push(fieldsChanged); }
    OptionsTableView { id: options; objectName: "options"; delegate: window; Component.onCompleted: options.open() }
}
)";

// Shows the settings screen and waits until it is open; null when it never opens.
OptionsTableViewController *openSettings(test::QmlScreen &qml, const QSize &size)
{
    if (!qml.show(settingsWindow, size))
        return nullptr;
    QObject *options = qml.find("options");
    if (!options || !QTest::qWaitFor([&] { return options->property("opened").toBool(); }) || !qml.settle(350))
        return nullptr;
    return qvariant_cast<OptionsTableViewController *>(options->property("controller"));
}

QVariant rowValue(OptionsTableViewController *controller, int row, int role)
{
    return controller->data(controller->index(row), role);
}

// An on-screen control of the given class, by the name it gives assistive technology.
QQuickItem *control(const test::QmlScreen &qml, const char *className, const QString &name)
{
    for (QQuickItem *item : qml.items()) {
        if (item->inherits(className) && test::onScreen(item) && test::accessibleName(item) == name)
            return item;
    }
    return nullptr;
}

QColor colorOf(const QQuickItem *control, const char *part)
{
    const auto *item = control->property(part).value<QObject *>();
    return item ? item->property("color").value<QColor>() : QColor();
}
} // namespace

class OptionsQmlTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        QStandardPaths::setTestModeEnabled(true);
        Settings::standard().clear();
        PreferredLanguages::setOverride({"en"});
    }

    void screenLoadsCleanly_data()
    {
        QTest::addColumn<QSize>("size");
        QTest::addColumn<QString>("language");
        QTest::newRow("phone") << QSize(390, 844) << "en";
        QTest::newRow("tablet italian") << QSize(1024, 768) << "it";
    }

    void screenLoadsCleanly()
    {
        QFETCH(QSize, size);
        QFETCH(QString, language);
        Strings::shared().selectLanguage({language});
        test::QmlScreen qml;
        auto *controller = openSettings(qml, size);
        QVERIFY(controller);
        const QString suffix = QStringLiteral("-%1x%2-%3").arg(size.width()).arg(size.height()).arg(language);
        qml.grab("settings" + suffix);

        // The sheets in every language: everyTextFitsInEveryLanguage. Clearing the history
        // cannot be undone: its button stands apart from cancel, and stays readable.
        using Options = OptionsTableViewController;
        controller->rowTapped(2, 1);
        qml.settle(350);
        qml.grab("settings-" + Options::ClearHistorySheet + suffix);
        const QQuickItem *confirm = control(qml, "QQuickItemDelegate", controller->sheetChoices(Options::ClearHistorySheet)[0]);
        const QQuickItem *cancel = qml.button(controller->sheetCancelText(Options::ClearHistorySheet));
        QVERIFY(confirm && cancel);
        QVERIFY(colorOf(confirm, "contentItem") != colorOf(cancel, "contentItem"));
        // Its text sits on the sheet's plain background.
        QCOMPARE(colorOf(confirm, "background").alpha(), 0);
        QVERIFY(Appearance::contrastRatio(colorOf(confirm, "contentItem"), Appearance::shared().background()) >= 4.5);
        QVERIFY2(qml.clean(), test::WarningCollector::report());
    }

    void clicksChangeSettingsAndDoneReportsThem()
    {
        Strings::shared().selectLanguage({"en"});
        Settings &settings = Settings::standard();
        settings.clear();
        test::QmlScreen qml;
        auto *controller = openSettings(qml, QSize(390, 844));
        QVERIFY(controller);

        // Row 3: "Include Conjugations", flipped on and back off.
        QQuickItem *conjugations = control(qml, "QQuickSwitch", rowValue(controller, 3, OptionsTableViewController::LabelRole).toString());
        QVERIFY(conjugations);
        QVERIFY(qml.click(conjugations));
        QCOMPARE(settings.objectForKey(SettingsKeys::IncludeConjugations), QVariant(true));
        QVERIFY(qml.click(conjugations));
        QCOMPARE(settings.objectForKey(SettingsKeys::IncludeConjugations), QVariant(false));
        QVERIFY(!conjugations->property("checked").toBool());

        // Row 1: search from one of two sides.
        const QStringList sides = rowValue(controller, 1, OptionsTableViewController::SegmentTitlesRole).toStringList();
        QQuickItem *second = qml.button(rowValue(controller, 1, OptionsTableViewController::LabelRole).toString() + ": " + sides.value(1));
        QVERIFY(qml.click(second));
        QCOMPARE(settings.objectForKey(SettingsKeys::SearchFrom), QVariant("W"));
        QVERIFY(second->property("checked").toBool());

        // Done tells the delegate something changed; shown again, the screen starts unchanged.
        QObject *options = qml.find("options");
        for (int shown = 0; shown < 2; ++shown) {
            QTRY_VERIFY(options->property("opened").toBool());
            QVERIFY(qml.click(qml.button(controller->doneText())));
            QTRY_VERIFY(!options->property("visible").toBool());
            QMetaObject::invokeMethod(options, "open");
        }
        QTRY_COMPARE(qml.window->property("closedWith").toList(), (QVariantList{true, false}));
        QVERIFY2(qml.clean(), test::WarningCollector::report());
    }

    // German and Dutch run long: on a narrow phone each detail row opens its own sheet, and
    // no text of the screen or its sheets is cut short or runs past its place.
    void everyTextFitsInEveryLanguage_data()
    {
        QTest::addColumn<QString>("language");
        for (const QString &language : Strings::availableLanguages())
            QTest::newRow(qPrintable(language)) << language;
    }

    void everyTextFitsInEveryLanguage()
    {
        QFETCH(QString, language);
        Strings::shared().selectLanguage({language});
        Settings::standard().clear();
        test::QmlScreen qml;
        // Tall enough that every row is made.
        auto *controller = openSettings(qml, QSize(320, 1400));
        QVERIFY(controller);
        QStringList cut;
        const auto collect = [&] {
            for (QQuickItem *item : qml.items()) {
                const QString text = item->property("text").toString();
                if (!item->inherits("QQuickText") || text.isEmpty() || !test::onScreen(item))
                    continue;
                if (item->property("truncated").toBool() || item->property("contentWidth").toReal() > item->width() + 0.5)
                    cut << text;
            }
        };
        collect();
        using Options = OptionsTableViewController;
        for (const auto &[section, row, sheet] : {std::tuple{1, 1, Options::LanguageSheet},
                                                  std::tuple{1, 2, Options::SpeedSheet},
                                                  std::tuple{2, 1, Options::ClearHistorySheet}}) {
            controller->rowTapped(section, row);
            qml.settle(350);
            QVERIFY2(control(qml, "QQuickItemDelegate", controller->sheetChoices(sheet).last()), qPrintable(sheet));
            collect();
        }
        cut.removeDuplicates();
        Strings::shared().selectLanguage({"en"});
        QVERIFY2(cut.isEmpty(), qPrintable(cut.join(u'\n')));
        QVERIFY2(qml.clean(), test::WarningCollector::report());
    }
};

QTEST_MAIN(OptionsQmlTest)
#include "tst_options_qml.moc"
