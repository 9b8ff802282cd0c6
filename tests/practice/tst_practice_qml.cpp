// The Practice screen on the real verb database at phone and tablet sizes:
// both drills and the progress page load, answer and grade with no QML
// warning, driven by the keyboard. NORVELLA_SCREENSHOT_DIR keeps the pictures.
#include "QmlLoadHarness.h"

#include "DatabaseQueue.h"
#include "PracticeController.h"
#include "PracticeOptions.h"
#include "PracticeProgressController.h"
#include "Settings.h"
#include "Strings.h"
#include "TestSupport.h"
#include "Verb.h"
#include "VerbRepository.h"

#include <QStandardPaths>
#include <QTemporaryDir>

#define NORVELLA_QML_PRACTICE
#include "QmlModules.h"

using namespace norvella;

namespace {
const QByteArray practiceWindow = R"(
import QtQuick
import QtQuick.Controls
import Norvella.Practice

ApplicationWindow {
    visible: true
    property QtObject repository
    PracticeView { objectName: "practiceView"; anchors.fill: parent; queue: repository }
}
)";
} // namespace

class PracticeQmlTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        QStandardPaths::setTestModeEnabled(true);
        Settings::standard().clear();
        PreferredLanguages::setOverride({"en"});
        Strings::shared().selectLanguage({"en"});
        SessionOptions options;
        options.deck = PracticeDeck::Top100;
        options.tenses = {6, 7};
        options.newPerDay = 5;
        PracticeOptions::write(Settings::standard(), options);
    }

    void drillsAndProgress_data()
    {
        QTest::addColumn<QSize>("size");
        QTest::newRow("phone") << QSize(390, 844);
        QTest::newRow("tablet") << QSize(1024, 768);
    }
    void drillsAndProgress()
    {
        QFETCH(QSize, size);
        const QString suffix = QStringLiteral("-%1x%2").arg(size.width()).arg(size.height());
        QTemporaryDir dir;
        const QString path = dir.filePath(QStringLiteral("verbs.db"));
        QVERIFY(QFile::copy(QStringLiteral(NORVELLA_MASTER_DB), path));
        QFile::setPermissions(path, QFile::ReadOwner | QFile::WriteOwner);
        VerbRepository repository(std::make_shared<DatabaseQueue>(path));

        test::QmlScreen qml;
        QVERIFY(qml.show(practiceWindow, size, {{QStringLiteral("repository"), QVariant::fromValue<QObject *>(&repository)}}));
        QObject *view = qml.find(QStringLiteral("practiceView"));
        QVERIFY(view);
        auto *drill = qvariant_cast<PracticeController *>(view->property("controller"));
        auto *progress = qvariant_cast<PracticeProgressController *>(view->property("progressController"));
        QVERIFY(drill && progress);
        QMetaObject::invokeMethod(view, "begin");
        QVERIFY(qml.settle(100));
        QVERIFY(drill->hasCard());
        qml.grab(QStringLiteral("practice-produce") + suffix);

        // Typed with the keyboard: the answer with its accent dropped, Enter.
        auto *field = qml.find<QQuickItem>(QStringLiteral("practiceAnswer"));
        QVERIFY(field);
        QTRY_VERIFY(field->hasActiveFocus());
        QTest::keyClick(qml.window.get(), 'x');
        QTest::keyClick(qml.window.get(), 'x');
        QTest::keyClick(qml.window.get(), Qt::Key_Return);
        QVERIFY(qml.settle(100));
        QCOMPARE(drill->verdict(), int(PracticeController::Wrong));
        qml.grab(QStringLiteral("practice-produce-answered") + suffix);
        const int before = drill->remaining();
        QTest::keyClick(qml.window.get(), Qt::Key_1); // "Again"
        QVERIFY(qml.settle(100));
        QCOMPARE(drill->remaining(), before); // it comes back at the end
        QCOMPARE(drill->verdict(), int(PracticeController::Unanswered));

        view->setProperty("section", 1);
        QVERIFY(qml.settle(100));
        QCOMPARE(drill->options().size(), 4);
        qml.grab(QStringLiteral("practice-recognise") + suffix);
        QTest::keyClick(qml.window.get(), Qt::Key_2);
        QVERIFY(qml.settle(100));
        QVERIFY(drill->verdict() != int(PracticeController::Unanswered));
        qml.grab(QStringLiteral("practice-recognise-answered") + suffix);
        QTest::keyClick(qml.window.get(), Qt::Key_3); // "Good"
        QVERIFY(qml.settle(100));

        view->setProperty("section", 2);
        QVERIFY(qml.settle(100));
        QCOMPARE(progress->cardCount(), 2);
        QCOMPARE(progress->accuracy().size(), 1);
        qml.grab(QStringLiteral("practice-progress") + suffix);

        QVERIFY2(qml.clean(), test::WarningCollector::report().constData());
    }
};

QTEST_MAIN(PracticeQmlTest)
#include "tst_practice_qml.moc"
