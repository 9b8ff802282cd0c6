#pragma once

#include "PracticeData.h"
#include "SessionBuilder.h"

#include <QQmlEngine>
#include <QVariantList>

#include <functional>
#include <memory>

namespace norvella {

class Settings;

// The progress page: what is due, the streak, accuracy per tense by week,
// the verbs that cost most, and the learner's choices of what to practise.
// The base is named in full: Qt 6.4's type registrar, and so qmllint, does
// not find an unqualified base in a namespace.
class PracticeProgressController : public norvella::PracticeDataClient
{
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(int dueToday READ dueToday NOTIFY progressChanged)
    Q_PROPERTY(int streak READ streak NOTIFY progressChanged)
    Q_PROPERTY(int cardCount READ cardCount NOTIFY progressChanged)
    // [{title, values: [share or -1 per week, oldest first]}]
    Q_PROPERTY(QVariantList accuracy READ accuracy NOTIFY progressChanged)
    // [{title, detail}]
    Q_PROPERTY(QVariantList costlyVerbs READ costlyVerbs NOTIFY progressChanged)
    Q_PROPERTY(int deck READ deck WRITE setDeck NOTIFY choicesChanged)
    Q_PROPERTY(QStringList deckTitles READ deckTitles CONSTANT)
    // [{type, title, on}]
    Q_PROPERTY(QVariantList tenseChoices READ tenseChoices NOTIFY choicesChanged)
    // [{person, title, on}]
    Q_PROPERTY(QVariantList personChoices READ personChoices NOTIFY choicesChanged)
    Q_PROPERTY(int newPerDay READ newPerDay WRITE setNewPerDay NOTIFY choicesChanged)
    Q_PROPERTY(int reviewsPerDay READ reviewsPerDay WRITE setReviewsPerDay NOTIFY choicesChanged)

public:
    static constexpr int Weeks = 8;
    static constexpr int CostlyVerbCount = 5;

    explicit PracticeProgressController(QObject *parent = nullptr);

    void setSettings(Settings *settings) { m_settings = settings; }
    void setToday(qint64 julianDay) { m_today = julianDay; }

    int dueToday() const { return m_dueToday; }
    int streak() const { return m_streak; }
    int cardCount() const { return m_cardCount; }
    QVariantList accuracy() const { return m_accuracy; }
    QVariantList costlyVerbs() const { return m_costlyVerbs; }

    int deck() const;
    void setDeck(int deck);
    QStringList deckTitles() const;
    QVariantList tenseChoices() const;
    QVariantList personChoices() const;
    int newPerDay() const;
    void setNewPerDay(int count);
    int reviewsPerDay() const;
    void setReviewsPerDay(int count);

    Q_INVOKABLE void refresh();
    // The last tense or person cannot be switched off: a session needs one.
    Q_INVOKABLE void setTenseOn(int tense, bool on);
    Q_INVOKABLE void setPersonOn(int person, bool on);
    // Only after the learner confirmed it on screen.
    Q_INVOKABLE bool resetProgress();

signals:
    void progressChanged();
    void choicesChanged();

protected:
    void practiceDataReplaced() override { refresh(); }

private:
    Settings &settings() const;
    void change(const std::function<void(SessionOptions &)> &edit);

    Settings *m_settings = nullptr;
    qint64 m_today = 0;
    int m_dueToday = 0;
    int m_streak = 0;
    int m_cardCount = 0;
    QVariantList m_accuracy;
    QVariantList m_costlyVerbs;
};

} // namespace norvella
