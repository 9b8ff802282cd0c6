#include "QmlLoadHarness.h"

#include "OptionsTableViewController.h"
#include "Settings.h"
#include "Strings.h"
#include "Verb.h"

#include <QQuickItem>
#include <QStandardPaths>
#include <QtQml/qqmlextensionplugin.h>

Q_IMPORT_QML_PLUGIN(Norvella_SettingsPlugin)
Q_IMPORT_QML_PLUGIN(Norvella_ExportPlugin)
Q_IMPORT_QML_PLUGIN(Norvella_ResourcesPlugin)

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
    OptionsTableView {
        id: options
        objectName: "options"
        delegate: window
        Component.onCompleted: options.open()
    }
}
)";
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
        QTest::newRow("tablet") << QSize(1024, 768) << "en";
        QTest::newRow("phone italian") << QSize(390, 844) << "it";
    }

    void screenLoadsCleanly()
    {
        QFETCH(QSize, size);
        QFETCH(QString, language);
        Strings::shared().selectLanguage({language});
        test::WarningCollector collector;
        QQmlEngine engine;
        test::prepareQmlEngine(engine);
        auto window = test::showWindow(engine, settingsWindow, size);
        QVERIFY(window);
        auto *options = window->findChild<QObject *>("options");
        QVERIFY(options);
        QTRY_VERIFY(options->property("opened").toBool());
        test::settle(window.get());
        const QString suffix = QStringLiteral("%1x%2-%3").arg(size.width()).arg(size.height()).arg(language);
        test::grab(window.get(), "settings-" + suffix);

        // The about block closes the list.
        auto *list = window->findChild<QQuickItem *>("optionsList");
        QVERIFY(list);
        QVERIFY(QMetaObject::invokeMethod(list, "positionViewAtEnd"));
        test::settle(window.get());
        test::grab(window.get(), "settings-about-" + suffix);
        QVERIFY(list->property("contentHeight").toReal() > list->height());
        QVERIFY(list->property("contentWidth").toReal() <= list->width());

        auto *controller = qvariant_cast<OptionsTableViewController *>(options->property("controller"));
        QVERIFY(controller);

        // The language sheet rises over the screen.
        emit controller->sheetRequested(OptionsTableViewController::LanguageSheet, 1, 1);
        test::settle(window.get());
        test::grab(window.get(), "settings-language-sheet-" + suffix);
        emit controller->sheetRequested(OptionsTableViewController::ClearHistorySheet, 2, 1);
        test::settle(window.get());
        test::grab(window.get(), "settings-clear-history-" + suffix);
        QVERIFY2(test::WarningCollector::warnings().isEmpty(), qPrintable(test::WarningCollector::warnings().join('\n')));
    }

    void doneClosesAndTellsTheDelegate()
    {
        Strings::shared().selectLanguage({"en"});
        test::WarningCollector collector;
        QQmlEngine engine;
        test::prepareQmlEngine(engine);
        auto window = test::showWindow(engine, settingsWindow, QSize(390, 844));
        QVERIFY(window);
        auto *options = window->findChild<QObject *>("options");
        QTRY_VERIFY(options->property("opened").toBool());
        auto *controller = qvariant_cast<OptionsTableViewController *>(options->property("controller"));
        controller->switchToggled(1, 0, true);
        QVERIFY(controller->close());
        QTRY_VERIFY(!options->property("visible").toBool());
        QTRY_COMPARE(window->property("closedWith").toList(), QVariantList{true});
        QVERIFY2(test::WarningCollector::warnings().isEmpty(), qPrintable(test::WarningCollector::warnings().join('\n')));
    }
};

QTEST_MAIN(OptionsQmlTest)
#include "tst_options_qml.moc"
