#include "QmlLoadHarness.h"

#include "Settings.h"
#include "ShareSheetController.h"
#include "Strings.h"
#include "SupportEmailSender.h"
#include "VerbRef.h"

#include <QGuiApplication>
#include <QQuickItem>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QtQml/qqmlextensionplugin.h>

Q_IMPORT_QML_PLUGIN(Norvella_ExportPlugin)
Q_IMPORT_QML_PLUGIN(Norvella_ResourcesPlugin)

using namespace norvella;

namespace {
VerbPtr andare()
{
    auto verb = std::make_shared<Verb>();
    verb->italian = "andare";
    verb->english = "to go";
    const QStringList pronouns{"io", "tu", "lui/lei", "noi", "voi", "loro"};
    const QStringList forms{"vado", "vai", "va", "andiamo", "andate", "vanno"};
    for (int i = 0; i < 6; ++i)
        verb->indicativoPresente.append({pronouns[i], forms[i], "6", i + 1, {}});
    return verb;
}

const QByteArray shareWindow = R"(
import QtQuick
import QtQuick.Controls
import Norvella.Export

ApplicationWindow {
    id: window
    required property QtObject verb
    required property string folder
    visible: true
    ToolButton {
        id: exportButton
        anchors.right: parent.right
        text: "Export"
    }
    ShareSheet {
        id: sheet
        objectName: "sheet"
        anchorItem: exportButton
        saveFolder: window.folder
        Component.onCompleted: sheet.exportVerb(window.verb)
    }
}
)";

const QByteArray alertWindow = R"(
import QtQuick
import QtQuick.Controls
import Norvella.Export

ApplicationWindow {
    id: window
    visible: true
    SupportEmailSender { id: mail; objectName: "mail"; sender: window.contentItem }
    AlertDialog { objectName: "alert"; sender: mail }
}
)";
} // namespace

class ExportQmlTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        QStandardPaths::setTestModeEnabled(true);
        Settings::standard().clear();
        PreferredLanguages::setOverride({"en"});
        Strings::shared().selectLanguage({"en"});
    }

    void shareSheetLoadsCleanly_data()
    {
        QTest::addColumn<QSize>("size");
        QTest::newRow("phone") << QSize(390, 844);
        QTest::newRow("tablet") << QSize(1024, 768);
    }

    void shareSheetLoadsCleanly()
    {
        QFETCH(QSize, size);
        test::WarningCollector collector;
        QQmlEngine engine;
        test::prepareQmlEngine(engine);
        VerbRef verb(andare());
        QTemporaryDir folder;
        auto window = test::showWindow(engine, shareWindow, size,
                                       {{"verb", QVariant::fromValue<QObject *>(&verb)}, {"folder", folder.path()}});
        QVERIFY(window);
        auto *sheet = window->findChild<QObject *>("sheet");
        QVERIFY(sheet);
        QVERIFY(sheet->property("opened").toBool() || sheet->property("visible").toBool());
        test::settle(window.get());
        test::grab(window.get(), QStringLiteral("share-sheet-%1x%2").arg(size.width()).arg(size.height()));
        // The sheet fits the window.
        auto *controller = qvariant_cast<ShareSheetController *>(sheet->property("controller"));
        QVERIFY(controller);
        QVERIFY(sheet->property("height").toReal() < size.height());
        QVERIFY(sheet->property("width").toReal() <= size.width());
        // A popover beside the export button on wide windows, a bottom sheet on narrow ones.
        const qreal bottom = sheet->property("y").toReal() + sheet->property("height").toReal();
        if (size.width() >= 700)
            QVERIFY(sheet->property("y").toReal() < 100);
        else
            QCOMPARE(bottom, size.height() - 8.0);

        // A saved file is named in the sheet, with a way to open it.
        QVERIFY(controller->perform(ShareSheetController::SaveText));
        QVERIFY(QFile::exists(folder.filePath("andare.txt")));
        test::settle(window.get());
        test::grab(window.get(), QStringLiteral("share-sheet-saved-%1x%2").arg(size.width()).arg(size.height()));
        QVERIFY2(test::WarningCollector::warnings().isEmpty(), qPrintable(test::WarningCollector::warnings().join('\n')));
    }

    void alertDialogShowsTheSendersAlert()
    {
        const QSize size(390, 844);
        test::WarningCollector collector;
        QQmlEngine engine;
        test::prepareQmlEngine(engine);
        auto window = test::showWindow(engine, alertWindow, size);
        QVERIFY(window);
        auto *mail = window->findChild<SupportEmailSender *>("mail");
        auto *alert = window->findChild<QObject *>("alert");
        QVERIFY(mail && alert);
        QVERIFY(!alert->property("visible").toBool());
        mail->mailComposeFinished(2);
        QTRY_VERIFY(alert->property("visible").toBool());
        QCOMPARE(alert->property("title").toString(), Strings::text("support.emailsuccess.title"));
        test::settle(window.get());
        test::grab(window.get(), QStringLiteral("mail-alert-%1x%2").arg(size.width()).arg(size.height()));
        QVERIFY2(test::WarningCollector::warnings().isEmpty(), qPrintable(test::WarningCollector::warnings().join('\n')));
    }
};

QTEST_MAIN(ExportQmlTest)
#include "tst_export_qml.moc"
