#pragma once

// Read access to the built master verbs.db and to the text sources it was built from,
// shared by the suites that check it.

#include <QFile>
#include <QHash>
#include <QList>
#include <QString>
#include <QStringList>
#include <QTextStream>
#include <QVariant>

#include <sqlite3.h>

#include <algorithm>

namespace master {

struct Form
{
    qint64 id = 0;
    int pronoun = 0; // 0 = NULL
    QString text;
    int type = 0;
    int order = 0;
};

struct MasterVerb
{
    qint64 id = 0;
    QString italian;
    QList<Form> forms; // by conj_order

    // A homograph's second entry carries a superscript number ("sortire²") after its infinitive.
    QString bare() const
    {
        QString word = italian;
        while (!word.isEmpty() && word.back().category() == QChar::Number_Other)
            word.chop(1);
        return word;
    }
    bool isPronominal() const { return bare().endsWith(QLatin1String("si")) || bare().endsWith(QLatin1String("sene")); }
    // Any clitic on the infinitive: the pronominal verbs and those with ci, la, ce la,
    // se la (metterci, smetterla, farcela, cavarsela). Every plain infinitive ends in -re.
    bool hasClitic() const { return !bare().endsWith(QLatin1String("re")); }
    QList<Form> ofType(int type) const
    {
        QList<Form> result;
        std::copy_if(forms.cbegin(), forms.cend(), std::back_inserter(result), [&](const Form &f) { return f.type == type; });
        return result;
    }
    QString form(int type, int pronoun) const
    {
        const auto found = std::find_if(forms.cbegin(), forms.cend(),
                                        [&](const Form &f) { return f.type == type && f.pronoun == pronoun; });
        return found == forms.cend() ? QString() : found->text;
    }
};

class MasterDb
{
public:
    explicit MasterDb(const QString &path)
    {
        if (sqlite3_open_v2(QFile::encodeName(path).constData(), &m_db, SQLITE_OPEN_READONLY, nullptr) != SQLITE_OK) {
            sqlite3_close(m_db);
            m_db = nullptr;
        }
    }
    ~MasterDb() { sqlite3_close(m_db); }
    MasterDb(const MasterDb &) = delete;
    MasterDb &operator=(const MasterDb &) = delete;

    bool isOpen() const { return m_db != nullptr; }
    QList<QVariantList> rows(const QString &sql) const
    {
        QList<QVariantList> result;
        sqlite3_stmt *statement = nullptr;
        if (sqlite3_prepare_v2(m_db, sql.toUtf8().constData(), -1, &statement, nullptr) != SQLITE_OK)
            qFatal("SQL error %s in %s", sqlite3_errmsg(m_db), qPrintable(sql));
        while (sqlite3_step(statement) == SQLITE_ROW) {
            QVariantList row;
            for (int c = 0; c < sqlite3_column_count(statement); ++c) {
                switch (sqlite3_column_type(statement, c)) {
                case SQLITE_NULL: row.append(QVariant()); break;
                case SQLITE_INTEGER: row.append(qint64(sqlite3_column_int64(statement, c))); break;
                default: row.append(QString::fromUtf8(reinterpret_cast<const char *>(sqlite3_column_text(statement, c))));
                }
            }
            result.append(row);
        }
        sqlite3_finalize(statement);
        return result;
    }
    // Every verb with its forms, in verb id order.
    QList<MasterVerb> verbs() const
    {
        QList<MasterVerb> verbs;
        QHash<qint64, qsizetype> position;
        for (const QVariantList &row : rows("SELECT _id, italian FROM verb ORDER BY _id")) {
            position.insert(row[0].toLongLong(), verbs.size());
            verbs.append({row[0].toLongLong(), row[1].toString(), {}});
        }
        for (const QVariantList &row : rows("SELECT _id, verbid, pronounid, verb, conjugation_type_id, conj_order"
                                            " FROM conjugation ORDER BY verbid, conj_order")) {
            const auto found = position.constFind(row[1].toLongLong());
            if (found != position.cend())
                verbs[*found].forms.append({row[0].toLongLong(), row[2].isNull() ? 0 : row[2].toInt(), row[3].toString(),
                                            row[4].toInt(), row[5].toInt()});
        }
        return verbs;
    }

private:
    sqlite3 *m_db = nullptr;
};

// Tab-separated source lines without comments, split into cells.
inline QList<QStringList> readSourceRows(const QString &path)
{
    QList<QStringList> result;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return result;
    QTextStream in(&file);
    in.setEncoding(QStringConverter::Utf8);
    while (!in.atEnd()) {
        const QString line = in.readLine();
        if (!line.trimmed().isEmpty() && !line.startsWith(u'#'))
            result.append(line.split(u'\t'));
    }
    return result;
}

// Alternative forms share one cell, in the order they are shown.
inline const QString separator = QStringLiteral(" / ");

inline QStringList variants(const QString &cell)
{
    return cell.isEmpty() ? QStringList() : cell.split(separator);
}

// Every verb of the master with its forms, and each one by its infinitive.
struct VerbIndex
{
    QList<MasterVerb> verbs;
    QHash<QString, qsizetype> byName;

    // False when the master cannot be opened (it was not built).
    bool load(const QString &path)
    {
        const MasterDb db(path);
        if (!db.isOpen())
            return false;
        verbs = db.verbs();
        for (qsizetype i = 0; i < verbs.size(); ++i)
            byName.insert(verbs[i].italian, i);
        return true;
    }
    const MasterVerb *find(const QString &name) const
    {
        const auto found = byName.constFind(name);
        return found == byName.cend() ? nullptr : &verbs[*found];
    }
};

inline QString fold(const QString &text)
{
    QString folded = text.normalized(QString::NormalizationForm_D);
    folded.removeIf([](QChar c) { return c.isMark(); });
    return folded.toLower();
}

// Failure text listing the first problems and how many there are.
inline QByteArray describe(const QStringList &problems)
{
    const qsizetype shown = std::min<qsizetype>(problems.size(), 40);
    QString text = QStringLiteral("%1 problem(s):\n  ").arg(problems.size()) + problems.mid(0, shown).join("\n  ");
    if (shown < problems.size())
        text += "\n  ...";
    return text.toUtf8();
}

inline QString sourcePath(const QString &name)
{
    return QStringLiteral(NORVELLA_VERB_SOURCES_DIR "/") + name;
}

} // namespace master
