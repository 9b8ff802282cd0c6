#include "CommandLineQuery.h"

#include "ConjugationText.h"
#include "FormAnalysis.h"
#include "VerbStore.h"

#include <QCoreApplication>
#include <QFile>

#include <sqlite3.h>

#include <cstdio>
#include <cstring>
#include <optional>

namespace norvella {

namespace {

struct Query
{
    enum Kind { Analyse, Conjugate } kind;
    std::optional<QString> value;
};

std::optional<Query> queryIn(int argc, char **argv)
{
    const std::pair<const char *, Query::Kind> options[] = {{"--analyse", Query::Analyse},
                                                            {"--conjugate", Query::Conjugate}};
    for (int i = 1; i < argc; ++i) {
        for (const auto &[name, kind] : options) {
            const size_t length = std::strlen(name);
            if (std::strcmp(argv[i], name) == 0)
                return Query{kind, i + 1 < argc ? std::optional(QString::fromLocal8Bit(argv[i + 1])) : std::nullopt};
            if (std::strncmp(argv[i], name, length) == 0 && argv[i][length] == '=')
                return Query{kind, QString::fromLocal8Bit(argv[i] + length + 1)};
        }
    }
    return std::nullopt;
}

void print(FILE *stream, const QString &text)
{
    const QByteArray utf8 = text.toUtf8();
    std::fwrite(utf8.constData(), 1, size_t(utf8.size()), stream);
}

int analyse(sqlite3 *db, const QString &text)
{
    QString error;
    const auto analysis = FormAnalysis::build(db, &error);
    if (!analysis) {
        print(stderr, QStringLiteral("norvella: the verb database cannot be read: %1\n").arg(error));
        return 1;
    }
    const QList<FormReading> readings = analysis->analyse(text);
    if (readings.isEmpty()) {
        print(stderr, QStringLiteral("norvella: \"%1\" is not a form of any verb in the database\n").arg(text.trimmed()));
        return 1;
    }
    const QString shown = text.simplified();
    for (const FormReading &reading : readings) {
        print(stdout, QStringList{shown, reading.infinitive, FormAnalysis::moodTag(reading.type),
                                  FormAnalysis::tenseTag(reading.type), FormAnalysis::personTag(reading)}
                              .join(u'\t') + u'\n');
    }
    return 0;
}

int conjugate(sqlite3 *db, const QString &verb)
{
    const ConjugationText result = conjugationText(db, verb);
    if (!result.error.isEmpty()) {
        print(stderr, QStringLiteral("norvella: the verb database cannot be read: %1\n").arg(result.error));
        return 1;
    }
    if (!result.found) {
        print(stderr, QStringLiteral("norvella: no verb \"%1\" in the database\n").arg(verb.trimmed()));
        return 1;
    }
    print(stdout, result.text);
    return 0;
}

} // namespace

int runCommandLineQuery(int argc, char **argv)
{
    const std::optional<Query> query = queryIn(argc, argv);
    if (!query)
        return -1;
    // Only for the application folder the master is found in; no GUI platform.
    QCoreApplication app(argc, argv);
    const char *name = query->kind == Query::Analyse ? "--analyse" : "--conjugate";
    if (!query->value || query->value->trimmed().isEmpty()) {
        std::fprintf(stderr, "norvella: %s wants a text, e.g. %s\n", name,
                     query->kind == Query::Analyse ? "--analyse andavamo" : "--conjugate venire");
        return 2;
    }
    const QString master = VerbStore::findMasterDatabase();
    sqlite3 *db = nullptr;
    if (master.isEmpty()
        || sqlite3_open_v2(QFile::encodeName(master).constData(), &db, SQLITE_OPEN_READONLY, nullptr) != SQLITE_OK) {
        sqlite3_close(db);
        std::fprintf(stderr, "norvella: the verb database verbs.db is missing or cannot be opened\n");
        return 1;
    }
    const int status = query->kind == Query::Analyse ? analyse(db, *query->value) : conjugate(db, *query->value);
    sqlite3_close(db);
    return status;
}

} // namespace norvella
