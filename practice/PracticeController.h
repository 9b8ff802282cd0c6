#pragma once

#include "AnswerCheck.h"
#include "PracticeCardContent.h"
#include "PracticeData.h"
#include "PracticeProgress.h"
#include "SessionBuilder.h"

#include <QSet>
#include <QQmlEngine>
#include <QVariantList>

#include <memory>

namespace norvella {

class FormAnalysis;
class Settings;
class SpeechSynthesizer;

// The Practice screen: a session of cards drilled by typing the form
// (Produce) or by naming a shown form (Recognise), graded on the SM-2 scale,
// and the learner's progress and choices.
// The base is named in full: Qt 6.4's type registrar, and so qmllint, does
// not find an unqualified base in a namespace.
class PracticeController : public norvella::PracticeDataClient
{
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(int mode READ mode WRITE setMode NOTIFY cardChanged)
    Q_PROPERTY(bool hasCard READ hasCard NOTIFY cardChanged)
    Q_PROPERTY(int remaining READ remaining NOTIFY cardChanged)
    Q_PROPERTY(bool isNewCard READ isNewCard NOTIFY cardChanged)
    Q_PROPERTY(QString infinitive READ infinitive NOTIFY cardChanged)
    Q_PROPERTY(QString translation READ translation NOTIFY cardChanged)
    Q_PROPERTY(QString moodTitle READ moodTitle NOTIFY cardChanged)
    Q_PROPERTY(QString tenseTitle READ tenseTitle NOTIFY cardChanged)
    Q_PROPERTY(QString pronoun READ pronoun NOTIFY cardChanged)
    Q_PROPERTY(QString shownForm READ shownForm NOTIFY cardChanged)
    Q_PROPERTY(QVariantList options READ options NOTIFY cardChanged)
    Q_PROPERTY(int verdict READ verdict NOTIFY answered)
    Q_PROPERTY(QString verdictText READ verdictText NOTIFY answered)
    Q_PROPERTY(QString answerText READ answerText NOTIFY answered)
    Q_PROPERTY(int chosenOption READ chosenOption NOTIFY answered)
    Q_PROPERTY(int suggestedRating READ suggestedRating NOTIFY answered)
    Q_PROPERTY(QString message READ message NOTIFY cardChanged)

public:
    enum Mode { Produce = 0, Recognise = 1 };
    Q_ENUM(Mode)
    // Not yet answered, then how the answer compared.
    enum Verdict { Unanswered = 0, Right = 1, Almost = 2, Wrong = 3 };
    Q_ENUM(Verdict)

    explicit PracticeController(QObject *parent = nullptr);
    ~PracticeController() override;

    // For tests and the benchmark: a fixed day.
    void setToday(qint64 julianDay) { m_today = julianDay; }
    void setSettings(Settings *settings) { m_settings = settings; }
    void setNow(qint64 secondsSinceEpoch) { m_now = secondsSinceEpoch; }

    int mode() const { return m_mode; }
    void setMode(int mode);
    bool hasCard() const { return m_position < m_session.size() && m_content.found; }
    int remaining() const { return int(m_session.size() - m_position); }
    bool isNewCard() const { return hasCard() && m_session.at(m_position).isNew; }
    QString infinitive() const { return m_content.infinitive; }
    QString translation() const { return m_content.translation; }
    QString moodTitle() const;
    QString tenseTitle() const;
    QString pronoun() const { return m_content.pronoun; }
    QString shownForm() const { return m_shownForm; }
    QVariantList options() const;
    int verdict() const { return m_verdict; }
    QString verdictText() const;
    QString answerText() const;
    int chosenOption() const { return m_chosen; }
    int suggestedRating() const;
    QString message() const { return m_message; }

    // Builds today's session from the learner's choices and shows its first card.
    Q_INVOKABLE void start();
    Q_INVOKABLE void submit(const QString &typed);
    Q_INVOKABLE void choose(int option);
    // Grades the shown card (0-5) and moves on. Grades below 4 bring the
    // card back at the end of today's session, leaving its schedule alone.
    Q_INVOKABLE void rate(int quality);
    Q_INVOKABLE void speak();

signals:
    void cardChanged();
    void answered();
    // A grade was stored; the progress page reads afresh.
    void progressChanged();

protected:
    void practiceDataReplaced() override;

private:
    SessionOptions currentOptions() const;
    void showCard();
    qint64 today() const;
    qint64 now() const;
    Settings &settings() const;
    const FormAnalysis *analysis();

    std::unique_ptr<FormAnalysis> m_analysis;
    SpeechSynthesizer *m_speech = nullptr;
    Settings *m_settings = nullptr;
    qint64 m_today = 0;
    qint64 m_now = 0;

    int m_mode = Produce;
    QList<SessionCard> m_session;
    qsizetype m_position = 0;
    // Cards graded today in this session: a repeat does not reschedule them.
    QSet<quint64> m_graded;
    PracticeCardContent m_content;
    QString m_shownForm;
    QList<RecogniseOption> m_options;
    int m_verdict = Unanswered;
    int m_chosen = -1;
    QString m_message;
};

} // namespace norvella
