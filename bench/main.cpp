// norvella-bench: times the app's hot paths on the real verb database and
// prints a table plus one "bench <name> <value> <unit>" line per figure.
// It reports and does not judge: a figure over its target still exits 0;
// only a figure that cannot be measured makes the run fail.
#include "CrashLog.h"
#include "Database.h"
#include "DatabaseQueue.h"
#include "FavouritesTableViewController.h"
#include "FormAnalysis.h"
#include "HistoryTableViewController.h"
#include "SearchFormsModel.h"
#include "SearchResultsTableViewController.h"
#include "Settings.h"
#include "Strings.h"
#include "Verb.h"
#include "VerbDetailTableViewController.h"
#include "VerbExport.h"
#include "VerbListTableViewController.h"
#include "VerbLookup.h"
#include "VerbRepository.h"
#include "VerbStore.h"
#include "VerbViewBookkeeping.h"
#include "PracticeBench.h"

#include <QCommandLineParser>
#include <QDateTime>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QGuiApplication>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QThread>
#include <QThreadPool>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <vector>

#include <fcntl.h>
#include <unistd.h>
#include <optional>

using namespace norvella;

namespace {

// ---- Figures and the report -------------------------------------------------

double percentile(QList<double> values, double fraction)
{
    if (values.isEmpty())
        return qQNaN();
    std::sort(values.begin(), values.end());
    // Nearest rank: the value below which that fraction of the samples lies.
    const auto rank = qsizetype(std::ceil(fraction * double(values.size())));
    return values.at(std::clamp<qsizetype>(rank - 1, 0, values.size() - 1));
}

double milliseconds(const QElapsedTimer &timer)
{
    return double(timer.nsecsElapsed()) / 1e6;
}

struct Target
{
    enum class Kind { None, AtMost, AtLeast };
    Kind kind = Kind::None;
    double bound = 0;

    static Target atMost(double bound) { return {Kind::AtMost, bound}; }
    static Target atLeast(double bound) { return {Kind::AtLeast, bound}; }
    QString text(const QString &unit) const
    {
        if (kind == Kind::None)
            return {};
        return QString::fromUtf8(kind == Kind::AtMost ? "≤ " : "≥ ") + QString::number(bound) + QLatin1Char(' ')
                + unit;
    }
    std::optional<bool> met(double value) const
    {
        if (kind == Kind::None)
            return std::nullopt;
        return kind == Kind::AtMost ? value <= bound : value >= bound;
    }
};

struct Figure
{
    QString name;
    double value;
    QString unit;
    Target target;
    QString note;
};

QString formatValue(double value, const QString &unit)
{
    if (std::isnan(value))
        return QStringLiteral("n/a");
    if (unit == QLatin1String("count"))
        return QString::number(qint64(std::llround(value)));
    if (std::abs(value) < 10)
        return QString::number(value, 'f', 2);
    return QString::number(value, 'f', 1);
}

class Report
{
public:
    void section(const QString &title) { m_rows.append({true, title, {}}); }
    void add(const QString &name, double value, const QString &unit, Target target = {}, const QString &note = {})
    {
        m_rows.append({false, {}, Figure{name, value, unit, target, note}});
        std::fprintf(stderr, "  %s %s %s\n", qPrintable(name), qPrintable(formatValue(value, unit)), qPrintable(unit));
    }
    // Something could not be measured: the run ends non-zero.
    void fail(const QString &what)
    {
        m_failures << what;
        std::fprintf(stderr, "norvella-bench: %s\n", qPrintable(what));
    }
    bool failed() const { return !m_failures.isEmpty(); }

    void print(const QStringList &header) const
    {
        for (const QString &line : header)
            std::printf("%s\n", qPrintable(line));
        std::printf("\n%-46s %12s  %-10s %-6s %s\n", "figure", "value", "target", "", "note");
        int met = 0;
        int missed = 0;
        for (const Row &row : m_rows) {
            if (row.isSection) {
                std::printf("\n%s\n", qPrintable(row.title));
                continue;
            }
            const Figure &f = row.figure;
            const auto verdict = f.target.met(f.value);
            const QString value = formatValue(f.value, f.unit) + QLatin1Char(' ') + f.unit;
            const QString status = !verdict ? QString() : *verdict ? QStringLiteral("ok") : QStringLiteral("MISS");
            if (verdict)
                (*verdict ? met : missed)++;
            std::printf("  %-44s %12s  %-10s %-6s %s\n", qPrintable(f.name), qPrintable(value),
                        qPrintable(f.target.text(f.unit)), qPrintable(status), qPrintable(f.note));
        }
        std::printf("\ntargets met: %d, missed: %d\n", met, missed);
        for (const QString &failure : m_failures)
            std::printf("NOT MEASURED: %s\n", qPrintable(failure));
        std::printf("\n");
        for (const Row &row : m_rows) {
            if (!row.isSection)
                std::printf("bench %s %s %s\n", qPrintable(row.figure.name),
                            qPrintable(formatValue(row.figure.value, row.figure.unit)), qPrintable(row.figure.unit));
        }
        std::fflush(stdout);
    }

private:
    struct Row
    {
        bool isSection;
        QString title;
        Figure figure;
    };
    QList<Row> m_rows;
    QStringList m_failures;
};

void progress(const QString &text)
{
    static QElapsedTimer sinceStart = [] {
        QElapsedTimer timer;
        timer.start();
        return timer;
    }();
    std::fprintf(stderr, "[%6.1fs] %s\n", double(sinceStart.elapsed()) / 1000.0, qPrintable(text));
}

QStringList readLines(const QString &resource)
{
    QFile file(resource);
    QStringList lines;
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text))
        return lines;
    for (const QString &line : QString::fromUtf8(file.readAll()).split(QLatin1Char('\n'))) {
        if (!line.isEmpty() && !line.startsWith(QLatin1Char('#')))
            lines << line.normalized(QString::NormalizationForm_C);
    }
    return lines;
}

// The one-minute load average: other work on the machine skews every figure.
QString loadAverage()
{
    QFile file(QStringLiteral("/proc/loadavg"));
    if (!file.open(QIODevice::ReadOnly))
        return QStringLiteral("?");
    return QString::fromLatin1(file.readAll()).section(QLatin1Char(' '), 0, 0);
}

int scalarCount(const QString &sql, DatabaseQueue &queue)
{
    int value = -1;
    queue.inDatabase([&](Database &db) {
        if (auto rows = db.executeQuery(sql)) {
            if (rows->next())
                value = rows->intForColumn(QStringLiteral("n"));
            rows->close();
        }
    });
    return value;
}

// ---- Search ------------------------------------------------------------------

struct Combination
{
    bool english;
    bool anywhere;
    bool conjugations;
    bool sortByItalian;

    static Combination number(int n) { return {bool(n & 8), bool(n & 4), bool(n & 2), bool(n & 1)}; }
    QString name() const
    {
        return QString(english ? "eng" : "noeng") + (anywhere ? "-anywhere" : "-start")
                + (conjugations ? "-conj" : "-noconj") + (sortByItalian ? "-byit" : "-bytr");
    }
    void apply(Settings &settings) const
    {
        settings.setBool(SettingsKeys::IncludeEnglish, english);
        settings.setString(SettingsKeys::SearchFrom, anywhere ? QStringLiteral("A") : QStringLiteral("S"));
        settings.setBool(SettingsKeys::IncludeConjugations, conjugations);
        settings.setBool(SettingsKeys::SortByLang, sortByItalian);
    }
};

using ResultKey = QList<QPair<qint64, bool>>;

ResultKey resultKey(const SearchResultsTableViewController &controller)
{
    ResultKey key;
    key.reserve(controller.verbs().size());
    for (const VerbPtr &verb : controller.verbs())
        key.append({verb->id, verb->isFavourite});
    return key;
}

// The statement reads every form of every verb once conjugations are
// searched (about half a second a keystroke here), so it runs on every
// `stride`-th keystroke only; the offset moves with the combination so the
// combinations together cover different keystrokes.
struct Sampling
{
    int stride;
    int offset;
    bool contains(int keystroke) const { return keystroke % stride == offset; }
};

constexpr int StatementSamplesWithConjugations = 5;
constexpr int StatementStrideWithoutConjugations = 2;
// An index run that overruns this per combination falls back to the
// statement's keystrokes; an index within the targets needs a fraction of it.
constexpr double IndexBudgetMs = 4000;
// The index has to beat the statement 20-fold only where the statement is
// slow enough for the difference to be seen: a frame or more.
constexpr double RatioJudgedFromMs = 16;

void benchSearch(Report &report, const std::shared_ptr<DatabaseQueue> &queue, Settings &settings,
                 const QStringList &queries)
{
    QStringList keystrokes;
    for (const QString &query : queries) {
        for (qsizetype length = 1; length <= query.size(); ++length)
            keystrokes << query.left(length);
    }
    const int keystrokeCount = int(keystrokes.size());

    SearchResultsTableViewController index;
    index.setStrategy(SearchResultsTableViewController::Strategy::Index);
    SearchResultsTableViewController statement;
    statement.setStrategy(SearchResultsTableViewController::Strategy::Statement);
    for (SearchResultsTableViewController *controller : {&index, &statement}) {
        controller->setSettings(&settings);
        controller->setQueue(queue);
    }

    report.section(QStringLiteral("Search: %1 queries, %2 keystrokes, 16 setting combinations (index = the app's "
                                  "search, literal = the reference statement)")
                           .arg(queries.size())
                           .arg(keystrokeCount));
    // The app builds the index in the background at launch; keystrokes are
    // timed once it is there, as they would be a few seconds after launch.
    QElapsedTimer buildTimer;
    buildTimer.start();
    const bool indexReady = index.waitForIndex();
    report.add(QStringLiteral("search.index.build"), milliseconds(buildTimer), QStringLiteral("ms"), Target::atMost(700),
               QStringLiteral("in the background after launch"));
    if (!indexReady)
        report.fail(QStringLiteral("the search index could not be built: the index figures would be the statement's"));

    QList<double> allIndex;
    QList<double> allStatement;
    int mismatches = 0;
    int compared = 0;
    double minimumRatio = qInf();
    QStringList fallbacks;
    const int conjugationStride = std::max(1, keystrokeCount / StatementSamplesWithConjugations);

    for (int n = 0; n < 16; ++n) {
        const Combination combination = Combination::number(n);
        combination.apply(settings);
        const Sampling sampling = combination.conjugations
                ? Sampling{conjugationStride, (n * 11) % conjugationStride}
                : Sampling{StatementStrideWithoutConjugations, n % StatementStrideWithoutConjugations};
        progress(QStringLiteral("search %1/16 %2").arg(n + 1).arg(combination.name()));

        QList<double> indexTimes;
        QList<double> pairedIndex;
        QList<double> pairedStatement;
        QMap<int, ResultKey> indexResults;
        QMap<int, double> indexTimeAt;
        QElapsedTimer budget;
        budget.start();
        bool overBudget = false;
        for (int k = 0; k < keystrokeCount; ++k) {
            if (!overBudget && double(budget.elapsed()) > IndexBudgetMs) {
                overBudget = true;
                fallbacks << combination.name();
            }
            if (overBudget && !sampling.contains(k))
                continue;
            QElapsedTimer timer;
            timer.start();
            index.search(keystrokes.at(k));
            const double ms = milliseconds(timer);
            indexTimes << ms;
            if (sampling.contains(k)) {
                indexResults.insert(k, resultKey(index));
                indexTimeAt.insert(k, ms);
            }
        }
        QList<double> statementTimes;
        for (int k = 0; k < keystrokeCount; ++k) {
            if (!sampling.contains(k))
                continue;
            QElapsedTimer timer;
            timer.start();
            statement.search(keystrokes.at(k));
            const double ms = milliseconds(timer);
            statementTimes << ms;
            pairedStatement << ms;
            pairedIndex << indexTimeAt.value(k);
            ++compared;
            if (resultKey(statement) != indexResults.value(k))
                ++mismatches;
        }
        allIndex << indexTimes;
        allStatement << statementTimes;

        const QString name = combination.name();
        const QString indexNote = QStringLiteral("%1 keystrokes").arg(indexTimes.size());
        const QString statementNote =
                QStringLiteral("%1 keystrokes, 1 in %2").arg(statementTimes.size()).arg(sampling.stride);
        report.add(QStringLiteral("search.p50.") + name, percentile(indexTimes, 0.5), QStringLiteral("ms"), {},
                   indexNote);
        report.add(QStringLiteral("search.p99.") + name, percentile(indexTimes, 0.99), QStringLiteral("ms"),
                   Target::atMost(16), overBudget ? indexNote + QStringLiteral(" (over budget: sampled)") : indexNote);
        report.add(QStringLiteral("search.literal.p50.") + name, percentile(statementTimes, 0.5), QStringLiteral("ms"),
                   {}, statementNote);
        report.add(QStringLiteral("search.literal.p99.") + name, percentile(statementTimes, 0.99), QStringLiteral("ms"),
                   {}, statementNote);
        // Medians over the same keystrokes, so the sampling cannot favour either side.
        const double statementMedian = percentile(pairedStatement, 0.5);
        const double ratio = statementMedian / percentile(pairedIndex, 0.5);
        // A statement that already answers within a frame leaves the index
        // nothing a user could notice: the ratio is shown, not judged.
        const bool judged = statementMedian >= RatioJudgedFromMs;
        if (judged)
            minimumRatio = std::min(minimumRatio, ratio);
        report.add(QStringLiteral("search.literal-ratio.") + name, ratio, QStringLiteral("x"),
                   judged ? Target::atLeast(20) : Target{},
                   judged ? QStringLiteral("literal p50 / index p50, same keystrokes")
                          : QStringLiteral("literal p50 / index p50, same keystrokes; not judged: the literal p50 "
                                           "is under %1 ms")
                                    .arg(RatioJudgedFromMs));
    }

    report.section(QStringLiteral("Search, all combinations"));
    report.add(QStringLiteral("search.p50.all"), percentile(allIndex, 0.5), QStringLiteral("ms"), {},
               QStringLiteral("%1 keystrokes").arg(allIndex.size()));
    report.add(QStringLiteral("search.p99.all"), percentile(allIndex, 0.99), QStringLiteral("ms"), Target::atMost(16),
               QStringLiteral("%1 keystrokes").arg(allIndex.size()));
    report.add(QStringLiteral("search.literal.p50.all"), percentile(allStatement, 0.5), QStringLiteral("ms"), {},
               QStringLiteral("%1 keystrokes").arg(allStatement.size()));
    report.add(QStringLiteral("search.literal.p99.all"), percentile(allStatement, 0.99), QStringLiteral("ms"), {},
               QStringLiteral("%1 keystrokes").arg(allStatement.size()));
    const bool anyJudged = !std::isinf(minimumRatio);
    report.add(QStringLiteral("search.literal-ratio.min"), anyJudged ? minimumRatio : qQNaN(), QStringLiteral("x"),
               anyJudged ? Target::atLeast(20) : Target{},
               QStringLiteral("lowest of the combinations whose literal p50 is %1 ms or more").arg(RatioJudgedFromMs));
    report.add(QStringLiteral("search.compared"), compared, QStringLiteral("count"), {},
               QStringLiteral("keystrokes run by both"));
    report.add(QStringLiteral("search.mismatches"), mismatches, QStringLiteral("count"), Target::atMost(0),
               QStringLiteral("ids, order or favourite flags differ"));
    if (!fallbacks.isEmpty())
        progress(QStringLiteral("index over its %1 ms budget in: %2").arg(IndexBudgetMs).arg(fallbacks.join(", ")));
    if (allIndex.isEmpty() || allStatement.isEmpty())
        report.fail(QStringLiteral("no search keystroke was timed"));
}

// The forms section: its analysis is read once in the background, then every
// keystroke looks the text up and refills the section, as the search does.
void benchForms(Report &report, const std::shared_ptr<DatabaseQueue> &queue, Settings &settings,
                const QStringList &queries, const QStringList &forms)
{
    QStringList keystrokes;
    for (const QString &text : queries + forms) {
        for (qsizetype length = 1; length <= text.size(); ++length)
            keystrokes << text.left(length);
    }
    report.section(QStringLiteral("Forms section: %1 keystrokes of %2 queries and %3 typed forms")
                           .arg(keystrokes.size())
                           .arg(queries.size())
                           .arg(forms.size()));
    QElapsedTimer buildTimer;
    buildTimer.start();
    QString error;
    const std::unique_ptr<FormAnalysis> analysis = FormAnalysis::fromFile(queue->path(), &error);
    report.add(QStringLiteral("search.forms.build"), milliseconds(buildTimer), QStringLiteral("ms"), {},
               QStringLiteral("in the background, at the first search"));
    if (!analysis) {
        report.fail(QStringLiteral("the form analysis could not be read: ") + error);
        return;
    }
    const bool italianNames = Preferences::showTranslated(settings);
    SearchFormsModel section;
    QList<double> times;
    int readings = 0;
    // Three rounds, so the figure is not one cold pass.
    for (int round = 0; round < 3; ++round) {
        for (const QString &keystroke : std::as_const(keystrokes)) {
            QElapsedTimer timer;
            timer.start();
            section.setReadings(analysis->analyse(keystroke.trimmed(), FormAnalysis::Imperatives::AsShown),
                                italianNames);
            times << double(timer.nsecsElapsed()) / 1e3;
            readings += section.count();
        }
    }
    const QString note = QStringLiteral("%1 timings, %2 rows shown in all").arg(times.size()).arg(readings);
    report.add(QStringLiteral("search.forms.p50"), percentile(times, 0.5), QStringLiteral("us"), {}, note);
    report.add(QStringLiteral("search.forms.p99"), percentile(times, 0.99), QStringLiteral("us"),
               Target::atMost(1000), note);
    report.add(QStringLiteral("search.forms.max"), *std::max_element(times.cbegin(), times.cend()),
               QStringLiteral("us"), {}, note);
}

// Quitting while the index builds: the search screen goes and the thread pool
// waits for the build, as QCoreApplication does on the way out. The quits are
// spread over a whole build, so every phase of it gets its turn.
void benchIndexQuit(Report &report, const std::shared_ptr<DatabaseQueue> &queue, Settings &settings)
{
    auto makeSearch = [&] {
        auto search = std::make_unique<SearchResultsTableViewController>();
        search->setSettings(&settings);
        search->setQueue(queue);
        return search;
    };
    QElapsedTimer buildTimer;
    buildTimer.start();
    if (!makeSearch()->waitForIndex()) {
        report.fail(QStringLiteral("the search index could not be built: no quit to time during its build"));
        return;
    }
    const qint64 buildUs = buildTimer.nsecsElapsed() / 1000;
    report.section(QStringLiteral("Quitting while the search index builds"));
    constexpr int Quits = 20;
    QList<double> waits;
    for (int i = 0; i < Quits; ++i) {
        auto search = makeSearch();
        search->prepareIndex();
        QThread::usleep(quint64(buildUs * i / Quits));
        QElapsedTimer timer;
        timer.start();
        search.reset();
        QThreadPool::globalInstance()->waitForDone();
        waits << milliseconds(timer);
    }
    const QString note = QStringLiteral("%1 quits spread over a %2 ms build").arg(Quits).arg(buildUs / 1000);
    report.add(QStringLiteral("search.index.quit.p50"), percentile(waits, 0.5), QStringLiteral("ms"), {}, note);
    report.add(QStringLiteral("search.index.quit.max"), *std::max_element(waits.cbegin(), waits.cend()),
               QStringLiteral("ms"), Target::atMost(50), note);
}

// ---- Lists, conjugation, export ------------------------------------------------

template<typename Reload>
QList<double> timeRepeatedly(int times, Reload reload)
{
    QList<double> samples;
    for (int i = 0; i < times; ++i) {
        QElapsedTimer timer;
        timer.start();
        reload();
        samples << milliseconds(timer);
    }
    return samples;
}

void addPercentiles(Report &report, const QString &name, const QList<double> &samples, double target,
                    const QString &note)
{
    report.add(name + QStringLiteral(".p50"), percentile(samples, 0.5), QStringLiteral("ms"), {}, note);
    report.add(name + QStringLiteral(".p99"), percentile(samples, 0.99), QStringLiteral("ms"), Target::atMost(target),
               note);
}

// Favourites marked the way the conjugation screen's star writes them,
// spread over the whole list.
bool markFavourites(DatabaseQueue &queue, int count)
{
    QList<qint64> ids;
    bool ok = true;
    queue.inDatabase([&](Database &db) {
        if (auto rows = db.executeQuery(QStringLiteral("SELECT _id FROM verb ORDER BY simplified_italian, _id"))) {
            QList<qint64> all;
            while (rows->next())
                all << rows->longLongIntForColumn(QStringLiteral("_id"));
            rows->close();
            for (int i = 0; i < count && !all.isEmpty(); ++i)
                ids << all.at(qsizetype(i) * all.size() / count);
        }
        ok = db.executeUpdate(QStringLiteral("BEGIN"));
        for (qint64 id : std::as_const(ids))
            ok = ok && db.executeUpdate(QStringLiteral("INSERT INTO favourite(verbid) VALUES(?)"), {id});
        ok = db.executeUpdate(QStringLiteral("COMMIT")) && ok;
        db.close();
    });
    return ok && ids.size() == count;
}

void benchConjugation(Report &report, const std::shared_ptr<DatabaseQueue> &queue, Settings &settings,
                      const QStringList &verbs, const QString &name, double target, const QString &condition)
{
    report.section(QStringLiteral("Conjugation screen: %1 everyday verbs, each opened once%2").arg(verbs.size()).arg(condition));
    QList<double> loads;
    QList<double> presentations;
    QStringList missing;
    for (const QString &italian : verbs) {
        // What a list row hands over: the row's fields, no forms yet.
        const VerbPtr verb = verbByInfinitive(*queue, italian);
        if (!verb) {
            missing << italian;
            continue;
        }
        // A fresh screen each time, so nothing of the last verb is reused.
        VerbDetailTableViewController detail;
        detail.setSettings(settings);
        detail.setLaunchArguments({});
        detail.setQueue(queue);
        detail.setSelectedVerb(verb);
        QElapsedTimer timer;
        timer.start();
        detail.loadConjugations();
        loads << milliseconds(timer);
        timer.restart();
        detail.refreshConjugations();
        presentations << milliseconds(timer);
        if (verb->infinito.isEmpty() && verb->indicativoPresente.isEmpty())
            missing << italian + QStringLiteral(" (no forms)");
    }
    if (!missing.isEmpty())
        report.fail(QStringLiteral("verbs that could not be loaded: ") + missing.join(QStringLiteral(", ")));
    addPercentiles(report, name + QStringLiteral(".load"), loads, target,
                   QStringLiteral("forms read + history written, %1 verbs%2").arg(loads.size()).arg(condition));
    report.add(name + QStringLiteral(".present.p50"), percentile(presentations, 0.5), QStringLiteral("ms"), {},
               QStringLiteral("table and grid models rebuilt"));
    report.add(name + QStringLiteral(".present.p99"), percentile(presentations, 0.99), QStringLiteral("ms"), {},
               QStringLiteral("table and grid models rebuilt"));
}

// Another process writing to the same disk and syncing after every write, as
// other apps on a phone do while the user taps.
class DiskLoad
{
public:
    DiskLoad(const QString &file)
    {
        m_process.start(QCoreApplication::applicationFilePath(), {QStringLiteral("--disk-load"), file});
        m_process.waitForStarted();
        // Let it reach its steady state before anything is timed.
        QThread::msleep(300);
    }
    ~DiskLoad()
    {
        m_process.kill();
        m_process.waitForFinished();
    }
    bool running() const { return m_process.state() == QProcess::Running; }

private:
    QProcess m_process;
};

[[noreturn]] void runDiskLoad(const char *path)
{
    const int fd = ::open(path, O_CREAT | O_WRONLY | O_TRUNC, 0600);
    if (fd < 0)
        std::exit(1);
    const std::vector<char> chunk(256 * 1024, 'x');
    for (;;) {
        for (int i = 0; i < 32; ++i) {
            if (::write(fd, chunk.data(), chunk.size()) < 0)
                std::exit(1);
            ::fsync(fd);
        }
        if (::ftruncate(fd, 0) != 0 || ::lseek(fd, 0, SEEK_SET) != 0)
            std::exit(1);
    }
}



void benchLists(Report &report, const std::shared_ptr<DatabaseQueue> &queue, Settings &settings)
{
    const int verbCount = scalarCount(QStringLiteral("SELECT count(*) AS n FROM verb"), *queue);
    const int favourites = scalarCount(QStringLiteral("SELECT count(*) AS n FROM favourite"), *queue);
    const int history = scalarCount(QStringLiteral("SELECT count(*) AS n FROM history"), *queue);
    report.section(QStringLiteral("Home screen lists: %1 verbs, %2 favourites, %3 history entries")
                           .arg(verbCount)
                           .arg(favourites)
                           .arg(history));
    if (favourites != 100)
        report.fail(QStringLiteral("expected 100 favourites, found %1").arg(favourites));
    if (history != 51)
        report.fail(QStringLiteral("expected 51 history entries, found %1").arg(history));

    // Reloads after launch read the search index the app builds in the
    // background; the first one, before it is ready, runs the statement. The
    // list and search share one repository, as they do in the app, so the
    // list reads the index the search waited for.
    VerbRepository repository(queue, &SearchIndex::build);
    SearchResultsTableViewController search;
    search.setSettings(&settings);
    search.setRepository(&repository);
    if (!search.waitForIndex())
        report.fail(QStringLiteral("the search index could not be built for the list"));
    for (const bool fromIndex : {true, false}) {
        VerbListTableViewController list;
        list.setReadsFromIndex(fromIndex);
        list.setSettings(&settings);
        list.setRepository(&repository);
        list.viewDidLoad();
        const QList<double> listTimes = timeRepeatedly(20, [&] { list.reload(); });
        if (list.rowCount() != verbCount)
            report.fail(
                    QStringLiteral("the alphabetical list shows %1 of %2 verbs").arg(list.rowCount()).arg(verbCount));
        if (fromIndex) {
            addPercentiles(report, QStringLiteral("list.reload"), listTimes, 16,
                           QStringLiteral("%1 rows, 20 reloads").arg(list.rowCount()));
        } else {
            report.add(QStringLiteral("list.reload.statement.p50"), percentile(listTimes, 0.5), QStringLiteral("ms"), {},
                       QStringLiteral("launch, before the index is ready"));
        }
    }

    FavouritesTableViewController favouriteList;
    favouriteList.setSettings(&settings);
    favouriteList.setQueue(queue);
    favouriteList.viewDidLoad();
    const QList<double> favouriteTimes = timeRepeatedly(100, [&] { favouriteList.reload(); });
    if (favouriteList.rowCount() != favourites)
        report.fail(QStringLiteral("the favourites list shows %1 rows").arg(favouriteList.rowCount()));
    addPercentiles(report, QStringLiteral("favourites.reload"), favouriteTimes, 16,
                   QStringLiteral("%1 rows, 100 reloads").arg(favouriteList.rowCount()));

    HistoryTableViewController historyList;
    historyList.setSettings(&settings);
    historyList.setQueue(queue);
    historyList.viewDidLoad();
    const QList<double> historyTimes = timeRepeatedly(100, [&] { historyList.reload(); });
    if (historyList.rowCount() != history)
        report.fail(QStringLiteral("the history list shows %1 rows").arg(historyList.rowCount()));
    addPercentiles(report, QStringLiteral("history.reload"), historyTimes, 16,
                   QStringLiteral("%1 rows, 100 reloads").arg(historyList.rowCount()));
}

void benchExport(Report &report, const std::shared_ptr<DatabaseQueue> &queue, Settings &settings)
{
    report.section(QStringLiteral("Export"));
    const VerbPtr verb = verbByInfinitive(*queue, QStringLiteral("essere"));
    bool read = false;
    if (verb)
        queue->inDatabase([&](Database &db) { read = VerbViewBookkeeping::readConjugations(db, *verb); });
    if (!verb || !read) {
        report.fail(QStringLiteral("\"essere\" could not be read for the export"));
        return;
    }
    const VerbExport exporter(settings);
    bool rendered = true;
    const QList<double> times = timeRepeatedly(20, [&] {
        const VerbExport::Result result = exporter.render(*verb);
        rendered = rendered && result.status == VerbExport::Status::Rendered && !result.documents.html.isEmpty()
                && !result.documents.text.isEmpty();
    });
    if (!rendered)
        report.fail(QStringLiteral("the export of \"essere\" did not render"));
    addPercentiles(report, QStringLiteral("export.render"), times, 30,
                   QStringLiteral("\"essere\", HTML and text, 20 renders"));
}

// ---- The app as a process ---------------------------------------------------------

struct AppRun
{
    bool ok = false;
    double lineMs = 0; // wall time from start to the awaited line
    QString line;
    QString output;
};

// Runs the app until it prints a line starting with `awaited`. With
// `stopAtLine` the process is then killed: work it still has in hand (the
// search index it builds in the background) is no part of the figure.
AppRun runApp(const QString &program, const QStringList &arguments, const QProcessEnvironment &environment,
              const QString &awaited, int timeoutMs, bool stopAtLine)
{
    AppRun run;
    QProcess process;
    process.setProcessEnvironment(environment);
    process.setProcessChannelMode(QProcess::SeparateChannels);
    QByteArray stdoutText;
    QElapsedTimer wall;
    wall.start();
    process.start(program, arguments);
    if (!process.waitForStarted(timeoutMs)) {
        run.output = process.errorString();
        return run;
    }
    while (run.line.isEmpty() && wall.elapsed() < timeoutMs) {
        if (!process.waitForReadyRead(int(std::max<qint64>(1, timeoutMs - wall.elapsed())))) {
            if (process.state() == QProcess::NotRunning)
                break;
            continue;
        }
        stdoutText += process.readAllStandardOutput();
        for (const QByteArray &line : stdoutText.split('\n')) {
            if (line.startsWith(awaited.toUtf8())) {
                run.lineMs = milliseconds(wall);
                run.line = QString::fromUtf8(line).trimmed();
                break;
            }
        }
    }
    const bool killed = stopAtLine && !run.line.isEmpty() && process.state() != QProcess::NotRunning;
    if (killed || !process.waitForFinished(std::max(1000, int(timeoutMs - wall.elapsed())))) {
        process.kill();
        process.waitForFinished(5000);
    }
    stdoutText += process.readAllStandardOutput();
    run.output = QString::fromUtf8(stdoutText + process.readAllStandardError()).trimmed();
    run.ok = !run.line.isEmpty()
            && (killed || (process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0));
    return run;
}

QProcessEnvironment appEnvironment(const QString &home, const QString &master)
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
    environment.insert(QStringLiteral("QT_QUICK_BACKEND"), QStringLiteral("software"));
    environment.insert(QStringLiteral("HOME"), home);
    environment.insert(QStringLiteral("XDG_CONFIG_HOME"), home + QStringLiteral("/config"));
    environment.insert(QStringLiteral("XDG_DATA_HOME"), home + QStringLiteral("/data"));
    environment.insert(QStringLiteral("XDG_CACHE_HOME"), home + QStringLiteral("/cache"));
    environment.insert(QStringLiteral("XDG_STATE_HOME"), home + QStringLiteral("/state"));
    environment.insert(QStringLiteral("XDG_RUNTIME_DIR"), home + QStringLiteral("/runtime"));
    environment.insert(QStringLiteral("NORVELLA_MASTER_DB"), master);
    return environment;
}

void benchLaunch(Report &report, const QString &app, const QString &master, const QString &home, int warmRuns)
{
    report.section(QStringLiteral("Launch to the first frame (norvella --first-frame --size 390x844, offscreen)"));
    QDir().mkpath(home + QStringLiteral("/runtime"));
    QFile::setPermissions(home + QStringLiteral("/runtime"), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    const QProcessEnvironment environment = appEnvironment(home, master);
    const QStringList arguments{QStringLiteral("--first-frame"), QStringLiteral("--size"), QStringLiteral("390x844")};

    progress(QStringLiteral("launch 1 (first launch, copies the database)"));
    const AppRun first = runApp(app, arguments, environment, QStringLiteral("first-frame"), 30000, true);
    if (!first.ok) {
        report.fail(QStringLiteral("the first launch did not report a frame: ") + first.output.left(2000));
        return;
    }
    if (!QFileInfo::exists(home + QStringLiteral("/data/Norvella/norvella/verbs.db")))
        report.fail(QStringLiteral("the first launch left no working copy in its documents folder"));
    report.add(QStringLiteral("start.first"), first.lineMs, QStringLiteral("ms"), Target::atMost(500),
               QStringLiteral("first launch: copies the master"));

    QList<double> warm;
    for (int i = 0; i < warmRuns; ++i) {
        progress(QStringLiteral("launch %1 (warm)").arg(i + 2));
        const AppRun run = runApp(app, arguments, environment, QStringLiteral("first-frame"), 30000, true);
        if (!run.ok) {
            report.fail(QStringLiteral("a warm launch did not report a frame: ") + run.output.left(2000));
            return;
        }
        warm << run.lineMs;
    }
    const QString note = QStringLiteral("%1 launches").arg(warm.size());
    report.add(QStringLiteral("start.warm.p50"), percentile(warm, 0.5), QStringLiteral("ms"), Target::atMost(250),
               note);
    report.add(QStringLiteral("start.warm.max"), percentile(warm, 1.0), QStringLiteral("ms"), Target::atMost(250),
               note);
}

void benchMemory(Report &report, const QString &app, const QString &master, const QString &home, int verbs)
{
    report.section(QStringLiteral("Memory"));
    progress(QStringLiteral("browsing %1 verbs in the app").arg(verbs));
    const AppRun run = runApp(app, {QStringLiteral("--browse"), QString::number(verbs), QStringLiteral("--size"),
                                    QStringLiteral("390x844")},
                              appEnvironment(home, master), QStringLiteral("peak-rss"), 150000, false);
    const QStringList parts = run.line.split(QLatin1Char(' '));
    bool parsed = false;
    const double kilobytes = parts.value(1).toDouble(&parsed);
    if (!run.ok || !parsed || !run.output.contains(QStringLiteral("browsed %1").arg(verbs))) {
        report.fail(QStringLiteral("browsing did not report its peak memory: ") + run.output.left(2000));
        return;
    }
    report.add(QStringLiteral("memory.peak"), kilobytes / 1024.0, QStringLiteral("MB"), Target::atMost(100),
               QStringLiteral("VmHWM after opening %1 verbs, %2 s").arg(verbs).arg(run.lineMs / 1000.0, 0, 'f', 1));
}

} // namespace

// An update from an older version: the working copy holds 500 favourites
// and a full history; the whole preparation is what the launch waits for.
void benchUpdate(Report &report, const QString &master, const QString &folder, int runs)
{
    const QString documents = folder + QStringLiteral("/docs");
    const QString working = VerbStore::workingCopyPath(documents);
    Settings settings(folder + QStringLiteral("/settings.json"));
    QList<double> samples;
    for (int run = 0; run < runs; ++run) {
        QDir(documents).removeRecursively();
        QDir().mkpath(documents);
        bool ok = QFile::copy(master, working);
        QFile::setPermissions(working, QFile::ReadOwner | QFile::WriteOwner);
        DatabaseQueue old(working);
        old.inDatabase([&](Database &db) {
            ok = ok
                    && db.executeUpdate(QStringLiteral(
                            "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 500) "
                            "INSERT INTO favourite(verbid) SELECT (i * 37) % 6000 + 1 FROM n"))
                    && db.executeUpdate(QStringLiteral(
                            "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 51) "
                            "INSERT INTO history(verbid, timestamp) SELECT i * 11, 780000000 + i FROM n"))
                    && db.executeUpdate(QStringLiteral("PRAGMA user_version = 900"));
            db.close();
        });
        settings.setString(SettingsKeys::InstalledVersion, QStringLiteral("0.0.900"));
        if (!ok) {
            report.fail(QStringLiteral("the old working copy for the update could not be made"));
            return;
        }
        QElapsedTimer timer;
        timer.start();
        const VerbStore::Result result =
                VerbStore::prepare(settings, QCoreApplication::applicationVersion(), documents, master);
        samples << milliseconds(timer);
        if (result.outcome != VerbStore::Outcome::Ready || !result.copied || result.keptFavourites != 500
            || result.keptHistory != 51) {
            report.fail(QStringLiteral("the update did not keep the user's rows: ") + result.error);
            return;
        }
    }
    report.add(QStringLiteral("store.update.p50"), percentile(samples, 0.5), QStringLiteral("ms"), {},
               QStringLiteral("update with 500 favourites and 51 history rows"));
    report.add(QStringLiteral("store.update.max"), percentile(samples, 1.0), QStringLiteral("ms"),
               Target::atMost(300), QStringLiteral("update with 500 favourites and 51 history rows"));
}

int main(int argc, char **argv)
{
    if (argc == 3 && std::strcmp(argv[1], "--disk-load") == 0)
        runDiskLoad(argv[2]);
    // The benchmark draws nothing itself; the app it starts is offscreen as well.
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    // Everything the libraries write (settings, log, working copy) goes to a
    // folder of this run's own, never to the user's.
    QTemporaryDir scratch;
    if (!scratch.isValid()) {
        std::fprintf(stderr, "norvella-bench: no temporary folder\n");
        return 1;
    }
    const QString home = scratch.filePath(QStringLiteral("bench-home"));
    QDir().mkpath(home);
    qputenv("XDG_CONFIG_HOME", (home + QStringLiteral("/config")).toUtf8());
    qputenv("XDG_DATA_HOME", (home + QStringLiteral("/data")).toUtf8());
    qputenv("XDG_CACHE_HOME", (home + QStringLiteral("/cache")).toUtf8());
    QDir().mkpath(home + QStringLiteral("/runtime"));
    QFile::setPermissions(home + QStringLiteral("/runtime"), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    qputenv("XDG_RUNTIME_DIR", (home + QStringLiteral("/runtime")).toUtf8());

    QGuiApplication application(argc, argv);
    QGuiApplication::setApplicationName(QStringLiteral("norvella"));
    QGuiApplication::setOrganizationName(QStringLiteral("Norvella"));
    QGuiApplication::setApplicationVersion(QStringLiteral(NORVELLA_VERSION));

    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral(
            "Times search, list reloads, the conjugation load, the export, launch and memory on the real verb "
            "database, in a temporary folder. Prints a table and \"bench <name> <value> <unit>\" lines; exits "
            "non-zero only when a figure cannot be measured."));
    parser.addHelpOption();
    const QCommandLineOption appOption(QStringLiteral("app"),
                                       QStringLiteral("The norvella executable (default: next to this one)."),
                                       QStringLiteral("path"));
    parser.addOption(appOption);
    parser.process(application);

    QElapsedTimer total;
    total.start();
    const QString loadBefore = loadAverage();
    Report report;

    const QString master = VerbStore::findMasterDatabase();
    if (master.isEmpty()) {
        std::fprintf(stderr, "norvella-bench: no master database in %s\n",
                     qPrintable(VerbStore::masterSearchPaths().join(QStringLiteral(", "))));
        return 1;
    }
    const QFileInfo masterBefore(master);
    const QDateTime masterModified = masterBefore.lastModified();
    const qint64 masterSize = masterBefore.size();
    const QString app = parser.isSet(appOption) ? parser.value(appOption)
                                                : QCoreApplication::applicationDirPath() + QStringLiteral("/norvella");
    if (!QFileInfo(app).isExecutable()) {
        std::fprintf(stderr, "norvella-bench: %s is not an executable\n", qPrintable(app));
        return 1;
    }

    const QStringList queries = readLines(QStringLiteral(":/norvella/bench/search-queries.txt"));
    const QStringList commonVerbs = readLines(QStringLiteral(":/norvella/bench/common-verbs.txt"));
    const QStringList typedForms = readLines(QStringLiteral(":/norvella/bench/typed-forms.txt"));
    if (queries.size() < 30 || commonVerbs.size() != 100 || typedForms.size() < 20) {
        std::fprintf(stderr, "norvella-bench: the bundled query or verb list is short\n");
        return 1;
    }

    // The app's launch path: its settings store, first-run values and the copy
    // of the master into the documents folder.
    CrashLog::setLogFilePath(scratch.filePath(QStringLiteral("norvella.log")));
    PreferredLanguages::setOverride({QStringLiteral("en-GB")});
    Strings::shared().selectLanguage({QStringLiteral("en-GB")});
    Settings &settings = Settings::standard();
    Preferences::registerFirstRunValues(settings);
    const QString documents = VerbStore::documentsDirectory();
    QDir().mkpath(documents);
    progress(QStringLiteral("copying the master %1 into %2").arg(master, documents));
    QElapsedTimer copyTimer;
    copyTimer.start();
    const VerbStore::Result prepared =
            VerbStore::prepare(settings, QCoreApplication::applicationVersion(), documents, master);
    const double copyMs = milliseconds(copyTimer);
    if (prepared.outcome != VerbStore::Outcome::Ready || !prepared.copied) {
        std::fprintf(stderr, "norvella-bench: the working copy could not be prepared: %s\n",
                     qPrintable(prepared.error));
        return 1;
    }
    auto queue = std::make_shared<DatabaseQueue>(VerbStore::workingCopyPath(documents));
    const int verbCount = scalarCount(QStringLiteral("SELECT count(*) AS n FROM verb"), *queue);
    const int formCount = scalarCount(QStringLiteral("SELECT count(*) AS n FROM conjugation"), *queue);

    report.section(QStringLiteral("Working copy"));
    report.add(QStringLiteral("store.copy"), copyMs, QStringLiteral("ms"), {},
               QStringLiteral("VerbStore::prepare on a first launch"));

    progress(QStringLiteral("updates with 500 favourites"));
    benchUpdate(report, master, scratch.filePath(QStringLiteral("update")), 10);

    progress(QStringLiteral("marking 100 favourites"));
    if (!markFavourites(*queue, 100))
        report.fail(QStringLiteral("the 100 favourites could not be marked"));

    // Before the lists exist, so no list reload rides on the "verb viewed" notice.
    progress(QStringLiteral("conjugation loads"));
    benchConjugation(report, queue, settings, commonVerbs, QStringLiteral("conjugation"), 2, QString());
    {
        progress(QStringLiteral("conjugation loads while another process writes and syncs"));
        DiskLoad load(scratch.filePath(QStringLiteral("disk-load")));
        if (!load.running())
            report.fail(QStringLiteral("the disk load could not be started"));
        benchConjugation(report, queue, settings, commonVerbs, QStringLiteral("conjugation.busy"), 4,
                         QStringLiteral(", another process writing and syncing"));
    }

    progress(QStringLiteral("list reloads"));
    benchLists(report, queue, settings);

    progress(QStringLiteral("practice sessions"));
    {
        const bench::PracticeSessionTiming practice = bench::timePracticeSession(queue, 50);
        report.section(QStringLiteral("Practice: %1 verbs in the deck, 2,000 cards stored").arg(practice.deckVerbs));
        if (!practice.error.isEmpty())
            report.fail(practice.error);
        else if (practice.cards != 50 || practice.reviews != 30)
            report.fail(QStringLiteral("the practice session has %1 cards, %2 of them reviews; expected 50 and 30")
                                .arg(practice.cards)
                                .arg(practice.reviews));
        addPercentiles(report, QStringLiteral("practice.session"), practice.samples, 16,
                       QStringLiteral("30 reviews and 20 new cards from the 1,000 most frequent verbs, 50 builds"));
    }

    progress(QStringLiteral("export"));
    benchExport(report, queue, settings);

    progress(QStringLiteral("search"));
    benchSearch(report, queue, settings, queries);
    progress(QStringLiteral("forms section"));
    benchForms(report, queue, settings, queries, typedForms);
    progress(QStringLiteral("quitting while the search index builds"));
    benchIndexQuit(report, queue, settings);

    benchLaunch(report, app, master, scratch.filePath(QStringLiteral("app-home")), 5);
    benchMemory(report, app, master, scratch.filePath(QStringLiteral("app-home")), 100);

    const QFileInfo masterAfter(master);
    if (masterAfter.lastModified() != masterModified || masterAfter.size() != masterSize)
        report.fail(QStringLiteral("the master database changed during the run"));

    report.section(QStringLiteral("This run"));
    report.add(QStringLiteral("run.total"), double(total.elapsed()) / 1000.0, QStringLiteral("s"), Target::atMost(180),
               QStringLiteral("the whole benchmark"));

    const int cores = QThread::idealThreadCount();
    const QString loadAfter = loadAverage();
    report.print({QStringLiteral("norvella-bench: %1 verbs, %2 forms (master %3)")
                          .arg(verbCount)
                          .arg(formCount)
                          .arg(master),
                  QStringLiteral("machine: %1 cores; load average %2 before, %3 after; total run %4 s")
                          .arg(cores)
                          .arg(loadBefore, loadAfter)
                          .arg(double(total.elapsed()) / 1000.0, 0, 'f', 1)});
    return report.failed() ? 1 : 0;
}
