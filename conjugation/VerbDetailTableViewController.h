#pragma once

#include "NotificationCenter.h"
#include "PronunciationPlayer.h"
#include "Verb.h"
#include "VerbRef.h"
#include "VerbRepository.h"

#include <QAbstractItemModel>
#include <QObject>
#include <QPointer>
#include <QQmlEngine>
#include <QQmlParserStatus>
#include <QStringList>
#include <QUrl>

#include <memory>

namespace norvella {

class ConjugationSectionModel;
class DatabaseQueue;
class Settings;
class SpeechSynthesizer;

// The conjugation screen: loads the selected verb's forms (keeping the
// books of a verb viewed), presents one mood at a time as table sections
// and grid blocks, keeps the favourite mark current and speaks forms.
class VerbDetailTableViewController : public QObject, public QQmlParserStatus
{
    Q_OBJECT
    QML_ELEMENT
    Q_INTERFACES(QQmlParserStatus)
    Q_PROPERTY(QObject *verb READ verbObject WRITE setVerbObject NOTIFY verbChanged)
    Q_PROPERTY(QObject *queue READ queueObject WRITE setQueueObject NOTIFY queueChanged)
    Q_PROPERTY(bool peeking READ isPeeking WRITE setPeeking NOTIFY chromeChanged)
    Q_PROPERTY(bool hasVerb READ hasVerb NOTIFY verbChanged)
    Q_PROPERTY(QString title READ title NOTIFY verbChanged)
    Q_PROPERTY(QString verbRowText READ verbRowText NOTIFY contentChanged)
    Q_PROPERTY(QString usageNotes READ usageNotes NOTIFY contentChanged)
    // How the verb conjugates: {before, model, after, sentence}; the model verb is a link.
    Q_PROPERTY(QVariantMap pattern READ pattern NOTIFY contentChanged)
    Q_PROPERTY(int selectedSegment READ selectedSegment NOTIFY selectedSegmentChanged)
    Q_PROPERTY(QStringList segmentTitles READ segmentTitles NOTIFY contentChanged)
    Q_PROPERTY(bool isFavourite READ isFavourite NOTIFY favouriteChanged)
    Q_PROPERTY(QUrl favouriteIcon READ favouriteIcon NOTIFY favouriteChanged)
    Q_PROPERTY(QString favouriteName READ favouriteName NOTIFY favouriteChanged)
    Q_PROPERTY(bool toolbarVisible READ toolbarVisible NOTIFY chromeChanged)
    Q_PROPERTY(bool segmentsVisible READ segmentsVisible NOTIFY chromeChanged)
    Q_PROPERTY(bool selectVerbVisible READ selectVerbVisible NOTIFY chromeChanged)
    Q_PROPERTY(QString selectVerbText READ selectVerbText CONSTANT)
    Q_PROPERTY(QAbstractItemModel *tableModel READ tableModel CONSTANT)
    Q_PROPERTY(QAbstractItemModel *gridModel READ gridModel CONSTANT)
    Q_PROPERTY(QString speakingKey READ speakingKey NOTIFY speakingKeyChanged)
    Q_PROPERTY(QString reportName READ reportName CONSTANT)
    Q_PROPERTY(QString reportSubject READ reportSubject NOTIFY reportChanged)
    Q_PROPERTY(QString reportDetails READ reportDetails NOTIFY reportChanged)
    // The table section (the grid's block + 1) holding a searched form in the
    // selected mood, -1 for none.
    Q_PROPERTY(int matchedSection READ matchedSection NOTIFY contentChanged)

public:
    explicit VerbDetailTableViewController(QObject *parent = nullptr);
    ~VerbDetailTableViewController() override;

    // Collaborators; the defaults are the app's own.
    void setSettings(Settings &settings);
    void setLaunchArguments(const QStringList &arguments) { m_launchArguments = arguments; }
    void setSpeechSynthesizer(SpeechSynthesizer *synthesizer); // takes ownership
    void setVolumeProbe(PronunciationPlayer::VolumeProbe probe);
    PronunciationPlayer &pronunciation() { return *m_player; }

    const VerbPtr &selectedVerb() const { return m_verb; }
    void setSelectedVerb(VerbPtr verb);
    std::shared_ptr<DatabaseQueue> queue() const;
    VerbRepository *repository() const { return m_repository; }
    // A repository of this screen's own over the queue, for a screen used alone.
    void setQueue(std::shared_ptr<DatabaseQueue> queue);
    QObject *verbObject() const { return m_verbObject; }
    void setVerbObject(QObject *verb);
    QObject *queueObject() const { return m_repository; }
    // The verb repository, which holds the database queue.
    void setQueueObject(QObject *queue);

    // View life cycle: set-up (load and observe), then shown.
    void viewDidLoad();
    void viewDidAppear();
    bool isViewLoaded() const { return m_viewLoaded; }
    void classBegin() override {}
    void componentComplete() override;

    void loadConjugations();
    Q_INVOKABLE void refreshConjugations();
    Q_INVOKABLE void selectVerbTypes(int segment);
    Q_INVOKABLE void toggleFavourite();
    // Speaks the form under `key`, or stops it when it is the one speaking.
    Q_INVOKABLE void toggleSpeech(const QString &key, QObject *progressView);

    // Table data source: the verb row, then the tenses of the selected mood.
    int numberOfSections() const;
    int numberOfRowsInSection(int section) const;
    QString titleForHeaderInSection(int section) const;
    // The title in capitals, cased by the language it is written in.
    QString headingForHeaderInSection(int section) const;
    const ConjugationList *listForSection(int section) const;
    // Grid data source: one block per tense of the selected mood.
    int numberOfItems() const;
    // The form a speech key names ("typeId:row"), or null.
    const Conjugation *conjugationForKey(const QString &key) const;
    static QString keyFor(int group, int section, int row);

    bool isPeeking() const { return m_peeking; }
    void setPeeking(bool peeking);
    bool hasVerb() const { return m_verb != nullptr; }
    QString title() const { return m_verb ? m_verb->italian : QString(); }
    QString verbRowText() const;
    int selectedSegment() const { return m_selectedSegment; }
    QStringList segmentTitles() const;
    bool isFavourite() const { return m_verb && m_verb->isFavourite; }
    QUrl favouriteIcon() const;
    QString favouriteName() const;
    bool toolbarVisible() const { return hasVerb() && !m_peeking; }
    bool segmentsVisible() const { return hasVerb() && !m_peeking; }
    bool selectVerbVisible() const { return !hasVerb(); }
    QString selectVerbText() const;
    QAbstractItemModel *tableModel() const;
    QAbstractItemModel *gridModel() const;
    QString speakingKey() const { return m_player->speakingKey(); }
    // What a tense without forms shows under its dash.
    QString noFormsNote(int section) const;
    // How the verb is used (third person only, both auxiliaries, another
    // spelling), one note per line; empty when there is nothing to say.
    QString usageNotes() const;
    QVariantMap pattern() const;
    // Opens the verb this one conjugates like, as a tap on a list row would.
    Q_INVOKABLE void openModelVerb();

    // The tense the user last played a form of, as a table section of the
    // selected mood; 0 when none is chosen. A new mood or verb clears it.
    int chosenSection() const { return m_chosenSection; }
    Q_INVOKABLE void chooseSection(int section);
    // "Report a mistake": the mail names the verb, the mood and, once one is
    // chosen, the tense, so support knows which table to check.
    QString reportName() const;
    QString reportSubject() const;
    QString reportDetails() const;

    // Opened from a searched form: its cells, the chosen one first. The screen
    // shows the chosen one's mood and marks every one of them.
    const QList<FormCell> &matches() const { return m_matches; }
    // `form` at `index` of the list of its type.
    bool matchesSearch(const QString &type, const Conjugation &form, int index) const
    {
        // A form's order is its pronoun id; 0 for the forms without one.
        const int pronoun = int(form.order);
        return m_matches.contains(FormCell{type, pronoun, pronoun ? 0 : index});
    }
    int matchedSection() const;

signals:
    void verbChanged();
    void queueChanged();
    void contentChanged();
    void selectedSegmentChanged();
    void favouriteChanged();
    void chromeChanged();
    void speakingKeyChanged();
    void alertRequested(const QString &message);
    void reportChanged();
    // The views scroll the matched section into view.
    void matchRevealRequested();
    // A verb to open the normal way (a VerbRef, valid while the signal runs).
    void openVerbRequested(QObject *verb);

private:
    void openAtMatches(const QList<FormCell> &matches);
    void reloadPresentations();
    void verbFavouriteToggled(const Notification &notification);
    void verbReplaced();
    void setRepository(VerbRepository *repository);

    Settings *m_settings;
    QStringList m_launchArguments;
    VerbPtr m_verb;
    QPointer<VerbRepository> m_repository;
    QPointer<VerbRepository> m_ownRepository;
    QPointer<QObject> m_verbObject;
    int m_selectedSegment = 0;
    int m_chosenSection = 0;
    bool m_peeking = false;
    bool m_viewLoaded = false;
    ConjugationSectionModel *m_tableModel;
    ConjugationSectionModel *m_gridModel;
    PronunciationPlayer *m_player;
    ObserverSet m_observers;
    QList<FormCell> m_matches;
};

} // namespace norvella
