// norvella-builddb: builds the master verbs.db from the text sources in
// resources/verbs. Malformed or inconsistent sources stop the build with a message.

#include "FormRules.h"
#include "IrregularMarks.h"
#include "MasterWriter.h"
#include "Paradigm.h"
#include "Report.h"
#include "Sources.h"
#include "Translations.h"
#include "Usage.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QTextStream>

#include <exception>

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("Builds the master verb database from resources/verbs."));
    parser.addHelpOption();
    const QCommandLineOption sourcesOption(QStringLiteral("sources"), QStringLiteral("The resources/verbs folder."),
                                           QStringLiteral("folder"));
    const QCommandLineOption outputOption(QStringLiteral("output"), QStringLiteral("The database to write."),
                                          QStringLiteral("file"));
    const QCommandLineOption frequencyOption(QStringLiteral("frequency"),
                                             QStringLiteral("Verb frequency list for the report (optional)."),
                                             QStringLiteral("file"));
    parser.addOptions({sourcesOption, outputOption, frequencyOption});
    parser.process(app);

    QTextStream err(stderr);
    if (!parser.isSet(sourcesOption) || !parser.isSet(outputOption)) {
        err << "norvella-builddb: --sources and --output are required\n";
        return 2;
    }
    const QString folder = parser.value(sourcesOption);
    const QString output = parser.value(outputOption);
    // Written beside the target and renamed at the end, so that a failed build
    // never leaves a plausible but incomplete database behind.
    const QString partial = output + QStringLiteral(".partial");

    try {
        QFile schema(QDir(folder).filePath(QStringLiteral("schema.sql")));
        if (!schema.open(QIODevice::ReadOnly))
            throw SourceError(QStringLiteral("%1: cannot open: %2").arg(schema.fileName(), schema.errorString()));
        const QString schemaSql = QString::fromUtf8(schema.readAll());

        Sources sources = readSources(folder);
        const FormRules formRules = readFormRules(folder);
        const RuleReport rules = applyFormRules(formRules, sources);
        const UsageRules usageRules = readUsageRules(folder);
        UsageReport usage;
        addHomographs(usageRules, sources, usage);
        Entries entries = buildEntries(sources);
        applyUsage(usageRules, formRules, sources, entries, usage);
        const IrregularMarks marks = markIrregular(entries, sources, formRules);
        const TranslationPlan translations = planTranslations(entries, sources);
        QDir().mkpath(QFileInfo(output).absolutePath());
        writeMaster(partial, schemaSql, entries, translations.byVerb, marks, sources.ranked);
        QFile::remove(output);
        if (!QFile::rename(partial, output))
            throw std::runtime_error("cannot rename " + partial.toStdString() + " to " + output.toStdString());

        QTextStream out(stdout);
        out << "norvella-builddb: wrote " << output << '\n';
        printReport(out, entries, sources, rules, usage, translations,
                    readFrequencyList(parser.value(frequencyOption)), output);
        printIrregular(out, marks);
    } catch (const std::exception &error) {
        // A stale master must not survive a failed build: tests would check old data.
        QFile::remove(partial);
        QFile::remove(output);
        err << "norvella-builddb: error: " << error.what() << '\n';
        return 1;
    }
    return 0;
}
