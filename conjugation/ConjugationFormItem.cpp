#include "ConjugationFormItem.h"

#include "IrregularMarks.h"
#include "Strings.h"
#include "VerbDetailTableViewController.h"

namespace norvella {

ConjugationFormItem::ConjugationFormItem(VerbDetailTableViewController *controller, QString key, QString pronoun,
                                         QString form, QObject *parent, int irregularMask)
    : QObject(parent),
      m_controller(controller),
      m_key(std::move(key)),
      m_pronoun(std::move(pronoun)),
      m_form(std::move(form)),
      m_irregular(irregularMask)
{
    connect(controller, &VerbDetailTableViewController::speakingKeyChanged, this,
            &ConjugationFormItem::updateSpeaking);
    m_speaking = !m_key.isEmpty() && controller->speakingKey() == m_key;
}

QString ConjugationFormItem::formMarkup() const
{
    QStringList parts;
    for (const IrregularMarks::Variant &variant : IrregularMarks::variants(m_form, m_irregular)) {
        const QString text = variant.text.toHtmlEscaped();
        parts << (variant.irregular ? QStringLiteral("<b><u>%1</u></b>").arg(text) : text);
    }
    return parts.join(QStringLiteral(" / "));
}

QString ConjugationFormItem::accessibleForm() const
{
    if (!m_irregular)
        return m_form;
    const QString word = Strings::text(QStringLiteral("conjugation.irregular"));
    QStringList parts;
    for (const IrregularMarks::Variant &variant : IrregularMarks::variants(m_form, m_irregular))
        parts << (variant.irregular ? variant.text + QStringLiteral(", ") + word : variant.text);
    return parts.join(QStringLiteral(" / "));
}

QString ConjugationFormItem::playName() const
{
    const QString spoken = m_pronoun.isEmpty() ? m_form : m_pronoun + QLatin1Char(' ') + m_form;
    return Strings::text(QStringLiteral("conjugation.play")).arg(spoken);
}

QString ConjugationFormItem::stopName() const
{
    const QString spoken = m_pronoun.isEmpty() ? m_form : m_pronoun + QLatin1Char(' ') + m_form;
    return Strings::text(QStringLiteral("conjugation.stop")).arg(spoken);
}

void ConjugationFormItem::toggleSpeech(QObject *progressView)
{
    if (m_controller && !isPlaceholder())
        m_controller->toggleSpeech(m_key, progressView);
}

void ConjugationFormItem::updateSpeaking()
{
    const bool speaking = m_controller && !isPlaceholder() && m_controller->speakingKey() == m_key;
    if (speaking == m_speaking)
        return;
    m_speaking = speaking;
    emit speakingChanged();
}

} // namespace norvella
