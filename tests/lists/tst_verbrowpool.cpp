#include "VerbRowPool.h"

#include <QtTest>

using namespace norvella;

// The alphabetical list keeps its rows packed and makes each record again when
// a row is shown: what comes back must be the record that went in, texts
// (null and empty apart), id and flags, whichever row and however many.
class VerbRowPoolTest : public QObject
{
    Q_OBJECT

    static Verb sample(int n)
    {
        Verb verb;
        verb.id = (qint64(1) << 40) + n;
        verb.italian = QStringLiteral("perché%1").arg(n);
        verb.simplified_italian = QStringLiteral("perche%1").arg(n);
        verb.english = n % 2 ? QString() : QStringLiteral("to be %1").arg(n);
        verb.german = QStringLiteral("");
        verb.simplified_german = QStringLiteral("größe");
        verb.french = QStringLiteral("être");
        verb.simplified_french = QString();
        verb.spanish = QStringLiteral("señor 😀");
        verb.simplified_spanish = QStringLiteral("senor");
        verb.dutch = QStringLiteral("zijn");
        verb.simplified_dutch = QStringLiteral("");
        verb.portuguese = QStringLiteral("ação");
        verb.simplified_portuguese = QStringLiteral("acao");
        verb.turkish = QStringLiteral("İstanbul");
        verb.simplified_turkish = QString(n, QLatin1Char('x'));
        verb.voice_available = n % 3 == 0;
        verb.isFavourite = n % 5 == 0;
        return verb;
    }

    static QStringList fields(const Verb &verb)
    {
        QStringList out;
        for (const QString *text : {&verb.italian, &verb.simplified_italian, &verb.english, &verb.german,
                                    &verb.simplified_german, &verb.french, &verb.simplified_french, &verb.spanish,
                                    &verb.simplified_spanish, &verb.dutch, &verb.simplified_dutch, &verb.portuguese,
                                    &verb.simplified_portuguese, &verb.turkish, &verb.simplified_turkish})
            out << (text->isNull() ? QStringLiteral("<null>") : QLatin1Char('"') + *text + QLatin1Char('"'));
        out << QString::number(verb.id) << QString::number(verb.voice_available) << QString::number(verb.isFavourite);
        return out;
    }

private slots:
    void everyRowComesBackAsItWentIn()
    {
        VerbRowPool pool;
        for (int n = 0; n < 300; ++n)
            QCOMPARE(pool.add(sample(n)), quint32(n));
        pool.squeeze();
        QCOMPARE(pool.size(), 300u);
        // Out of order, as a view asks for them.
        for (int n : {299, 0, 150, 1, 298, 7}) {
            const VerbPtr verb = pool.verb(quint32(n));
            QVERIFY(verb);
            QCOMPARE(fields(*verb), fields(sample(n)));
        }
        QVERIFY(!pool.verb(300));

        // A reload starts again from row 0, with nothing of the old rows left.
        pool.clear();
        QCOMPARE(pool.size(), 0u);
        QVERIFY(!pool.verb(0));
        Verb bare;
        QCOMPARE(pool.add(bare), 0u);
        QCOMPARE(fields(*pool.verb(0)), fields(bare));
    }
};

QTEST_GUILESS_MAIN(VerbRowPoolTest)
#include "tst_verbrowpool.moc"
