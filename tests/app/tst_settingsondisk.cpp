// The settings files under stress: the real binary on a full disk, and old
// property-list files of every shape, valid, damaged and hostile, through the
// migration a launch runs.
#include "AppSandbox.h"
#include "CrashLog.h"
#include "LegacySettings.h"
#include "PermissionsEnforced.h"
#include "PropertyList.h"
#include "Settings.h"
#include "TestSupport.h"

#include <QProcess>
#include <QRandomGenerator>
#include <QScopeGuard>
#include <QTemporaryDir>
#include <QtTest>

#include <plist/plist.h>

#include <cstdlib>

using namespace norvella;
using test::readFile;
using test::writeFile;

namespace {

bool exists(const QString &path)
{
    const QFileInfo info(path);
    return info.exists() || info.isSymLink();
}

// What libplist's own writer makes: the lists an old version could have left.
QByteArray written(plist_t root, bool binary)
{
    char *data = nullptr;
    uint32_t length = 0;
    if (binary)
        plist_to_bin(root, &data, &length);
    else
        plist_to_xml(root, &data, &length);
    QByteArray bytes(data, qsizetype(length));
    std::free(data);
    plist_free(root);
    return bytes;
}

plist_t settingsDict(bool rich)
{
    plist_t dict = plist_new_dict();
    plist_dict_set_item(dict, "IncludeEnglish", plist_new_bool(0));
    plist_dict_set_item(dict, "SearchFrom", plist_new_string("W"));
    plist_dict_set_item(dict, "SearchConjugations", rich ? plist_new_string("YES") : plist_new_bool(1));
    plist_dict_set_item(dict, "SortByLang", rich ? plist_new_uint(0) : plist_new_bool(0));
    if (rich) {
        plist_t array = plist_new_array();
        plist_array_append_item(array, plist_new_real(0.75));
        plist_array_append_item(array, plist_new_string("perché città"));
        plist_array_append_item(array, plist_new_data("\x01\x02\x03", 3));
        plist_array_append_item(array, plist_new_date(600000000, 0));
        plist_t inner = plist_new_dict();
        plist_dict_set_item(inner, "nested", array);
        plist_dict_set_item(dict, "LastVersion", inner);
    }
    return dict;
}

// A dictionary holding "IncludeEnglish" and, under "deep", arrays nested to the given depth.
plist_t nestedDict(int depth)
{
    plist_t inner = plist_new_array();
    for (int level = 2; level < depth; ++level) {
        plist_t outer = plist_new_array();
        plist_array_append_item(outer, inner);
        inner = outer;
    }
    plist_t dict = plist_new_dict();
    plist_dict_set_item(dict, "IncludeEnglish", plist_new_bool(0));
    plist_dict_set_item(dict, "deep", inner);
    return dict;
}

// Binary lists written by hand, for shapes no writer makes: two-byte references,
// four-byte offsets.
namespace bin {
QByteArray raw(std::initializer_list<char> list)
{
    return QByteArray(list.begin(), qsizetype(list.size()));
}
QByteArray marker(int type, int count)
{
    if (count < 15)
        return QByteArray(1, char(type << 4 | count));
    return raw({char(type << 4 | 0xF), char(0x11), char(count >> 8), char(count & 0xFF)});
}
QByteArray ref(int index)
{
    return raw({char(index >> 8), char(index & 0xFF)});
}
QByteArray ascii(const QByteArray &text)
{
    return marker(5, int(text.size())) + text;
}
QByteArray utf16(const QList<char16_t> &units)
{
    QByteArray bytes = marker(6, int(units.size()));
    for (char16_t unit : units)
        bytes += raw({char(unit >> 8), char(unit & 0xFF)});
    return bytes;
}
QByteArray boolean(bool value)
{
    return QByteArray(1, value ? '\x09' : '\x08');
}
QByteArray array(const QList<int> &refs)
{
    QByteArray bytes = marker(0xA, int(refs.size()));
    for (int r : refs)
        bytes += ref(r);
    return bytes;
}
QByteArray dict(const QList<int> &keys, const QList<int> &values)
{
    QByteArray bytes = marker(0xD, int(keys.size()));
    for (int r : keys + values)
        bytes += ref(r);
    return bytes;
}
QByteArray list(const QList<QByteArray> &objects)
{
    QByteArray bytes("bplist00");
    QList<quint32> offsets;
    for (const QByteArray &object : objects) {
        offsets << quint32(bytes.size());
        bytes += object;
    }
    const auto bigEndian = [&bytes](quint64 value, int size) {
        for (int shift = (size - 1) * 8; shift >= 0; shift -= 8)
            bytes += char((value >> shift) & 0xFF);
    };
    const quint64 table = quint64(bytes.size());
    for (quint32 offset : offsets)
        bigEndian(offset, 4);
    bytes += QByteArray(6, '\0');
    bytes += char(4);
    bytes += char(2);
    bigEndian(quint64(objects.size()), 8);
    bigEndian(0, 8);
    bigEndian(table, 8);
    return bytes;
}
// {"IncludeEnglish": false, key: value}, the value being object 4 onwards.
QByteArray settingsWith(const QByteArray &key, const QList<QByteArray> &value)
{
    return list(QList<QByteArray>{dict({1, 2}, {3, 4}), ascii("IncludeEnglish"), ascii(key), boolean(false)} + value);
}
} // namespace bin

QByteArray mutated(const QByteArray &base, QRandomGenerator &random)
{
    QByteArray bytes = base;
    static const char markers[] = {'\x00', '\xFF', '\x0F', '\x5F', '\x6F', '\xAF', '\xDF', '\x13', '<', '>', '&'};
    switch (random.bounded(4)) {
    case 0:
        for (int i = 0, flips = 1 + random.bounded(4); i < flips; ++i)
            bytes[random.bounded(bytes.size())] ^= char(1 << random.bounded(8));
        break;
    case 1:
        bytes.truncate(random.bounded(bytes.size()));
        break;
    case 2: {
        QByteArray extra(1 + random.bounded(8), '\0');
        for (char &c : extra)
            c = char(random.bounded(256));
        bytes.insert(random.bounded(bytes.size() + 1), extra);
        break;
    }
    default:
        bytes[random.bounded(bytes.size())] = markers[random.bounded(int(sizeof markers))];
    }
    return bytes;
}

} // namespace

class SettingsOnDiskTest : public QObject
{
    Q_OBJECT

private:
    // The corpus is about parsing, not durability: on a memory file system the
    // synced saves of thousands of migrations cost nothing.
    QTemporaryDir m_dir{QFileInfo(QStringLiteral("/dev/shm")).isWritable()
                                ? QStringLiteral("/dev/shm/tst_settingsondisk-XXXXXX")
                                : QDir::tempPath() + QStringLiteral("/tst_settingsondisk-XXXXXX")};
    std::unique_ptr<Settings> m_settings;

    QString docs() const { return m_dir.filePath(QStringLiteral("docs")); }
    QString legacy(const char *name) const { return docs() + QLatin1Char('/') + QLatin1String(name); }

    enum class Expect { Migrates, Rejected, Either };

    // Runs one file through the migration as a launch would and checks its promises:
    // the file is gone from its place, read or moved aside, and an aside file stays
    // unread. Returns what went wrong, or nothing.
    QString migrateOnce(const QByteArray &bytes, Expect expect, bool *wasRead = nullptr)
    {
        if (!writeFile(legacy(LegacySettingsFiles::Name), bytes))
            return QStringLiteral("could not write the file");
        const bool read = migrateLegacySettings(*m_settings, docs());
        const QString corrupt = legacy(LegacySettingsFiles::Corrupt);
        const bool aside = exists(corrupt);
        if (wasRead)
            *wasRead = read;
        if (exists(legacy(LegacySettingsFiles::Name)) || exists(legacy(LegacySettingsFiles::Reading)))
            return QStringLiteral("the file was left in place");
        if (read == aside)
            return read ? QStringLiteral("read and also moved aside") : QStringLiteral("neither read nor moved aside");
        if (expect == Expect::Migrates && !read)
            return QStringLiteral("a good file was not read");
        if (expect == Expect::Rejected && read)
            return QStringLiteral("a bad file was read");
        if (aside) {
            if (readFile(corrupt) != bytes)
                return QStringLiteral("the file moved aside is not the file given");
            if (migrateLegacySettings(*m_settings, docs()) || readFile(corrupt) != bytes)
                return QStringLiteral("a file moved aside was read again");
            QFile::remove(corrupt);
        }
        return {};
    }

    void resetSettings()
    {
        m_settings->clear();
        m_settings->setBool(SettingsKeys::IncludeEnglish, true);
        m_settings->setString(SettingsKeys::SearchFrom, QStringLiteral("S"));
    }

private slots:
    void initTestCase()
    {
        QVERIFY(m_dir.isValid());
        QVERIFY(QDir().mkpath(docs()));
        CrashLog::setLogFilePath(m_dir.filePath(QStringLiteral("norvella.log")));
        m_settings = std::make_unique<Settings>(m_dir.filePath(QStringLiteral("config/settings.json")));
    }

    void init() { resetSettings(); }

    // Good lists from libplist's writer migrate, in XML and binary, flags written in any old way.
    void goodListsMigrate()
    {
        for (bool binary : {false, true}) {
            for (bool rich : {false, true}) {
                resetSettings();
                const QString error = migrateOnce(written(settingsDict(rich), binary), Expect::Migrates);
                QVERIFY2(error.isEmpty(), qPrintable(error));
                QCOMPARE(m_settings->objectForKey(SettingsKeys::IncludeEnglish), QVariant(false));
                QCOMPARE(m_settings->objectForKey(SettingsKeys::SearchFrom), QVariant(QStringLiteral("W")));
                QCOMPARE(m_settings->objectForKey(SettingsKeys::SearchConjugations), QVariant(true));
                QCOMPARE(m_settings->objectForKey(SettingsKeys::SortByLang), QVariant(false));
            }
        }
        // Exactly as deep as allowed still reads.
        for (bool binary : {false, true}) {
            resetSettings();
            const QString error = migrateOnce(written(nestedDict(PropertyList::MaxDepth), binary), Expect::Migrates);
            QVERIFY2(error.isEmpty(), qPrintable(error));
            QCOMPARE(m_settings->objectForKey(SettingsKeys::IncludeEnglish), QVariant(false));
        }
    }

    // Each is moved aside for its own reason, and the settings stay as they were.
    void hostileListsAreMovedAside_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QString>("reason");
        const QByteArray deepXml = "<?xml version=\"1.0\"?><plist version=\"1.0\"><dict><key>IncludeEnglish</key>"
                                   "<false/><key>deep</key>"
                + QByteArray("<array>").repeated(10000) + QByteArray("</array>").repeated(10000) + "</dict></plist>";
        QList<QByteArray> chain;
        for (int level = 0; level < 10000; ++level)
            chain << (level + 1 < 10000 ? bin::array({5 + level}) : bin::array({}));
        QList<QByteArray> fan;
        for (int level = 0; level < 28; ++level)
            fan << bin::array({5 + level, 5 + level, 5 + level, 5 + level});
        fan << bin::boolean(true);
        plist_t big = settingsDict(false);
        plist_dict_set_item(big, "big", plist_new_data(QByteArray(800 * 1024, 'x').constData(), 800 * 1024));

        QTest::newRow("empty") << QByteArray() << "empty";
        QTest::newRow("xml nested 10,000 deep") << deepXml << "nested deeper than 32";
        QTest::newRow("binary nested 10,000 deep") << bin::settingsWith("deep", chain) << "nested deeper than 32";
        QTest::newRow("xml one level too deep") << written(nestedDict(PropertyList::MaxDepth + 1), false)
                                                << "nested deeper than 32";
        QTest::newRow("binary one level too deep") << written(nestedDict(PropertyList::MaxDepth + 1), true)
                                                   << "nested deeper than 32";
        QTest::newRow("binary ascii string with NUL") << bin::settingsWith("SearchFrom", {bin::ascii({"W\0x", 3})})
                                                       << "string holding a NUL";
        QTest::newRow("binary utf-16 string with NUL") << bin::settingsWith("SearchFrom", {bin::utf16({u'W', 0, u'è'})})
                                                        << "string holding a NUL";
        QTest::newRow("binary key with NUL") << bin::settingsWith({"Search\0From", 11}, {bin::ascii("W")})
                                              << "string holding a NUL";
        QTest::newRow("binary lone surrogate") << bin::settingsWith("SearchFrom", {bin::utf16({0xD800, u'W'})})
                                                << "malformed UTF-16";
        QTest::newRow("binary containing itself") << bin::settingsWith("loop", {bin::array({4})}) << "containing itself";
        QTest::newRow("binary cycle through the root") << bin::settingsWith("loop", {bin::array({0})})
                                                        << "containing itself";
        QTest::newRow("binary shared four ways 28 deep") << bin::settingsWith("fan", fan) << "more than";
        QTest::newRow("binary reference out of range") << bin::settingsWith("x", {bin::array({999})})
                                                        << "reference out of range";
        QTest::newRow("binary string past the end") << bin::settingsWith("x", {bin::marker(5, 14)})
                                                     << "running past its end";
        QTest::newRow("binary number as key") << bin::list({bin::dict({1}, {2}), QByteArray("\x10\x01", 2), bin::boolean(false)})
                                               << "key that is not a string";
        QTest::newRow("xml over the size limit") << written(big, false) << "larger than";
        QTest::newRow("xml declaring entities")
                << QByteArray("<!DOCTYPE plist [<!ENTITY a \"aaaaaaaa\"><!ENTITY b \"&a;&a;&a;&a;\">]>"
                              "<plist><dict><key>SearchFrom</key><string>&b;</string></dict></plist>")
                << "declaring entities";
        QTest::newRow("xml character reference to NUL")
                << QByteArray("<plist><dict><key>SearchFrom</key><string>W&#0;</string></dict></plist>") << "malformed XML";
        QTest::newRow("xml key without value") << QByteArray("<plist><dict><key>SearchFrom</key></dict></plist>")
                                               << "key without a value";
        QTest::newRow("xml value without key") << QByteArray("<plist><dict><string>W</string></dict></plist>")
                                               << "key and value pairs";
        QTest::newRow("array at the root") << QByteArray("<plist><array><false/></array></plist>") << "not a dictionary";
    }

    void hostileListsAreMovedAside()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(QString, reason);
        QFile::remove(CrashLog::logFilePath());
        const QString error = migrateOnce(bytes, Expect::Rejected);
        QVERIFY2(error.isEmpty(), qPrintable(error));
        QCOMPARE(m_settings->objectForKey(SettingsKeys::IncludeEnglish), QVariant(true));
        QCOMPARE(m_settings->objectForKey(SettingsKeys::SearchFrom), QVariant(QStringLiteral("S")));
        const QString log = QString::fromUtf8(readFile(CrashLog::logFilePath()));
        QVERIFY2(log.contains(QStringLiteral("Unable to read legacy settings")) && log.contains(reason), qPrintable(log));
    }

    // Thousands of seeded mutations of good lists: none crashes, each is read or moved aside.
    void mutatedListsNeverCrash()
    {
        QRandomGenerator random(20240611);
        const QList<QByteArray> bases{written(settingsDict(false), false), written(settingsDict(false), true),
                                      written(settingsDict(true), false), written(settingsDict(true), true)};
        int read = 0, rejected = 0;
        for (const QByteArray &base : bases) {
            for (int round = 0; round < 1500; ++round) {
                const QByteArray bytes = mutated(base, random);
                bool wasRead = false;
                const QString error = migrateOnce(bytes, Expect::Either, &wasRead);
                QVERIFY2(error.isEmpty(), qPrintable(QStringLiteral("%1 (mutation %2 of a %3-byte list: %4)")
                                                             .arg(error)
                                                             .arg(round)
                                                             .arg(base.size())
                                                             .arg(QString::fromLatin1(bytes.toBase64()))));
                ++(wasRead ? read : rejected);
            }
        }
        qInfo("%d mutated lists read, %d moved aside", read, rejected);
    }

    // A launch that died inside the parser left the file under its reading name.
    void fileLeftMidReadIsMovedAsideUnread()
    {
        QVERIFY(writeFile(legacy(LegacySettingsFiles::Reading), written(settingsDict(false), false)));
        QVERIFY(!migrateLegacySettings(*m_settings, docs()));
        QVERIFY(!exists(legacy(LegacySettingsFiles::Reading)));
        QVERIFY(exists(legacy(LegacySettingsFiles::Corrupt)));
        QCOMPARE(m_settings->objectForKey(SettingsKeys::IncludeEnglish), QVariant(true));
        QVERIFY(readFile(CrashLog::logFilePath()).contains("an earlier launch stopped while reading it"));
        QFile::remove(legacy(LegacySettingsFiles::Corrupt));
    }

    // A folder that will not let the file go: it is copied now and again at the next launch.
    void undeletableFileIsCopiedAgainNextLaunch()
    {
        QVERIFY(writeFile(legacy(LegacySettingsFiles::Name), written(settingsDict(false), true)));
        test::PermissionsEnforced enforced;
        if (!enforced.active())
            QSKIP("cannot make a folder read-only for this user");
        const auto restore = qScopeGuard([&] {
            QFile::setPermissions(docs(), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
            QFile::remove(legacy(LegacySettingsFiles::Name));
        });
        QVERIFY(QFile::setPermissions(docs(), QFile::ReadOwner | QFile::ExeOwner));
        for (int launch = 0; launch < 2; ++launch) {
            resetSettings();
            QVERIFY(migrateLegacySettings(*m_settings, docs()));
            QCOMPARE(m_settings->objectForKey(SettingsKeys::SearchFrom), QVariant(QStringLiteral("W")));
            QVERIFY(exists(legacy(LegacySettingsFiles::Name)));
        }
        QVERIFY(readFile(CrashLog::logFilePath()).contains("Unable to delete file. Will try again later. "));
    }

    // Settings that cannot be saved: the old file stays under its name for the next launch.
    void unsavedSettingsKeepTheOldFile()
    {
        const QString locked = m_dir.filePath(QStringLiteral("locked"));
        QVERIFY(QDir().mkpath(locked));
        Settings settings(locked + QStringLiteral("/settings.json"));
        QVERIFY(writeFile(legacy(LegacySettingsFiles::Name), written(settingsDict(false), false)));
        test::PermissionsEnforced enforced;
        if (!enforced.active())
            QSKIP("cannot make a folder read-only for this user");
        const auto restore = qScopeGuard([&] {
            QFile::setPermissions(locked, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
            QFile::remove(legacy(LegacySettingsFiles::Name));
        });
        QVERIFY(QFile::setPermissions(locked, QFile::ReadOwner | QFile::ExeOwner));
        QVERIFY(migrateLegacySettings(settings, docs()));
        QCOMPARE(settings.objectForKey(SettingsKeys::SearchFrom), QVariant(QStringLiteral("W")));
        QVERIFY(exists(legacy(LegacySettingsFiles::Name)));
        QVERIFY(!exists(legacy(LegacySettingsFiles::Reading)));
        QVERIFY(!exists(legacy(LegacySettingsFiles::Corrupt)));
    }

    // The real binary, its config folder on a full disk: a view it counts cannot be
    // saved, and the store on disk stays exactly as it was.
    void fullDiskLosesNoSetting()
    {
        if (QProcess::execute(QStringLiteral("unshare"), {QStringLiteral("-rm"), QStringLiteral("true")}) != 0)
            QSKIP("no user and mount namespaces here for a small tmpfs (unshare -rm)");
        const test::AppSandbox root(QStringLiteral(NORVELLA_BINARY));
        QVERIFY(root.isReady());
        for (const char *folder : {"staged", "out/config"})
            QVERIFY(QDir().mkpath(root.filePath(QLatin1String(folder))));
        const QString staged = root.filePath(QStringLiteral("staged/settings.json"));
        {
            Settings settings(staged);
            const Settings::Batch batch(settings);
            Preferences::registerFirstRunValues(settings);
            settings.setBool(SettingsKeys::UseHistory, false);
            settings.setString(SettingsKeys::SearchFrom, QStringLiteral("W"));
            settings.setInteger(SettingsKeys::NumberOfVerbsViewed, 41);
        }
        const QByteArray before = readFile(staged);

        // The mount lives and dies with the namespace, so what is left on it is copied out.
        const QString script = QStringLiteral(R"(
            store="$XDG_CONFIG_HOME/Norvella/norvella"
            mount -t tmpfs -o size=256k tmpfs "$XDG_CONFIG_HOME" || exit 90
            mkdir -p "$store" && cp "$STAGED" "$store/settings.json" || exit 91
            dd if=/dev/zero of="$XDG_CONFIG_HOME/filler" bs=4k 2>/dev/null
            "$NORVELLA" --screenshot "$OUT/shot.png" --size 390x844 --open essere
            status=$?
            cp -a "$store/." "$OUT/config/"
            exit $status)");
        const test::AppSandbox::Run app = root.inMountNamespace(
                script, {{"STAGED", staged}, {"OUT", root.filePath(QStringLiteral("out"))}, {"NORVELLA", root.binary()}});
        const QByteArray &errors = app.err;
        QVERIFY2(app.exitCode == 0, errors.constData());
        QVERIFY2(QFileInfo(root.filePath(QStringLiteral("out/shot.png"))).size() > 0, errors.constData());
        QVERIFY2(errors.contains("Unable to save settings") && errors.contains("No space left on device"), errors.constData());

        const QDir out(root.filePath(QStringLiteral("out/config")));
        const QByteArray after = readFile(out.filePath(QStringLiteral("settings.json")));
        if (after != before) {
            Settings original(staged);
            Settings kept(out.filePath(QStringLiteral("settings.json")));
            for (const QString &key : {SettingsKeys::UseHistory, SettingsKeys::SearchFrom, SettingsKeys::IncludeEnglish,
                                       SettingsKeys::SortByLang, SettingsKeys::ShowTranslated})
                QCOMPARE(kept.objectForKey(key), original.objectForKey(key));
        }
        for (const QFileInfo &file : out.entryInfoList(QDir::Files | QDir::Hidden))
            QVERIFY2(file.size() > 0, qPrintable(file.fileName() + QStringLiteral(" is empty")));
    }
};

QTEST_GUILESS_MAIN(SettingsOnDiskTest)
#include "tst_settingsondisk.moc"
