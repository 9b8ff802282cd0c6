#include "FormAnalysis.h"

#include "Clitics.h"

#include <QFile>
#include <QHash>

#include <sqlite3.h>

#include <algorithm>

namespace norvella {

namespace {

class Statement
{
public:
    Statement(sqlite3 *db, const char *sql) { m_ok = sqlite3_prepare_v2(db, sql, -1, &m_statement, nullptr) == SQLITE_OK; }
    ~Statement() { sqlite3_finalize(m_statement); }
    Statement(const Statement &) = delete;
    Statement &operator=(const Statement &) = delete;
    bool ok() const { return m_ok; }
    sqlite3_stmt *get() const { return m_statement; }

private:
    sqlite3_stmt *m_statement = nullptr;
    bool m_ok = false;
};

QString textColumn(sqlite3_stmt *statement, int column)
{
    const auto *text = reinterpret_cast<const char *>(sqlite3_column_text(statement, column));
    return text ? QString::fromUtf8(text, sqlite3_column_bytes(statement, column)) : QString();
}

// The forms one row of the table stands for: each of two standard forms
// ("devo / debbo") and both genders of an agreeing participle ("sono andato/a").
QStringList spellingsOf(const QString &row)
{
    QStringList spellings;
    for (const QString &variant : row.split(QStringLiteral(" / "))) {
        const qsizetype slash = variant.lastIndexOf(u'/');
        if (slash < 0) {
            spellings << variant;
            continue;
        }
        const qsizetype wordStart = variant.lastIndexOf(u' ', slash) + 1;
        const QString head = variant.left(wordStart);
        const QString first = variant.mid(wordStart, slash - wordStart);
        const QString second = variant.mid(slash + 1);
        spellings << head + first;
        // "andato/a" swaps the ending; "visto/vista" would give the whole word.
        spellings << head + (second.size() < first.size() ? first.chopped(second.size()) + second : second);
    }
    return spellings;
}

} // namespace

QString FormAnalysis::fold(const QString &text)
{
    QString folded = text;
    folded.replace(QChar(0x2019), u'\'').replace(QChar(0x02BC), u'\'');
    folded = folded.simplified();
    const bool ascii = std::all_of(folded.cbegin(), folded.cend(), [](QChar c) { return c.unicode() < 0x80; });
    if (!ascii) {
        folded = folded.normalized(QString::NormalizationForm_D);
        folded.removeIf([](QChar c) { return c.isMark(); });
    }
    return folded.toLower();
}

quint64 FormAnalysis::hashOf(const QString &folded)
{
    // FNV-1a over the UTF-16 units. With 64 bits, two of the master's keys (or a
    // typed text and a key) agree by chance about once in 10^13 lookups.
    quint64 hash = 14695981039346656037ull;
    for (const QChar c : folded) {
        hash ^= c.unicode();
        hash *= 1099511628211ull;
    }
    return hash;
}

void FormAnalysis::add(const QString &text, const Key &reading)
{
    QStringList spellings = spellingsOf(text);
    for (QString &spelling : spellings)
        spelling = fold(spelling);
    spellings.removeDuplicates();
    for (const QString &spelling : spellings) {
        Key key = reading;
        key.hash = hashOf(spelling);
        m_keys.push_back(key);
    }
}

std::unique_ptr<FormAnalysis> FormAnalysis::build(sqlite3 *db, QString *error, const std::atomic_bool *cancel)
{
    const auto cancelled = [cancel] { return cancel && cancel->load(std::memory_order_relaxed); };
    auto analysis = std::unique_ptr<FormAnalysis>(new FormAnalysis);
    const auto fail = [&](const char *what) {
        if (error)
            *error = QStringLiteral("cannot read the %1: %2").arg(QLatin1String(what), QString::fromUtf8(sqlite3_errmsg(db)));
        return nullptr;
    };

    QHash<qint64, quint32> indexOf;
    {
        Statement verbs(db, "SELECT _id, italian FROM verb ORDER BY _id");
        if (!verbs.ok())
            return fail("verbs");
        int rc;
        while ((rc = sqlite3_step(verbs.get())) == SQLITE_ROW) {
            const qint64 id = sqlite3_column_int64(verbs.get(), 0);
            indexOf.insert(id, quint32(analysis->m_verbs.size()));
            analysis->m_verbs.push_back({id, textColumn(verbs.get(), 1)});
        }
        if (rc != SQLITE_DONE)
            return fail("verbs");
    }

    Statement forms(db, "SELECT verbid, conj_order, conjugation_type_id, pronounid, verb FROM conjugation"
                        " ORDER BY verbid, conj_order");
    if (!forms.ok())
        return fail("forms");
    analysis->m_keys.reserve(700000);
    qint64 currentVerb = -1;
    quint8 participles = 0;
    int rc;
    int rows = 0;
    while ((rc = sqlite3_step(forms.get())) == SQLITE_ROW) {
        // A quit waits for this thread: it looks up often enough to leave at once.
        if (++rows % 4096 == 0 && cancelled())
            return nullptr;
        sqlite3_stmt *row = forms.get();
        const qint64 verbId = sqlite3_column_int64(row, 0);
        const auto verb = indexOf.constFind(verbId);
        if (verb == indexOf.cend())
            continue;
        if (verbId != currentVerb) {
            currentVerb = verbId;
            participles = 0;
        }
        Key reading{};
        reading.verb = *verb;
        reading.order = quint8(sqlite3_column_int(row, 1));
        reading.type = quint8(sqlite3_column_int(row, 2));
        reading.pronoun = quint8(sqlite3_column_int(row, 3));
        if (reading.type == 4)
            reading.slot = participles++;
        analysis->add(textColumn(row, 4), reading);
    }
    if (rc != SQLITE_DONE)
        return fail("forms");
    if (cancelled())
        return nullptr;
    // Stable: the readings of one key stay in the table's order, verb by verb.
    std::stable_sort(analysis->m_keys.begin(), analysis->m_keys.end());
    analysis->m_keys.shrink_to_fit();
    return analysis;
}

std::unique_ptr<FormAnalysis> FormAnalysis::fromFile(const QString &path, QString *error,
                                                    const std::atomic_bool *cancel)
{
    sqlite3 *db = nullptr;
    if (sqlite3_open_v2(QFile::encodeName(path).constData(), &db, SQLITE_OPEN_READONLY, nullptr) != SQLITE_OK) {
        if (error)
            *error = QStringLiteral("cannot open %1: %2").arg(path, QString::fromUtf8(sqlite3_errmsg(db)));
        sqlite3_close(db);
        return nullptr;
    }
    auto analysis = build(db, error, cancel);
    sqlite3_close(db);
    return analysis;
}

void FormAnalysis::lookUp(const QString &folded, QList<FormReading> &readings,
                          const std::function<bool(const Key &)> &wanted) const
{
    const Key probe{hashOf(folded), 0, 0, 0, 0, 0};
    const auto [first, last] = std::equal_range(m_keys.cbegin(), m_keys.cend(), probe);
    for (auto it = first; it != last; ++it) {
        if (wanted && !wanted(*it))
            continue;
        const VerbName &verb = m_verbs[it->verb];
        const FormReading reading{verb.id, verb.italian, it->type, it->pronoun, it->slot, it->order};
        if (!readings.contains(reading))
            readings << reading;
    }
}

QList<FormReading> FormAnalysis::analyse(const QString &text, Imperatives imperatives) const
{
    const QString folded = fold(text);
    QList<FormReading> readings;
    if (folded.isEmpty())
        return readings;
    lookUp(folded, readings);
    // The table's own forms first. When they are a pronominal verb's ("vattene",
    // "mi alzo": andarsene, alzarsi), the pronouns belong to it and andare or
    // alzare are not read again; otherwise a form can be both ("fallo": fallare,
    // and fare with "lo"). Only pronominal infinitives end in something else than -re.
    const bool pronominal = std::any_of(readings.cbegin(), readings.cend(), [](const FormReading &r) {
        return !r.infinitive.endsWith(QLatin1String("re"));
    });
    if (!pronominal) {
        for (const Clitics::Candidate &candidate : Clitics::hostsOf(folded))
            lookUp(candidate.form, readings,
                   [&](const Key &key) { return Clitics::accepts(candidate.host, key.type, key.pronoun); });
    }
    if (imperatives == Imperatives::AsShown)
        return readings;
    // The imperative's lui/lei and loro are the present subjunctive's forms (che
    // parli, parli!): a learner is told the subjunctive once, not the same twice.
    readings.removeIf([&](const FormReading &r) {
        return r.type == 14 && (r.pronoun == 3 || r.pronoun == 6) && std::any_of(readings.cbegin(), readings.cend(), [&](const FormReading &other) {
                   return other.verbId == r.verbId && other.type == 15 && other.pronoun == r.pronoun;
               });
    });
    return readings;
}

QString FormAnalysis::moodTag(int type)
{
    switch (type) {
    case 1: return QStringLiteral("inf");
    case 2: case 4: return QStringLiteral("part");
    case 3: return QStringLiteral("ger");
    case 14: return QStringLiteral("imp");
    case 15: case 16: case 17: case 18: return QStringLiteral("cong");
    case 19: case 20: return QStringLiteral("cond");
    default: return QStringLiteral("ind");
    }
}

QString FormAnalysis::tenseTag(int type)
{
    switch (type) {
    case 4: case 16: case 20: return QStringLiteral("passato");
    case 7: return QStringLiteral("passato prossimo");
    case 8: case 17: return QStringLiteral("imperfetto");
    case 9: return QStringLiteral("trapassato prossimo");
    case 10: return QStringLiteral("futuro semplice");
    case 11: return QStringLiteral("futuro anteriore");
    case 12: return QStringLiteral("passato remoto");
    case 13: return QStringLiteral("trapassato remoto");
    case 18: return QStringLiteral("trapassato");
    default: return QStringLiteral("presente");
    }
}

QString FormAnalysis::personTag(const FormReading &reading)
{
    static const char *const pronouns[] = {"io", "tu", "lui/lei", "noi", "voi", "loro"};
    static const char *const participles[] = {"m sg", "f sg", "m pl", "f pl"};
    if (reading.pronoun >= 1 && reading.pronoun <= 6)
        return QLatin1String(pronouns[reading.pronoun - 1]);
    if (reading.type == 4 && reading.slot < 4)
        return QLatin1String(participles[reading.slot]);
    return QStringLiteral("-");
}

} // namespace norvella
