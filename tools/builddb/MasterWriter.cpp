#include "MasterWriter.h"

#include "Folding.h"

#include <QFile>

#include <sqlite3.h>

#include <stdexcept>

namespace {

class Connection
{
public:
    explicit Connection(const QString &path)
    {
        if (sqlite3_open(QFile::encodeName(path).constData(), &m_db) != SQLITE_OK)
            fail("open " + path.toStdString());
    }
    ~Connection() { sqlite3_close(m_db); }
    Connection(const Connection &) = delete;
    Connection &operator=(const Connection &) = delete;

    void exec(const QString &sql)
    {
        char *message = nullptr;
        if (sqlite3_exec(m_db, sql.toUtf8().constData(), nullptr, nullptr, &message) != SQLITE_OK) {
            const std::string text = message ? message : "unknown error";
            sqlite3_free(message);
            throw std::runtime_error("SQLite: " + text + " in: " + sql.left(200).toStdString());
        }
    }

    sqlite3_stmt *prepare(const char *sql)
    {
        sqlite3_stmt *statement = nullptr;
        if (sqlite3_prepare_v2(m_db, sql, -1, &statement, nullptr) != SQLITE_OK)
            fail(sql);
        return statement;
    }

    void step(sqlite3_stmt *statement)
    {
        if (sqlite3_step(statement) != SQLITE_DONE)
            fail(sqlite3_sql(statement));
        sqlite3_reset(statement);
        sqlite3_clear_bindings(statement);
    }

    [[noreturn]] void fail(const std::string &what)
    {
        throw std::runtime_error("SQLite: " + std::string(sqlite3_errmsg(m_db)) + " (" + what + ")");
    }

private:
    sqlite3 *m_db = nullptr;
};

class Statement
{
public:
    Statement(Connection &db, const char *sql) : m_db(db), m_statement(db.prepare(sql)) {}
    ~Statement() { sqlite3_finalize(m_statement); }
    Statement(const Statement &) = delete;
    Statement &operator=(const Statement &) = delete;

    void bind(int index, qint64 value) { sqlite3_bind_int64(m_statement, index, value); }
    void bind(int index, const QString &text)
    {
        if (text.isNull()) {
            sqlite3_bind_null(m_statement, index);
            return;
        }
        const QByteArray utf8 = text.toUtf8();
        sqlite3_bind_text(m_statement, index, utf8.constData(), int(utf8.size()), SQLITE_TRANSIENT);
    }
    void bindNull(int index) { sqlite3_bind_null(m_statement, index); }
    void run() { m_db.step(m_statement); }

private:
    Connection &m_db;
    sqlite3_stmt *m_statement;
};

void insertPronouns(Connection &db)
{
    Statement insert(db, "INSERT INTO pronoun(_id, pronoun) VALUES(?, ?)");
    const std::array<const char *, 6> pronouns = {"io", "tu", "lui/lei", "noi", "voi", "loro"};
    for (int id = 1; id <= 6; ++id) {
        insert.bind(1, qint64(id));
        insert.bind(2, QString::fromUtf8(pronouns[id - 1]));
        insert.run();
    }
}

} // namespace

void writeMaster(const QString &path, const QString &schemaSql, const Entries &entries,
                 const QHash<QString, Translation> &translations, const IrregularMarks &marks,
                 const QStringList &ranked)
{
    QHash<QString, qint64> rankOf;
    for (qsizetype i = 0; i < ranked.size(); ++i)
        rankOf.insert(ranked[i], i + 1);
    QFile::remove(path);
    Connection db(path);
    // 8 KB pages hold the short conjugation rows with a little less overhead than 4 KB ones.
    db.exec(QStringLiteral("PRAGMA page_size=8192; PRAGMA journal_mode=OFF; PRAGMA synchronous=OFF;"));
    db.exec(schemaSql);
    db.exec(QStringLiteral("BEGIN"));
    insertPronouns(db);

    Statement verb(db, "INSERT INTO verb(_id, italian, simplified_italian, english, german, simplified_german,"
                       " french, simplified_french, spanish, simplified_spanish, dutch, simplified_dutch,"
                       " portuguese, simplified_portuguese, turkish, simplified_turkish, voice_available, pattern, model_id,"
                       " frequency_rank) VALUES(?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,0,?,?,?)");
    // _id is a generated column: the schema derives it from verbid and conj_order.
    Statement form(db, "INSERT INTO conjugation(verbid, pronounid, verb, conjugation_type_id, conj_order,"
                       " voice_file, irregular) VALUES(?,?,?,?,?,NULL,?)");
    Statement usage(db, "INSERT INTO verb_usage(verbid, third_person, auxiliary_note, auxiliary_examples,"
                        " also_spelled, homograph) VALUES(?,?,?,?,?,?)");
    QHash<QString, qint64> idOf;
    for (const Entry &entry : entries.verbs)
        idOf.insert(entry.italian, entry.id);
    for (const Entry &entry : entries.verbs) {
        const qint64 id = entry.id;
        if (!entry.usage.isEmpty()) {
            // Empty text is stored as NULL: the app reads "no note" either way.
            auto text = [](const QString &value) { return value.isEmpty() ? QString() : value; };
            usage.bind(1, id);
            usage.bind(2, qint64(entry.usage.thirdPersonOnly));
            usage.bind(3, text(entry.usage.auxiliaryNote));
            usage.bind(4, text(entry.usage.auxiliaryExamples));
            usage.bind(5, text(entry.usage.alsoSpelled));
            usage.bind(6, text(entry.usage.homograph));
            usage.run();
        }
        const Translation translation = translations.value(entry.italian);
        verb.bind(1, id);
        verb.bind(2, entry.italian);
        verb.bind(3, fold(entry.italian));
        verb.bind(4, translation.text[0]); // english has no folded column
        for (int language = 1; language < TranslationLanguages; ++language) {
            const QString &text = translation.text[language];
            verb.bind(3 + 2 * language, text);
            verb.bind(4 + 2 * language, text.isNull() ? QString() : fold(text));
        }
        const VerbPattern pattern = marks.verbs.value(entry.italian);
        verb.bind(17, pattern.pattern);
        if (idOf.contains(pattern.model))
            verb.bind(18, idOf.value(pattern.model));
        else
            verb.bindNull(18);
        if (rankOf.contains(entry.italian))
            verb.bind(19, rankOf.value(entry.italian));
        else
            verb.bindNull(19);
        verb.run();

        const QList<quint8> irregular = marks.rows.value(entry.italian);
        int order = 0;
        for (const FormRow &row : entry.rows) {
            form.bind(1, id);
            if (row.pronoun)
                form.bind(2, qint64(row.pronoun));
            else
                form.bindNull(2);
            form.bind(3, row.text);
            form.bind(4, qint64(row.type));
            form.bind(6, qint64(order < irregular.size() ? irregular[order] : 0));
            form.bind(5, qint64(++order));
            form.run();
        }
    }
    db.exec(QStringLiteral("COMMIT"));
    db.exec(QStringLiteral("VACUUM"));
}
