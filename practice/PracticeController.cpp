#include "PracticeController.h"

#include "CrashLog.h"
#include "FormAnalysis.h"
#include "Settings.h"
#include "Sm2.h"
#include "SpeechSynthesizer.h"
#include "Strings.h"

#include <QDate>
#include <QDateTime>

namespace norvella {

PracticeController::PracticeController(QObject *parent)
    : PracticeDataClient(parent)
{
}

PracticeController::~PracticeController() = default;

void PracticeController::practiceDataReplaced()
{
    m_analysis.reset();
    m_session.clear();
    m_position = 0;
    m_content = {};
    emit cardChanged();
}

Settings &PracticeController::settings() const
{
    return m_settings ? *m_settings : Settings::standard();
}

qint64 PracticeController::today() const
{
    return m_today > 0 ? m_today : QDate::currentDate().toJulianDay();
}

qint64 PracticeController::now() const
{
    return m_now > 0 ? m_now : QDateTime::currentSecsSinceEpoch();
}

void PracticeController::setMode(int mode)
{
    if (mode != Produce && mode != Recognise)
        return;
    if (m_mode == mode)
        return;
    m_mode = mode;
    showCard();
}

SessionOptions PracticeController::currentOptions() const
{
    SessionOptions options = readOptions(settings());
    options.today = today();
    if (options.deck == PracticeDeck::OneVerb && queue()) {
        // "One verb" is the verb the learner opened last.
        queue()->inDatabase([&](Database &db) {
            auto rows = db.executeQuery(QStringLiteral("SELECT verbid FROM history ORDER BY timestamp DESC LIMIT 1"));
            if (rows && rows->next())
                options.verbId = rows->longLongIntForColumn(QStringLiteral("verbid"));
        });
    }
    return options;
}

void PracticeController::start()
{
    m_session.clear();
    m_position = 0;
    m_graded.clear();
    m_message.clear();
    if (!store()) {
        m_content = {};
        emit cardChanged();
        return;
    }
    SessionOptions options = currentOptions();
    const auto done = PracticeProgress::doneOn(store()->reviews(now() - 2 * 86400), options.today);
    options.newDoneToday = done.newCards;
    options.reviewsDoneToday = done.reviews;
    m_session = SessionBuilder::build(*queue(), *store(), options);
    if (m_session.isEmpty())
        m_message = Strings::text(QStringLiteral("practice.session.empty"));
    showCard();
}

void PracticeController::showCard()
{
    m_verdict = Unanswered;
    m_chosen = -1;
    m_options.clear();
    m_shownForm.clear();
    m_content = {};
    // A card whose form the database lacks (a verb dropped by an update) is skipped.
    while (queue() && m_position < m_session.size()) {
        const SessionCard &current = m_session.at(m_position);
        queue()->inDatabase([&](Database &db) { m_content = PracticeCards::load(db, current.card, settings()); });
        if (m_content.found)
            break;
        ++m_position;
    }
    if (m_content.found) {
        m_shownForm = AnswerCheck::acceptedSpellings(m_content.cell).value(0);
        if (m_mode == Recognise) {
            if (const FormAnalysis *forms = analysis()) {
                const PracticeCard &card = m_session.at(m_position).card;
                queue()->inDatabase([&](Database &db) {
                    m_options = PracticeCards::recogniseOptions(db, *forms, card, m_content.infinitive, m_shownForm,
                                                                quint32(PracticeStore::key(card.verbId, card.tense,
                                                                                           card.person)));
                });
            }
        }
    } else if (!m_session.isEmpty() && m_message.isEmpty()) {
        m_message = Strings::text(QStringLiteral("practice.session.done"));
    }
    emit cardChanged();
    emit answered();
}

const FormAnalysis *PracticeController::analysis()
{
    if (!m_analysis && queue()) {
        queue()->inDatabase([&](Database &db) {
            QString error;
            if (db.isOpen() || db.open())
                m_analysis = FormAnalysis::build(db.handle(), &error);
            if (!m_analysis)
                CrashLog::log(QStringLiteral("The forms for the Recognise drill could not be read: %1").arg(error));
        });
    }
    return m_analysis.get();
}

QString PracticeController::moodTitle() const
{
    return hasCard() ? Strings::text(PracticeCards::moodKey(m_session.at(m_position).card.tense)) : QString();
}

QString PracticeController::tenseTitle() const
{
    return hasCard() ? Strings::text(PracticeCards::tenseKey(m_session.at(m_position).card.tense)) : QString();
}

QVariantList PracticeController::options() const
{
    QVariantList list;
    for (const RecogniseOption &option : m_options) {
        const QString person = PracticeCards::personName(option.person);
        QStringList parts{option.infinitive,
                          Strings::text(PracticeCards::moodKey(option.tense)) + QLatin1Char(' ')
                                  + Strings::text(PracticeCards::tenseKey(option.tense))};
        if (!person.isEmpty())
            parts << person;
        list << QVariantMap{{QStringLiteral("label"), parts.join(QStringLiteral(" · "))},
                            {QStringLiteral("right"), option.right}};
    }
    return list;
}

QString PracticeController::verdictText() const
{
    switch (m_verdict) {
    case Right: return Strings::text(QStringLiteral("practice.verdict.right"));
    case Almost: return Strings::text(QStringLiteral("practice.verdict.almost"));
    case Wrong: return Strings::text(QStringLiteral("practice.verdict.wrong"));
    default: return {};
    }
}

QString PracticeController::answerText() const
{
    return m_verdict == Unanswered ? QString() : PracticeCards::markedCell(m_content.cell, m_content.irregular);
}

int PracticeController::suggestedRating() const
{
    switch (m_verdict) {
    case Right: return 4;
    case Almost: return 3;
    case Wrong: return 1;
    default: return -1;
    }
}

void PracticeController::submit(const QString &typed)
{
    if (!hasCard() || m_verdict != Unanswered || m_mode != Produce)
        return;
    switch (AnswerCheck::check(typed, m_content.cell).result) {
    case PracticeResult::Correct: m_verdict = Right; break;
    case PracticeResult::Almost: m_verdict = Almost; break;
    case PracticeResult::Wrong: m_verdict = Wrong; break;
    }
    emit answered();
}

void PracticeController::choose(int option)
{
    if (!hasCard() || m_verdict != Unanswered || m_mode != Recognise || option < 0 || option >= m_options.size())
        return;
    m_chosen = option;
    m_verdict = m_options.at(option).right ? Right : Wrong;
    emit answered();
}

void PracticeController::rate(int quality)
{
    if (!hasCard() || m_verdict == Unanswered || quality < 0 || quality > 5)
        return;
    SessionCard current = m_session.at(m_position);
    PracticeCard &card = current.card;
    const quint64 key = PracticeStore::key(card.verbId, card.tense, card.person);
    if (!m_graded.contains(key)) {
        const Sm2::State next = Sm2::review({card.repetitions, card.interval, card.easiness}, quality);
        card.repetitions = next.repetitions;
        card.interval = next.interval;
        card.easiness = next.easiness;
        card.due = today() + next.interval;
        card.lapses += quality < 3 ? 1 : 0;
    }
    const PracticeResult result = m_verdict == Right ? PracticeResult::Correct
            : m_verdict == Almost                    ? PracticeResult::Almost
                                                     : PracticeResult::Wrong;
    if (!store()->record(card, {0, card.id, now(), quality, int(result)})) {
        m_message = Strings::text(QStringLiteral("practice.save.failed"));
        emit cardChanged();
        return;
    }
    m_graded.insert(key);
    if (Sm2::repeatToday(quality))
        m_session << SessionCard{card, false};
    ++m_position;
    emit progressChanged();
    showCard();
}

void PracticeController::speak()
{
    if (!hasCard())
        return;
    if (!m_speech)
        m_speech = new SpeechSynthesizer(this);
    if (!m_speech->hasVoice()) {
        CrashLog::log(QStringLiteral("No Italian voice is installed; the practice answer is not spoken"));
        return;
    }
    const double speed = Preferences::audioSpeed(settings());
    m_speech->say(m_content.cell.split(QStringLiteral(" / ")).join(QStringLiteral(", ")),
                  SpeechSynthesizer::DefaultSpeechRate * (speed > 0 ? speed : 1.0));
}

} // namespace norvella
