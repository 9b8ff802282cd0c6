#include "VerbDetailTableViewController.h"

#include "ConjugationGroups.h"
#include "ConjugationSectionModel.h"
#include "ConjugationServices.h"
#include "CrashLog.h"
#include "Database.h"
#include "IrregularMarks.h"
#include "RoundProgressView.h"
#include "Settings.h"
#include "Strings.h"
#include "VerbRef.h"
#include "VerbLookup.h"
#include "VerbUsage.h"
#include "VerbRepository.h"
#include "VerbViewBookkeeping.h"

#include <QCoreApplication>

namespace norvella {

VerbDetailTableViewController::VerbDetailTableViewController(QObject *parent)
    : QObject(parent),
      m_settings(&Settings::standard()),
      m_launchArguments(QCoreApplication::arguments()),
      m_tableModel(new ConjugationSectionModel(*this, ConjugationSectionModel::Presentation::Table, this)),
      m_gridModel(new ConjugationSectionModel(*this, ConjugationSectionModel::Presentation::Grid, this)),
      m_player(new PronunciationPlayer(*m_settings, this))
{
    connect(m_player, &PronunciationPlayer::speakingKeyChanged, this,
            &VerbDetailTableViewController::speakingKeyChanged);
    connect(m_player, &PronunciationPlayer::alertRequested, this, &VerbDetailTableViewController::alertRequested);
}

VerbDetailTableViewController::~VerbDetailTableViewController() = default;

void VerbDetailTableViewController::setSettings(Settings &settings)
{
    m_settings = &settings;
    m_player->setSettings(settings);
}

void VerbDetailTableViewController::setSpeechSynthesizer(SpeechSynthesizer *synthesizer)
{
    m_player->setSynthesizer(synthesizer);
}

void VerbDetailTableViewController::setVolumeProbe(PronunciationPlayer::VolumeProbe probe)
{
    m_player->setVolumeProbe(std::move(probe));
}

void VerbDetailTableViewController::setSelectedVerb(VerbPtr verb)
{
    if (verb == m_verb)
        return;
    m_player->stop();
    m_verb = std::move(verb);
    // Marks belong to the verb they were searched in.
    m_matches.clear();
    m_chosenSection = 0;
    emit verbChanged();
    emit reportChanged();
    emit favouriteChanged();
    emit chromeChanged();
    verbReplaced();
}

std::shared_ptr<DatabaseQueue> VerbDetailTableViewController::queue() const
{
    return m_repository ? m_repository->queue() : nullptr;
}

void VerbDetailTableViewController::setRepository(VerbRepository *repository)
{
    if (repository == m_repository)
        return;
    m_repository = repository;
    if (m_ownRepository && m_ownRepository != repository) {
        m_ownRepository->deleteLater();
        m_ownRepository = nullptr;
    }
    emit queueChanged();
}

void VerbDetailTableViewController::setQueue(std::shared_ptr<DatabaseQueue> queue)
{
    if (queue == this->queue())
        return;
    if (!queue) {
        setRepository(nullptr);
        return;
    }
    auto *own = new VerbRepository(std::move(queue), {}, this);
    setRepository(own);
    m_ownRepository = own;
}

void VerbDetailTableViewController::setVerbObject(QObject *verb)
{
    if (verb == m_verbObject)
        return;
    m_verbObject = verb;
    setSelectedVerb(VerbRef::from(verb));
    const QList<FormCell> matches = VerbRef::matchesFrom(verb);
    if (matches.isEmpty() && m_matches.isEmpty())
        return;
    openAtMatches(matches);
    if (m_viewLoaded)
        reloadPresentations();
    if (!m_matches.isEmpty())
        emit matchRevealRequested();
}

void VerbDetailTableViewController::openAtMatches(const QList<FormCell> &matches)
{
    m_matches = matches;
    const int group = matches.isEmpty() ? -1 : ConjugationGroups::groupOf(matches.first().type);
    if (group < 0 || group == m_selectedSegment)
        return;
    m_selectedSegment = group;
    m_chosenSection = 0;
    emit selectedSegmentChanged();
    emit reportChanged();
}

int VerbDetailTableViewController::matchedSection() const
{
    for (const FormCell &cell : m_matches) {
        for (int section = 1; section < numberOfSections(); ++section) {
            const auto *tense = ConjugationGroups::tense(m_selectedSegment, section - 1);
            if (tense && cell.type == QLatin1String(tense->typeId))
                return section;
        }
    }
    return -1;
}

void VerbDetailTableViewController::setQueueObject(QObject *queue)
{
    setRepository(VerbRepository::from(queue));
}

void VerbDetailTableViewController::componentComplete()
{
    viewDidLoad();
    viewDidAppear();
}

void VerbDetailTableViewController::viewDidLoad()
{
    if (m_viewLoaded)
        return;
    m_viewLoaded = true;
    loadConjugations();
    reloadPresentations();
    m_observers.add(Notifications::RefreshConjugations, [this](const Notification &) { refreshConjugations(); });
    m_observers.add(Notifications::VerbFavouriteToggled,
                    [this](const Notification &notification) { verbFavouriteToggled(notification); });
}

// A screen kept on screen while the user picks another verb behaves like a
// fresh showing of that verb.
void VerbDetailTableViewController::verbReplaced()
{
    if (!m_viewLoaded)
        return;
    loadConjugations();
    reloadPresentations();
    viewDidAppear();
}

void VerbDetailTableViewController::viewDidAppear()
{
    if (!m_verb)
        return;
    ConjugationServices::logEvent(QStringLiteral("select_content"),
                                  {{QStringLiteral("item_id"), QString::number(m_verb->id)},
                                   {QStringLiteral("item_name"), m_verb->italian}});
}

void VerbDetailTableViewController::loadConjugations()
{
    if (!m_verb || m_verb->loaded)
        return;
    VerbViewBookkeeping::countView(*m_settings, m_launchArguments);
    const VerbPtr verb = m_verb;
    if (!m_repository) {
        // No database work, but the showing is still announced.
        NotificationCenter::defaultCenter().post(Notifications::VerbViewed, QVariant(),
                                                 {{QStringLiteral("verb"), QVariant::fromValue(verb)}});
        return;
    }
    Settings &settings = *m_settings;
    m_repository->recordView(verb, [&](Database &db) { VerbViewBookkeeping::loadTurn(db, settings, *verb); });
}

void VerbDetailTableViewController::refreshConjugations()
{
    reloadPresentations();
}

void VerbDetailTableViewController::selectVerbTypes(int segment)
{
    if (segment != m_selectedSegment) {
        m_selectedSegment = segment;
        m_chosenSection = 0;
        emit selectedSegmentChanged();
        emit reportChanged();
    }
    reloadPresentations();
    ConjugationServices::logEvent(QStringLiteral("conjugation_tab"),
                                  {{QStringLiteral("name"), ConjugationGroups::analyticsValue(segment)}});
}

void VerbDetailTableViewController::reloadPresentations()
{
    m_tableModel->reload();
    m_gridModel->reload();
    emit contentChanged();
}

void VerbDetailTableViewController::toggleFavourite()
{
    if (!m_verb)
        return;
    const VerbPtr verb = m_verb;
    const bool wanted = !verb->isFavourite;
    verb->isFavourite = wanted;
    emit favouriteChanged();
    if (!VerbRepository::setFavourite(m_repository, verb, wanted, this)) {
        // The star goes back to what the table holds; nothing changed for the others.
        emit favouriteChanged();
    }
}

void VerbDetailTableViewController::verbFavouriteToggled(const Notification &notification)
{
    if (notification.sender() == this)
        return;
    const QVariant value = notification.userInfo.value(QStringLiteral("verb"));
    if (!value.canConvert<VerbPtr>())
        return;
    const VerbPtr other = value.value<VerbPtr>();
    if (!other || !m_verb || other->id != m_verb->id)
        return;
    m_verb->isFavourite = other->isFavourite;
    emit favouriteChanged();
}

void VerbDetailTableViewController::toggleSpeech(const QString &key, QObject *progressView)
{
    if (!m_verb)
        qFatal("It shouldn't be possible for the verb to be null when we reach here.");
    if (key == m_player->speakingKey() && m_player->isSpeaking()) {
        m_player->stop();
        return;
    }
    const Conjugation *form = conjugationForKey(key);
    if (!form)
        return;
    for (int section = 1; section < numberOfSections(); ++section) {
        if (keyFor(m_selectedSegment, section, 0).section(QLatin1Char(':'), 0, 0) == form->type)
            chooseSection(section);
    }
    m_player->play(key, PronunciationPlayer::spokenText(*form), qobject_cast<RoundProgressView *>(progressView));
}

void VerbDetailTableViewController::setPeeking(bool peeking)
{
    if (peeking == m_peeking)
        return;
    m_peeking = peeking;
    emit chromeChanged();
}

int VerbDetailTableViewController::numberOfSections() const
{
    if (!m_verb || !ConjugationGroups::isValidGroup(m_selectedSegment))
        return 0;
    return ConjugationGroups::tenseCount(m_selectedSegment) + 1;
}

const ConjugationList *VerbDetailTableViewController::listForSection(int section) const
{
    if (!m_verb)
        return nullptr;
    const auto *tense = ConjugationGroups::tense(m_selectedSegment, section - 1);
    return tense ? &((*m_verb).*(tense->list)) : nullptr;
}

int VerbDetailTableViewController::numberOfRowsInSection(int section) const
{
    if (!m_verb)
        return 0;
    if (section == 0)
        return ConjugationGroups::isValidGroup(m_selectedSegment) ? 1 : 0;
    const ConjugationList *list = listForSection(section);
    return list ? int(list->size()) : 0;
}

QString VerbDetailTableViewController::titleForHeaderInSection(int section) const
{
    // Read each time, so a changed setting shows at the next reload.
    const QString key = ConjugationGroups::titleKey(m_selectedSegment, section - 1,
                                                    Preferences::showTranslated(*m_settings));
    return key.isEmpty() ? QString() : Strings::text(key);
}

QString VerbDetailTableViewController::headingForHeaderInSection(int section) const
{
    // A title that is the Italian name, shown as such or kept by the interface language,
    // takes Italian capitals: no dotted İ in "PASSATO PROSSIMO" on a Turkish screen.
    const QString key = ConjugationGroups::titleKey(m_selectedSegment, section - 1, false);
    if (key.isEmpty())
        return {};
    const QString title = titleForHeaderInSection(section);
    const bool italian = title == Strings::text(key + QStringLiteral("_italian"));
    return Strings::upper(title, italian ? QStringLiteral("it") : Strings::shared().language());
}

int VerbDetailTableViewController::numberOfItems() const
{
    return ConjugationGroups::tenseCount(m_selectedSegment);
}

QString VerbDetailTableViewController::keyFor(int group, int section, int row)
{
    const auto *tense = ConjugationGroups::tense(group, section - 1);
    return tense ? QStringLiteral("%1:%2").arg(QLatin1String(tense->typeId)).arg(row) : QString();
}

const Conjugation *VerbDetailTableViewController::conjugationForKey(const QString &key) const
{
    const QStringList parts = key.split(QLatin1Char(':'));
    if (!m_verb || parts.size() != 2)
        return nullptr;
    const ConjugationList *list = m_verb->listForType(parts[0]);
    bool ok = false;
    const int row = parts[1].toInt(&ok);
    if (!list || !ok || row < 0 || row >= list->size())
        return nullptr;
    return &list->at(row);
}

QString VerbDetailTableViewController::verbRowText() const
{
    if (!m_verb)
        return {};
    return titleWithTranslation(m_verb->italian, m_verb->translation(*m_settings));
}

QStringList VerbDetailTableViewController::segmentTitles() const
{
    QStringList titles;
    const bool italian = Preferences::showTranslated(*m_settings);
    for (int group = 0; group < ConjugationGroups::GroupCount; ++group)
        titles << Strings::text(ConjugationGroups::groupTitleKey(group, italian));
    return titles;
}

QUrl VerbDetailTableViewController::favouriteIcon() const
{
    return isFavourite() ? QUrl(QStringLiteral("qrc:/norvella/icons/favourite-filled.svg"))
                         : QUrl(QStringLiteral("qrc:/norvella/icons/favourite.svg"));
}

QString VerbDetailTableViewController::favouriteName() const
{
    return Strings::text(isFavourite() ? QStringLiteral("conjugation.favourite.remove")
                                       : QStringLiteral("conjugation.favourite.add"));
}

QString VerbDetailTableViewController::selectVerbText() const
{
    return Strings::text(QStringLiteral("select"));
}

QAbstractItemModel *VerbDetailTableViewController::tableModel() const
{
    return m_tableModel;
}

QAbstractItemModel *VerbDetailTableViewController::gridModel() const
{
    return m_gridModel;
}

QString VerbDetailTableViewController::noFormsNote(int section) const
{
    const auto *tense = ConjugationGroups::tense(m_selectedSegment, section - 1);
    if (!m_verb || !tense)
        return Strings::text(QStringLiteral("conjugation.noforms"));
    return VerbUsageNotes::noFormsNote(*m_verb, QLatin1String(tense->typeId));
}

QString VerbDetailTableViewController::usageNotes() const
{
    return m_verb ? VerbUsageNotes::notes(*m_verb).join(QLatin1Char('\n')) : QString();
}

QVariantMap VerbDetailTableViewController::pattern() const
{
    const IrregularMarks::PatternLine line = m_verb ? IrregularMarks::patternLine(m_verb->pattern)
                                                    : IrregularMarks::PatternLine();
    return {{QStringLiteral("before"), line.before}, {QStringLiteral("model"), line.model},
            {QStringLiteral("after"), line.after}, {QStringLiteral("sentence"), line.sentence}};
}

void VerbDetailTableViewController::openModelVerb()
{
    if (!m_verb || m_verb->pattern.modelId < 0 || !queue())
        return;
    const VerbPtr model = verbById(*queue(), m_verb->pattern.modelId);
    if (!model) {
        CrashLog::log(QStringLiteral("The verb %1 follows a model (id %2) that is not in the database")
                              .arg(m_verb->italian)
                              .arg(m_verb->pattern.modelId));
        return;
    }
    VerbRef ref(model);
    emit openVerbRequested(&ref);
}

void VerbDetailTableViewController::chooseSection(int section)
{
    const int chosen = section > 0 && section < numberOfSections() ? section : 0;
    if (chosen == m_chosenSection)
        return;
    m_chosenSection = chosen;
    emit reportChanged();
}

QString VerbDetailTableViewController::reportName() const
{
    return Strings::text(QStringLiteral("conjugation.report"));
}

QString VerbDetailTableViewController::reportSubject() const
{
    if (!m_verb)
        return {};
    return Strings::text(QStringLiteral("conjugation.report.subject")).arg(m_verb->italian);
}

QString VerbDetailTableViewController::reportDetails() const
{
    if (!m_verb)
        return {};
    const QString mood = Strings::text(ConjugationGroups::groupTitleKey(m_selectedSegment));
    QString details = Strings::text(QStringLiteral("conjugation.report.verb")).arg(m_verb->italian) + QLatin1Char('\n')
            + Strings::text(QStringLiteral("conjugation.report.mood")).arg(mood);
    if (m_chosenSection > 0)
        details += QLatin1Char('\n')
                + Strings::text(QStringLiteral("conjugation.report.tense")).arg(titleForHeaderInSection(m_chosenSection));
    return details;
}

} // namespace norvella
