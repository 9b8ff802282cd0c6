#pragma once

#include <QObject>
#include <QPointer>
#include <QQmlEngine>

namespace norvella {

class VerbDetailTableViewController;

// One form row as the views see it: its texts, whether it is the one being
// spoken, and the play control's action.
class ConjugationFormItem : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Made by the conjugation screen")
    Q_PROPERTY(QString key READ key CONSTANT)
    Q_PROPERTY(QString pronoun READ pronoun CONSTANT)
    Q_PROPERTY(QString form READ form CONSTANT)
    // The form as styled text, irregular variants in bold and underlined, so
    // the mark does not rest on colour.
    Q_PROPERTY(QString formMarkup READ formMarkup CONSTANT)
    // The form as a screen reader says it, each irregular variant named so.
    Q_PROPERTY(QString accessibleForm READ accessibleForm CONSTANT)
    Q_PROPERTY(bool irregular READ isIrregular CONSTANT)
    // A dash for a person the verb is not used in: nothing to play.
    Q_PROPERTY(bool placeholder READ isPlaceholder CONSTANT)
    Q_PROPERTY(QString playName READ playName CONSTANT)
    Q_PROPERTY(QString stopName READ stopName CONSTANT)
    Q_PROPERTY(bool speaking READ isSpeaking NOTIFY speakingChanged)
    // The form the user searched for and opened the verb from.
    Q_PROPERTY(bool matchesSearch READ matchesSearch CONSTANT)
public:
    ConjugationFormItem(VerbDetailTableViewController *controller, QString key, QString pronoun, QString form,
                        QObject *parent = nullptr, int irregularMask = 0);

    const QString &key() const { return m_key; }
    const QString &pronoun() const { return m_pronoun; }
    const QString &form() const { return m_form; }
    bool isPlaceholder() const { return m_key.isEmpty(); }
    int irregularMask() const { return m_irregular; }
    bool isIrregular() const { return m_irregular != 0; }
    QString formMarkup() const;
    QString accessibleForm() const;
    QString playName() const;
    QString stopName() const;
    bool isSpeaking() const { return m_speaking; }
    bool matchesSearch() const { return m_matchesSearch; }
    void setMatchesSearch(bool matches) { m_matchesSearch = matches; }

    // Speaks this form, filling `progressView` (a RoundProgressView), or stops it.
    Q_INVOKABLE void toggleSpeech(QObject *progressView);

signals:
    void speakingChanged();

private:
    void updateSpeaking();

    QPointer<VerbDetailTableViewController> m_controller;
    QString m_key;
    QString m_pronoun;
    QString m_form;
    int m_irregular = 0;
    bool m_speaking = false;
    bool m_matchesSearch = false;
};

} // namespace norvella
