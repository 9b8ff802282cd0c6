// The real window with the system text at 100 % and 150 %: body and secondary
// text keep their minimum sizes, and no title, tab, mood or segment label is
// cut on the smallest phone.
#include "AppWindow.h"
#include "Appearance.h"

#include <QQuickItem>

#define NORVELLA_QML_ALL
#include "QmlModules.h"

using namespace norvella;

namespace {

// Labels that must show whole: bar titles, tabs, the mood selector and segments.
bool mustShowWhole(const QQuickItem *text)
{
    for (const QQuickItem *p = text->parentItem(); p; p = p->parentItem()) {
        const QByteArray type = p->metaObject()->className();
        if (type.contains("ToolBar") || type.contains("TabBar") || type.startsWith("MoodSegment")
            || type.startsWith("SegmentButton") || type.startsWith("DetailBar") || type.startsWith("NavigationBar"))
            return true;
    }
    return false;
}

QStringList cutLabels(const test::QmlScreen &qml)
{
    QStringList cut;
    for (QQuickItem *item : qml.items()) {
        if (item->inherits("QQuickText") && !item->property("text").toString().isEmpty() && test::onScreen(item)
            && mustShowWhole(item) && item->property("truncated").toBool())
            cut << item->property("text").toString();
    }
    return cut;
}

QQuickItem *textShowing(const test::QmlScreen &qml, const QString &text)
{
    for (QQuickItem *item : qml.items()) {
        if (item->inherits("QQuickText") && item->property("text").toString() == text && test::onScreen(item))
            return item;
    }
    return nullptr;
}

int pixelSize(const QQuickItem *text)
{
    return text ? text->property("font").value<QFont>().pixelSize() : -1;
}

} // namespace

class TypeSizesTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { QStandardPaths::setTestModeEnabled(true); }

    void cleanup()
    {
        qunsetenv("NORVELLA_TEXT_SCALE");
        Appearance::shared().refreshTextScale();
    }

    void sizesAndNothingCut_data()
    {
        QTest::addColumn<QString>("scale");
        QTest::addColumn<QSize>("size");
        QTest::addColumn<int>("body");
        QTest::addColumn<int>("secondary");
        QTest::newRow("default, small phone") << "" << QSize(320, 568) << 16 << 13;
        QTest::newRow("150 %, small phone") << "1.5" << QSize(320, 568) << 24 << 20;
        QTest::newRow("150 %, landscape phone") << "1.5" << QSize(568, 320) << 24 << 20;
    }

    void sizesAndNothingCut()
    {
        QFETCH(QString, scale);
        QFETCH(QSize, size);
        QFETCH(int, body);
        QFETCH(int, secondary);
        qputenv("NORVELLA_TEXT_SCALE", scale.toUtf8());
        Appearance::shared().refreshTextScale();

        test::AppWindow app;
        QVERIFY(app.launch(size));
        test::QmlScreen &qml = app.qml;
        QVERIFY(qml.settle());
        qml.grab(QStringLiteral("home-%1x%2-%3").arg(size.width()).arg(size.height()).arg(scale));

        // The list: the verb at body size or more, its translation at the secondary size.
        auto *home = app.home();
        QVERIFY(home && home->verbListTableViewController()->rowCount() > 0);
        const VerbPtr first = home->verbListTableViewController()->verbAtRow(0);
        QVERIFY(pixelSize(textShowing(qml, first->italian)) >= body);
        // A tab keeps a third of a phone's width whatever the text size: its label grows
        // to 125 % and no further, and is never cut.
        QVERIFY(pixelSize(textShowing(qml, QStringLiteral("Favourites"))) >= std::min(secondary, qRound(13 * 1.25)));
        QVERIFY2(cutLabels(qml).isEmpty(), qPrintable(cutLabels(qml).join(", ")));

        // A verb: its title, the moods and the forms.
        home->showVerb(first);
        QVERIFY(app.waitForPages());
        qml.grab(QStringLiteral("verb-%1x%2-%3").arg(size.width()).arg(size.height()).arg(scale));
        QVERIFY2(cutLabels(qml).isEmpty(), qPrintable(cutLabels(qml).join(", ")));

        // Settings, with its segmented controls.
        QTest::keyClick(qml.window.get(), Qt::Key_Escape);
        QVERIFY(app.waitForPages());
        QVERIFY(QMetaObject::invokeMethod(qml.find<QObject>("optionsView"), "open"));
        QVERIFY(qml.settle(400));
        QVERIFY2(cutLabels(qml).isEmpty(), qPrintable(cutLabels(qml).join(", ")));
        // The appearance row sits last, above the about block.
        auto *options = qml.find<QQuickItem>("optionsList");
        QVERIFY(options);
        QVERIFY(QMetaObject::invokeMethod(options, "positionViewAtIndex", Q_ARG(int, options->property("count").toInt() - 1),
                                          Q_ARG(int, 2 /* ListView.Center */)));
        QVERIFY(qml.settle());
        qml.grab(QStringLiteral("settings-%1x%2-%3").arg(size.width()).arg(size.height()).arg(scale));
        QVERIFY(pixelSize(textShowing(qml, QStringLiteral("Light"))) >= body);
        QVERIFY2(cutLabels(qml).isEmpty(), qPrintable(cutLabels(qml).join(", ")));
        QVERIFY2(app.close(), test::WarningCollector::report());
    }
};

QTEST_MAIN(TypeSizesTest)
#include "tst_typesizes.moc"
