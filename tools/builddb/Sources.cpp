#include "Sources.h"

#include "Derivation.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QTextStream>

namespace {

const std::array<const char *, TenseCount> tenseTags = {
    "ger", "ppres", "pp", "ind.pres", "ind.impf", "ind.prem", "ind.fut",
    "cond.pres", "cong.pres", "cong.impf", "imp"};
const std::array<int, TenseCount> tenseSizes = {1, 1, 4, 6, 6, 6, 6, 6, 6, 6, 3};

const QRegularExpression infinitivePattern(QStringLiteral("^[a-zàèéìòù]+(are|ere|ire|rre)$"));
const QRegularExpression formPattern(QStringLiteral("^[a-zàèéìíòóù']+$"));

void readForms(const QString &path, Sources &sources)
{
    VerbForms *current = nullptr;
    std::array<bool, TenseCount> seen{};
    auto finish = [&](int line) {
        if (!current)
            return;
        for (int t = 0; t < TenseCount; ++t) {
            if (!seen[t])
                throw SourceError(QStringLiteral("%1: %2 has no %3 line")
                                      .arg(sourceLine(path, line), current->infinitive, tenseTags[t]));
        }
    };
    int lastLine = 0;
    readTsv(path, [&](const QStringList &cells, int line) {
        lastLine = line;
        if (cells.size() < 3)
            throw SourceError(QStringLiteral("%1: expected infinitive, tag and forms").arg(sourceLine(path, line)));
        const QString &verb = cells[0];
        if (cells[1] == QLatin1String("use") && cells.size() == 3 && cells[2] == QLatin1String("none")) {
            finish(line);
            current = nullptr;
            if (sources.forms.count(verb) || sources.leftOut.contains(verb))
                throw SourceError(QStringLiteral("%1: duplicate verb '%2'").arg(sourceLine(path, line), verb));
            sources.leftOut.insert(verb);
            return;
        }
        if (cells[1] == QLatin1String("use")) {
            finish(line);
            if (!infinitivePattern.match(verb).hasMatch())
                throw SourceError(QStringLiteral("%1: '%2' is not an infinitive").arg(sourceLine(path, line), verb));
            if (sources.forms.count(verb) || sources.leftOut.contains(verb))
                throw SourceError(QStringLiteral("%1: duplicate verb '%2'").arg(sourceLine(path, line), verb));
            if (cells.size() != 3 || (cells[2] != QLatin1String("verb") && cells[2] != QLatin1String("base")))
                throw SourceError(QStringLiteral("%1: use must be 'verb', 'base' or 'none'").arg(sourceLine(path, line)));
            current = &sources.forms[verb];
            current->infinitive = verb;
            current->ownEntry = cells[2] == QLatin1String("verb");
            seen.fill(false);
            return;
        }
        if (!current || current->infinitive != verb)
            throw SourceError(QStringLiteral("%1: '%2' line outside the verb's block (each verb starts with its use line)")
                                  .arg(sourceLine(path, line), verb));
        const Tense tense = tenseFromTag(cells[1]);
        if (tense == TenseCount)
            throw SourceError(QStringLiteral("%1: unknown tag '%2'").arg(sourceLine(path, line), cells[1]));
        if (seen[tense])
            throw SourceError(QStringLiteral("%1: %2 of '%3' given twice").arg(sourceLine(path, line), cells[1], verb));
        const QStringList forms = cells.mid(2);
        if (forms.size() != tenseSizes[tense])
            throw SourceError(QStringLiteral("%1: %2 needs %3 forms, found %4")
                                  .arg(sourceLine(path, line), cells[1]).arg(tenseSizes[tense]).arg(forms.size()));
        QStringList &parsed = current->tenses[tense];
        for (const QString &form : forms) {
            if (form == QLatin1String("-")) {
                parsed.append(QString());
            } else if (isWordForm(form)) {
                parsed.append(form);
            } else {
                throw SourceError(QStringLiteral("%1: malformed form '%2'").arg(sourceLine(path, line), form));
            }
        }
        seen[tense] = true;
    });
    finish(lastLine);
    if (sources.forms.empty())
        throw SourceError(QStringLiteral("%1: no verbs").arg(path));
}

bool isHeader(const QStringList &cells, const char *second)
{
    return cells.size() >= 2 && cells[0] == QLatin1String("italian") && cells[1] == QLatin1String(second);
}

void readAuxiliaries(const QString &path, Sources &sources)
{
    readTsv(path, [&](const QStringList &cells, int line) {
        if (isHeader(cells, "auxiliary"))
            return;
        if (cells.size() < 2 || cells.size() > 3)
            throw SourceError(QStringLiteral("%1: expected italian, auxiliary [, note]").arg(sourceLine(path, line)));
        const QString &aux = cells[1];
        Auxiliary shown;
        if (aux == QLatin1String("essere") || aux == QLatin1String("essere/avere"))
            shown = Auxiliary::Essere;
        else if (aux == QLatin1String("avere") || aux == QLatin1String("avere/essere"))
            shown = Auxiliary::Avere;
        else
            throw SourceError(QStringLiteral("%1: unknown auxiliary '%2'").arg(sourceLine(path, line), aux));
        if (sources.auxiliaries.contains(cells[0]))
            throw SourceError(QStringLiteral("%1: '%2' listed twice").arg(sourceLine(path, line), cells[0]));
        sources.auxiliaries.insert(cells[0], shown);
        if (aux.contains(u'/'))
            sources.otherAuxiliaries.insert(cells[0], shown == Auxiliary::Essere ? Auxiliary::Avere : Auxiliary::Essere);
    });
}

void readPronominal(const QString &path, Sources &sources)
{
    QHash<QString, int> lines;
    readTsv(path, [&](const QStringList &cells, int line) {
        if (isHeader(cells, "base"))
            return;
        if (cells.size() < 2 || cells.size() > 3 || cells[0].isEmpty() || cells[1].isEmpty())
            throw SourceError(QStringLiteral("%1: expected italian, base [, note]").arg(sourceLine(path, line)));
        if (lines.contains(cells[0]))
            throw SourceError(QStringLiteral("%1: '%2' listed twice (first at line %3)")
                                  .arg(sourceLine(path, line), cells[0]).arg(lines[cells[0]]));
        lines.insert(cells[0], line);
        sources.pronominal.append({cells[0], cells[1]});
    });
}

void readTranslations(const QString &folder, Sources &sources)
{
    const QStringList files = QDir(folder).entryList({QStringLiteral("*.tsv")}, QDir::Files, QDir::Name);
    if (files.isEmpty()) {
        sources.notes << QStringLiteral("no translation files in %1: every translation is empty").arg(folder);
        return;
    }
    QStringList header{QStringLiteral("italian")};
    for (const char *column : translationColumns)
        header << QLatin1String(column);
    for (const QString &name : files) {
        const QString path = QDir(folder).filePath(name);
        bool headerSeen = false;
        readTsv(path, [&](const QStringList &cells, int line) {
            if (!headerSeen) {
                if (cells != header)
                    throw SourceError(QStringLiteral("%1: the header must be: %2").arg(sourceLine(path, line), header.join(u' ')));
                headerSeen = true;
                return;
            }
            if (cells.size() > header.size())
                throw SourceError(QStringLiteral("%1: more than %2 columns").arg(sourceLine(path, line)).arg(header.size()));
            const QString italian = cells[0].trimmed();
            if (italian.isEmpty())
                throw SourceError(QStringLiteral("%1: no italian verb").arg(sourceLine(path, line)));
            if (sources.translations.contains(italian)) {
                const Translation &first = sources.translations[italian];
                throw SourceError(QStringLiteral("%1: '%2' already translated at %3")
                                      .arg(sourceLine(path, line), italian, sourceLine(first.file, first.line)));
            }
            Translation translation;
            translation.file = path;
            translation.line = line;
            for (int c = 1; c < cells.size(); ++c) {
                const QString text = cells[c].trimmed();
                if (!text.isEmpty())
                    translation.text[c - 1] = text;
            }
            sources.translations.insert(italian, translation);
        });
    }
}

void readVerbIds(const QString &path, Sources &sources)
{
    QHash<qint64, QString> owners;
    readTsv(path, [&](const QStringList &cells, int line) {
        bool isNumber = false;
        const qint64 id = cells.size() == 2 ? cells[1].toLongLong(&isNumber) : 0;
        // The app reads ids as signed 32-bit integers.
        if (!isNumber || id <= 0 || id > 0x7fffffff)
            throw SourceError(QStringLiteral("%1: expected italian and a positive id").arg(sourceLine(path, line)));
        if (sources.verbIds.contains(cells[0]) || owners.contains(id))
            throw SourceError(QStringLiteral("%1: '%2' or id %3 appears twice").arg(sourceLine(path, line), cells[0]).arg(id));
        sources.verbIds.insert(cells[0], id);
        owners.insert(id, cells[0]);
    });
}

void readRanks(const QString &path, Sources &sources)
{
    readTsv(path, [&](const QStringList &cells, int line) {
        bool isRank = false;
        const int rank = cells[0].toInt(&isRank);
        if (!isRank || rank != sources.ranked.size() + 1 || cells.size() < 2 || cells.size() > 3)
            throw SourceError(QStringLiteral("%1: expected rank %2, italian [, lemma]")
                                  .arg(sourceLine(path, line)).arg(sources.ranked.size() + 1));
        sources.ranked << cells[1];
    });
}

} // namespace

QStringList variantsOf(const QString &cell)
{
    return cell.split(variantSeparator);
}

QString firstVariant(const QString &cell)
{
    const qsizetype end = cell.indexOf(variantSeparator);
    return end < 0 ? cell : cell.left(end);
}

int tenseSize(Tense tense)
{
    return tenseSizes[tense];
}

QString tenseTag(Tense tense)
{
    return QLatin1String(tenseTags[tense]);
}

Tense tenseFromTag(const QString &tag)
{
    for (int t = 0; t < TenseCount; ++t) {
        if (tag == QLatin1String(tenseTags[t]))
            return Tense(t);
    }
    return TenseCount;
}

void readTsv(const QString &path, const std::function<void(const QStringList &, int)> &visit)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        throw SourceError(QStringLiteral("%1: cannot open: %2").arg(path, file.errorString()));
    QTextStream in(&file);
    in.setEncoding(QStringConverter::Utf8);
    int number = 0;
    while (!in.atEnd()) {
        QString line = in.readLine();
        ++number;
        if (line.endsWith(u'\r'))
            line.chop(1);
        if (line.trimmed().isEmpty() || line.startsWith(u'#'))
            continue;
        visit(line.split(u'\t'), number);
    }
}

QString sourceLine(const QString &path, int line)
{
    return QStringLiteral("%1:%2").arg(QFileInfo(path).fileName()).arg(line);
}

bool isWordForm(const QString &form)
{
    return formPattern.match(form).hasMatch();
}

QString infinitiveOf(const QString &key)
{
    static const QString senseNumbers = QStringLiteral("¹²³");
    return !key.isEmpty() && senseNumbers.contains(key.back()) ? key.chopped(1) : key;
}

Sources readSources(const QString &folder)
{
    Sources sources;
    const QDir dir(folder);
    readForms(dir.filePath(QStringLiteral("forms.tsv")), sources);
    const QString derived = dir.filePath(QStringLiteral("derived.tsv"));
    if (QFileInfo::exists(derived))
        sources.derivedVerbs = addDerivedVerbs(derived, sources);

    const QString auxiliaries = dir.filePath(QStringLiteral("auxiliaries.tsv"));
    if (QFileInfo::exists(auxiliaries))
        readAuxiliaries(auxiliaries, sources);
    else
        sources.notes << QStringLiteral("auxiliaries.tsv is absent: every verb takes avere");

    const QString pronominal = dir.filePath(QStringLiteral("pronominal.tsv"));
    if (QFileInfo::exists(pronominal))
        readPronominal(pronominal, sources);
    else
        sources.notes << QStringLiteral("pronominal.tsv is absent: no pronominal verbs");

    readTranslations(dir.filePath(QStringLiteral("translations")), sources);

    const QString ranks = dir.filePath(QStringLiteral("frequency.tsv"));
    if (QFileInfo::exists(ranks))
        readRanks(ranks, sources);

    const QString ids = dir.filePath(QStringLiteral("verb-ids.tsv"));
    if (QFileInfo::exists(ids))
        readVerbIds(ids, sources);
    return sources;
}

QStringList readFrequencyList(const QString &path)
{
    QStringList lemmas;
    if (path.isEmpty() || !QFileInfo::exists(path))
        return lemmas;
    readTsv(path, [&](const QStringList &cells, int) {
        bool isRank = false;
        cells[0].toInt(&isRank);
        if (isRank && cells.size() >= 2)
            lemmas << cells[1].trimmed();
    });
    return lemmas;
}
