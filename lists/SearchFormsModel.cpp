#include "SearchFormsModel.h"

#include "Strings.h"

namespace norvella {

namespace {

struct TypeNames
{
    int type;
    const char *moodKey;  // null where the tense names the mood itself (imperative, participles)
    const char *tenseKey; // as the conjugation screen titles the tense
};

// The same keys the conjugation screen's sections use, so a row names a form
// the way the screen it opens does.
constexpr TypeNames typeNames[] = {
    {6, "type.indicative.full", "tense.ind.presente"},
    {7, "type.indicative.full", "tense.ind.passatoprossimo"},
    {8, "type.indicative.full", "tense.ind.imperfetto"},
    {9, "type.indicative.full", "tense.ind.trapassatoprossimo"},
    {12, "type.indicative.full", "tense.ind.passatoremoto"},
    {13, "type.indicative.full", "tense.ind.trapassatoremoto"},
    {10, "type.indicative.full", "tense.ind.futuro"},
    {11, "type.indicative.full", "tense.ind.futuroanteriore"},
    {15, "type.subjunctive.full", "tense.sub.presente"},
    {17, "type.subjunctive.full", "tense.sub.imperfetto"},
    {16, "type.subjunctive.full", "tense.sub.passatoprossimo"},
    {18, "type.subjunctive.full", "tense.sub.trapassatoprossimo"},
    {19, "type.conditional.full", "tense.con.present"},
    {20, "type.conditional.full", "tense.con.past"},
    {14, nullptr, "tense.other.imperative"},
    {2, nullptr, "tense.other.participiopresente"},
    {4, nullptr, "tense.other.pastparticiple"},
    {3, nullptr, "tense.other.gerund"},
};

const TypeNames *namesOf(int type)
{
    for (const TypeNames &names : typeNames) {
        if (names.type == type)
            return &names;
    }
    return nullptr;
}

} // namespace

SearchFormsModel::SearchFormsModel(QObject *parent) : QAbstractListModel(parent) {}

int SearchFormsModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : int(m_rows.size());
}

QVariant SearchFormsModel::data(const QModelIndex &index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid | CheckIndexOption::ParentIsInvalid))
        return {};
    const Row &row = m_rows.at(index.row());
    const QString italian = row.reading.infinitive.toLower();
    switch (role) {
    case ItalianRole:
        return italian;
    case DetailRole:
        return row.detail.join(QStringLiteral(" · "));
    case Qt::DisplayRole:
    case TextRole:
        return (QStringList(italian) + row.detail).join(QStringLiteral(" · "));
    case AccessibleNameRole:
        return (QStringList(italian) + row.detail).join(QStringLiteral(", "));
    default:
        return {};
    }
}

QHash<int, QByteArray> SearchFormsModel::roleNames() const
{
    return {{ItalianRole, "italian"}, {DetailRole, "detail"}, {TextRole, "text"}, {AccessibleNameRole, "accessibleName"}};
}

bool SearchFormsModel::isShown(const FormReading &reading)
{
    return namesOf(reading.type) != nullptr;
}

QStringList SearchFormsModel::describe(const FormReading &reading, bool italianTenseNames)
{
    const TypeNames *names = namesOf(reading.type);
    if (!names)
        return {};
    QStringList parts;
    if (names->moodKey)
        parts << Strings::text(QLatin1String(names->moodKey));
    QString tenseKey = QLatin1String(names->tenseKey);
    if (italianTenseNames)
        tenseKey += QStringLiteral("_italian");
    parts << Strings::text(tenseKey);
    if (reading.pronoun >= 1 && reading.pronoun <= 6) {
        // The pronouns are Italian in every language, as the table prints them.
        parts << FormAnalysis::personTag(reading);
    } else if (reading.type == 4 && reading.slot < 4) {
        static const char *const participles[] = {"search.participle.m_sg", "search.participle.f_sg",
                                                  "search.participle.m_pl", "search.participle.f_pl"};
        parts << Strings::text(QLatin1String(participles[reading.slot]));
    }
    return parts;
}

void SearchFormsModel::setReadings(const QList<FormReading> &readings, bool italianTenseNames)
{
    QList<Row> rows;
    for (const FormReading &reading : readings) {
        if (isShown(reading))
            rows.append({reading, describe(reading, italianTenseNames)});
    }
    const auto sameRows = [&] {
        if (rows.size() != m_rows.size())
            return false;
        for (qsizetype i = 0; i < rows.size(); ++i) {
            if (!(rows.at(i).reading == m_rows.at(i).reading) || rows.at(i).detail != m_rows.at(i).detail)
                return false;
        }
        return true;
    };
    // Most keystrokes are no form at all; those leave the section untouched.
    if (sameRows())
        return;
    const int before = count();
    beginResetModel();
    m_rows = std::move(rows);
    endResetModel();
    if (count() != before)
        emit countChanged();
}

const FormReading *SearchFormsModel::readingAt(int row) const
{
    return row >= 0 && row < m_rows.size() ? &m_rows.at(row).reading : nullptr;
}

QList<FormCell> SearchFormsModel::cellsFor(int row) const
{
    const FormReading *chosen = readingAt(row);
    if (!chosen)
        return {};
    const auto cellOf = [](const FormReading &reading) {
        return FormCell{QString::number(reading.type), reading.pronoun, reading.pronoun ? 0 : reading.slot};
    };
    QList<FormCell> cells{cellOf(*chosen)};
    for (const Row &other : m_rows) {
        const FormCell cell = cellOf(other.reading);
        if (other.reading.verbId == chosen->verbId && !cells.contains(cell))
            cells.append(cell);
    }
    return cells;
}

} // namespace norvella
