#include "QmlLoadHarness.h"

#include "Settings.h"
#include "Strings.h"
#include "SupportEmailSender.h"
#include "VerbRef.h"

#include <QStandardPaths>

#define NORVELLA_QML_EXPORT
#include "QmlModules.h"

using namespace norvella;

namespace {
const QByteArray shareWindow = R"(
import QtQuick
import QtQuick.Controls
import Norvella.Export

ApplicationWindow {
    id: window
    required property QtObject verb
    visible: true
    ToolButton { id: exportButton; anchors.right: parent.right; text: "Export" }
    ShareSheet {
        id: sheet
        objectName: "sheet"
        anchorItem: exportButton
        Component.onCompleted: sheet.exportVerb(window.verb)
    }
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

    void shareSheetAndAlertLoadCleanly_data()
    {
        QTest::addColumn<QSize>("size");
        QTest::newRow("phone") << QSize(390, 844);
        QTest::newRow("tablet") << QSize(1024, 768);
    }

    void shareSheetAndAlertLoadCleanly()
    {
        QFETCH(QSize, size);
        auto verb = std::make_shared<Verb>();
        verb->italian = "andare";
        verb->english = "to go";
        verb->indicativoPresente.append({"io", "vado", "6", 1, {}});
        VerbRef ref(verb);
        test::QmlScreen qml;
        QVERIFY(qml.show(shareWindow, size, {{"verb", QVariant::fromValue<QObject *>(&ref)}}));
        auto *sheet = qml.find("sheet");
        QVERIFY(sheet);
        QTRY_VERIFY(sheet->property("opened").toBool());
        qml.settle(350);
        const QString suffix = QStringLiteral("-%1x%2").arg(size.width()).arg(size.height());
        qml.grab("share-sheet" + suffix);
        // A popover beside the export button on wide windows, a bottom sheet on narrow ones.
        const qreal y = sheet->property("y").toReal(), height = sheet->property("height").toReal();
        QVERIFY(sheet->property("width").toReal() <= size.width());
        if (size.width() >= 700)
            QVERIFY(y < 100 && y + height < size.height());
        else
            QCOMPARE(y + height, size.height() - 8.0);

        // The support mail's outcome shows as an alert.
        QMetaObject::invokeMethod(sheet, "close");
        auto *alert = qml.find("alert");
        QVERIFY(!alert->property("visible").toBool());
        qml.find<SupportEmailSender>("mail")->mailComposeFinished(2);
        QTRY_VERIFY(alert->property("visible").toBool());
        QCOMPARE(alert->property("title").toString(), Strings::text("support.emailsuccess.title"));
        qml.settle(350);
        qml.grab("mail-alert" + suffix);
        QVERIFY2(qml.clean(), test::WarningCollector::report());
    }
};

QTEST_MAIN(ExportQmlTest)
#include "tst_export_qml.moc"
