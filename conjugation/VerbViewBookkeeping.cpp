#include "VerbViewBookkeeping.h"

#include "ConjugationGroups.h"
#include "ConjugationServices.h"
#include "CrashLog.h"
#include "Database.h"
#include "IrregularMarks.h"
#include "Settings.h"
#include "UserMessages.h"
#include "VerbUsage.h"

#include <QDateTime>

namespace norvella::VerbViewBookkeeping {

namespace {
// 2001-01-01T00:00:00Z in Unix seconds.
constexpr double ReferenceDateOffset = 978307200.0;
} // namespace

bool countView(Settings &settings, const QStringList &launchArguments)
{
    if (launchArguments.contains(QStringLiteral("ui_test")))
        return false;
    const qint64 viewed = Preferences::numberOfVerbsViewed(settings) + 1;
    bool asked = false;
    if (viewed >= ReviewRequestThreshold && !Preferences::askedForReview(settings)) {
        ConjugationServices::requestReview();
        settings.setBool(SettingsKeys::AskedForReview, true);
        asked = true;
    }
    settings.setIntegerSoon(SettingsKeys::NumberOfVerbsViewed, viewed);
    return asked;
}

double referenceTimestamp()
{
    return double(QDateTime::currentMSecsSinceEpoch()) / 1000.0 - ReferenceDateOffset;
}

bool readConjugations(Database &db, Verb &verb)
{
    auto rows = db.executeQuery(
            QStringLiteral("SELECT conjugation._id, pronoun.pronoun as pronoun, conjugation.verb as verb, "
                           "conjugation.conjugation_type_id as type, pronoun._id as pid, voice_file "
                           "FROM conjugation LEFT OUTER JOIN pronoun ON conjugation.pronounid = pronoun._id "
                           "where conjugation.verbid = ? ORDER BY conjugation.conj_order"),
            {verb.id});
    if (!rows)
        return false;
    ConjugationList forms;
    while (rows->next()) {
        Conjugation form;
        form.pronoun = rows->stringForColumn(QStringLiteral("pronoun"));
        form.verb = rows->stringForColumn(QStringLiteral("verb"));
        form.type = rows->stringForColumn(QStringLiteral("type"));
        form.order = rows->intForColumn(QStringLiteral("pid"));
        form.voiceFile = rows->stringForColumn(QStringLiteral("voice_file"));
        forms.append(form);
    }
    rows->close();
    // Unmarked forms are still the forms: an older copy without the marks shows them plain.
    IrregularMarks::read(db, verb, forms);
    ConjugationGroups::distribute(verb, forms);
    // The forms stand without the notes: a copy that cannot say how the verb is
    // used still shows them (the reader logs why).
    VerbUsageNotes::read(db, verb);
    return true;
}

namespace {
bool writeHistoryRows(Database &db, qint64 verbId, double timestamp)
{
    if (!db.executeUpdate(QStringLiteral("DELETE FROM history WHERE verbid=?"), {verbId}))
        return false;
    if (!db.executeUpdate(QStringLiteral("INSERT INTO history(verbid, timestamp) VALUES(?, ?)"), {verbId, timestamp}))
        return false;
    auto rows = db.executeQuery(QStringLiteral("SELECT _id, timestamp FROM history ORDER BY timestamp DESC"));
    if (!rows)
        return false;
    int position = 0;
    while (position < HistoryPruneRow && rows->next())
        ++position;
    if (position == HistoryPruneRow) {
        const double boundary = rows->doubleForColumn(QStringLiteral("timestamp"));
        rows->close();
        if (!db.executeUpdate(QStringLiteral("DELETE FROM history WHERE timestamp <= ?"), {boundary}))
            return false;
    }
    rows->close();
    return true;
}
} // namespace

// One transaction: a crash between the steps cannot lose the verb's entry,
// and the disk is synced once per view instead of once per statement.
bool writeHistory(Database &db, const Settings &settings, qint64 verbId, double timestamp)
{
    if (!Preferences::useHistory(settings))
        return true;
    return db.inTransaction([&] { return writeHistoryRows(db, verbId, timestamp); });
}

void loadTurn(Database &db, const Settings &settings, Verb &verb)
{
    if (!readConjugations(db, verb)) {
        reportDatabaseError(DatabaseErrors::ReadingConjugation, db);
    } else if (!writeHistory(db, settings, verb.id, referenceTimestamp())) {
        reportDatabaseError(DatabaseErrors::ReadingConjugation, db);
        // The forms show; the user is told that this visit is not in the history.
        UserMessages::postSaveFailure(db.lastErrorCode());
    }
    db.close();
}

} // namespace norvella::VerbViewBookkeeping
