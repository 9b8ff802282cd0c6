#include "MasterFixture.h"

#include <QFile>
#include <QTextStream>

bool MasterVerb::isPronominal() const
{
    return italian.endsWith(QLatin1String("si")) || italian.endsWith(QLatin1String("sene"));
}

QList<Form> MasterVerb::ofType(int type) const
{
    QList<Form> result;
    for (const Form &form : forms) {
        if (form.type == type)
            result.append(form);
    }
    return result;
}

QString MasterVerb::form(int type, int pronoun) const
{
    for (const Form &form : forms) {
        if (form.type == type && form.pronoun == pronoun)
            return form.text;
    }
    return QString();
}

MasterDb::MasterDb(const QString &path)
{
    if (sqlite3_open_v2(QFile::encodeName(path).constData(), &m_db, SQLITE_OPEN_READONLY, nullptr) != SQLITE_OK) {
        sqlite3_close(m_db);
        m_db = nullptr;
    }
}

MasterDb::~MasterDb()
{
    sqlite3_close(m_db);
}

QList<QVariantList> MasterDb::rows(const QString &sql) const
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
            default:
                row.append(QString::fromUtf8(reinterpret_cast<const char *>(sqlite3_column_text(statement, c))));
            }
        }
        result.append(row);
    }
    sqlite3_finalize(statement);
    return result;
}

QList<MasterVerb> MasterDb::verbs() const
{
    QList<MasterVerb> verbs;
    QHash<qint64, qsizetype> position;
    for (const QVariantList &row : rows(QStringLiteral("SELECT _id, italian FROM verb ORDER BY _id"))) {
        position.insert(row[0].toLongLong(), verbs.size());
        verbs.append({row[0].toLongLong(), row[1].toString(), {}});
    }
    const auto forms = rows(QStringLiteral(
        "SELECT _id, verbid, pronounid, verb, conjugation_type_id, conj_order FROM conjugation ORDER BY verbid, conj_order"));
    for (const QVariantList &row : forms) {
        const Form form{row[0].toLongLong(), row[1].toLongLong(), row[2].isNull() ? 0 : row[2].toInt(),
                        row[3].toString(), row[4].toInt(), row[5].toInt()};
        const auto found = position.constFind(form.verbId);
        if (found != position.cend())
            verbs[*found].forms.append(form);
    }
    return verbs;
}

QList<QStringList> readSourceRows(const QString &path)
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

QString fold(const QString &text)
{
    QString folded;
    for (const QChar c : text.normalized(QString::NormalizationForm_D)) {
        if (!c.isMark())
            folded.append(c);
    }
    return folded.toLower();
}

QByteArray describe(const QStringList &problems)
{
    const qsizetype shown = std::min<qsizetype>(problems.size(), 40);
    QString text = QStringLiteral("%1 problem(s):\n  ").arg(problems.size()) + problems.mid(0, shown).join(QStringLiteral("\n  "));
    if (shown < problems.size())
        text += QStringLiteral("\n  ...");
    return text.toUtf8();
}
