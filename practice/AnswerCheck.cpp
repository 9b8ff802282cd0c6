#include "AnswerCheck.h"

#include "AsciiFold.h"
#include "FormAnalysis.h"

#include <QRegularExpression>

namespace norvella::AnswerCheck {

namespace {

// Keeps accents: only the accent-blind comparison may ignore them.
QString normalise(const QString &text)
{
    QString folded = text;
    folded.replace(QChar(0x2019), u'\'').replace(QChar(0x02BC), u'\'').replace(QChar(0x00B4), u'\'');
    folded = folded.simplified();
    // Plain ASCII, the common case on a desktop keyboard, folds as search does.
    QByteArray utf8 = folded.toUtf8();
    if (utf8.size() == folded.size()) {
        lowerAscii(utf8.data(), utf8.size());
        return QString::fromLatin1(utf8);
    }
    return folded.toLower().normalized(QString::NormalizationForm_C);
}

QString withoutSubjectPronoun(const QString &normalised)
{
    static const QRegularExpression subject(QStringLiteral("^(io|tu|lui|lei|lui/lei|noi|voi|loro) "));
    QString text = normalised;
    text.remove(subject);
    return text;
}

} // namespace

QStringList acceptedSpellings(const QString &cell)
{
    QStringList spellings;
    static const QRegularExpression genderSlash(QStringLiteral("(\\S+)/(\\S{1,2})$"));
    for (const QString &part : cell.split(QStringLiteral(" / "), Qt::SkipEmptyParts)) {
        const QString variant = part.trimmed();
        const QRegularExpressionMatch match = genderSlash.match(variant);
        if (!match.hasMatch()) {
            spellings << variant;
            continue;
        }
        // "alzato/a": the second ending replaces as many letters of the first.
        const QString word = match.captured(1);
        const QString ending = match.captured(2);
        const QString head = variant.left(match.capturedStart(0));
        spellings << head + word << head + word.left(word.size() - ending.size()) + ending;
    }
    spellings.removeDuplicates();
    return spellings;
}

AnswerVerdict check(const QString &typed, const QString &cell)
{
    AnswerVerdict verdict;
    const QString answer = withoutSubjectPronoun(normalise(typed));
    if (answer.isEmpty())
        return verdict;
    const QStringList spellings = acceptedSpellings(cell);
    for (const QString &spelling : spellings) {
        if (normalise(spelling) == answer) {
            verdict.result = PracticeResult::Correct;
            verdict.matched = spelling;
            return verdict;
        }
    }
    // An apostrophe typed for a missing accent ("perche'", "e'") is the
    // same slip as leaving the accent out.
    QString bare = answer;
    static const QRegularExpression accentApostrophe(QStringLiteral("([aeiou])'(?=\\s|$)"));
    bare.replace(accentApostrophe, QStringLiteral("\\1"));
    for (const QString &spelling : spellings) {
        const QString folded = FormAnalysis::fold(spelling);
        if (folded == FormAnalysis::fold(answer) || folded == FormAnalysis::fold(bare)) {
            verdict.result = PracticeResult::Almost;
            verdict.matched = spelling;
            return verdict;
        }
    }
    return verdict;
}

} // namespace norvella::AnswerCheck
