#pragma once

#include "NotificationCenter.h"
#include "SystemAppearance.h"

#include <QColor>
#include <QHash>
#include <QObject>
#include <QQmlEngine>

namespace norvella {

// The app-wide look: a light and a dark palette of colour roles from the
// colour resource, the one in use chosen by the "Appearance" setting or the
// desktop, and type sizes that follow the system text size. Exposed to QML as
// the Theme singleton; every property changes live.
class Appearance : public QObject
{
    Q_OBJECT
    QML_NAMED_ELEMENT(Theme)
    QML_SINGLETON
    Q_PROPERTY(bool dark READ dark NOTIFY paletteChanged)
    Q_PROPERTY(QString choice READ choice NOTIFY choiceChanged)

    Q_PROPERTY(QColor background READ background NOTIFY paletteChanged)
    Q_PROPERTY(QColor groupedBackground READ groupedBackground NOTIFY paletteChanged)
    Q_PROPERTY(QColor pressed READ pressed NOTIFY paletteChanged)
    Q_PROPERTY(QColor text READ text NOTIFY paletteChanged)
    Q_PROPERTY(QColor secondaryText READ secondaryText NOTIFY paletteChanged)
    Q_PROPERTY(QColor primary READ primary NOTIFY paletteChanged)
    Q_PROPERTY(QColor bar READ bar NOTIFY paletteChanged)
    Q_PROPERTY(QColor barText READ barText NOTIFY paletteChanged)
    Q_PROPERTY(QColor barPressed READ barPressed NOTIFY paletteChanged)
    Q_PROPERTY(QColor selection READ selection NOTIFY paletteChanged)
    Q_PROPERTY(QColor selectionText READ selectionText NOTIFY paletteChanged)
    Q_PROPERTY(QColor controlBorder READ controlBorder NOTIFY paletteChanged)
    Q_PROPERTY(QColor separator READ separator NOTIFY paletteChanged)
    Q_PROPERTY(QColor destructive READ destructive NOTIFY paletteChanged)
    Q_PROPERTY(QColor notice READ notice NOTIFY paletteChanged)
    Q_PROPERTY(QColor noticeText READ noticeText NOTIFY paletteChanged)
    Q_PROPERTY(QColor noticePressed READ noticePressed NOTIFY paletteChanged)
    Q_PROPERTY(QColor placeholderBackground READ placeholderBackground NOTIFY paletteChanged)
    Q_PROPERTY(QColor placeholderBorder READ placeholderBorder NOTIFY paletteChanged)
    Q_PROPERTY(QColor focusRing READ focusRing NOTIFY paletteChanged)
    // The brand's red, the other end of the drawer's gradient.
    Q_PROPERTY(QColor secondary READ secondary NOTIFY paletteChanged)
    // Older names, kept so screens written against them read the new roles.
    Q_PROPERTY(QColor tabTint READ selection NOTIFY paletteChanged)
    Q_PROPERTY(QColor segmentTint READ controlBorder NOTIFY paletteChanged)

    Q_PROPERTY(qreal textScale READ textScale NOTIFY typeChanged)
    Q_PROPERTY(int bodySize READ bodySize NOTIFY typeChanged)
    Q_PROPERTY(int secondarySize READ secondarySize NOTIFY typeChanged)
    Q_PROPERTY(int captionSize READ captionSize NOTIFY typeChanged)
    Q_PROPERTY(int headlineSize READ headlineSize NOTIFY typeChanged)
    Q_PROPERTY(int titleSize READ titleSize NOTIFY typeChanged)
    Q_PROPERTY(int largeTitleSize READ largeTitleSize NOTIFY typeChanged)
    Q_PROPERTY(int minimumTouchTarget READ minimumTouchTarget CONSTANT)

public:
    // A colour pair the screens draw, and the contrast it must keep in both palettes.
    struct ContrastPair
    {
        QString foreground;
        QString background;
        double minimum;
    };
    static constexpr double TextContrast = 4.5;
    static constexpr double ControlContrast = 3.0;

    static Appearance &shared();
    static Appearance *create(QQmlEngine *, QJSEngine *);

    // Reads both palettes; false (and fallbacks) when the resource is unusable.
    bool load(const QString &resourcePath = QStringLiteral(":/norvella/colors.json"));
    // A named brand colour ("ItalianPrimary", "ItalianSecondary").
    QColor color(const QString &name) const;
    // A role of the given palette, or of the one in use.
    QColor role(ColorScheme scheme, const QString &name) const;
    QColor role(const QString &name) const { return role(scheme(), name); }
    QStringList roleNames(ColorScheme scheme) const;
    static const QList<ContrastPair> &contrastPairs();
    // Roles drawn for structure only, beside text or a border that carries the meaning.
    static const QStringList &decorativeRoles();

    // "system", "light" or "dark", as the setting stores it; anything else counts as "system".
    void setChoice(const QString &choice);
    QString choice() const { return m_choice; }
    ColorScheme scheme() const { return m_scheme; }
    bool dark() const { return m_scheme == ColorScheme::Dark; }
    // Asks the desktop again; the choice "system" then follows it.
    void refreshSystemScheme();

    // Text size relative to the design sizes: NORVELLA_TEXT_SCALE ("1.5" or "150%"),
    // else the system font against the usual desktop default, never below 1.
    qreal textScale() const { return m_textScale; }
    static qreal textScaleFor(const QString &override, qreal systemPointSize);
    void refreshTextScale();

    QColor background() const { return role(QStringLiteral("background")); }
    QColor groupedBackground() const { return role(QStringLiteral("groupedBackground")); }
    QColor pressed() const { return role(QStringLiteral("pressed")); }
    QColor text() const { return role(QStringLiteral("text")); }
    QColor secondaryText() const { return role(QStringLiteral("secondaryText")); }
    QColor primary() const { return role(QStringLiteral("primary")); }
    QColor bar() const { return role(QStringLiteral("bar")); }
    QColor barText() const { return role(QStringLiteral("barText")); }
    QColor barPressed() const { return role(QStringLiteral("barPressed")); }
    QColor selection() const { return role(QStringLiteral("selection")); }
    QColor selectionText() const { return role(QStringLiteral("selectionText")); }
    QColor controlBorder() const { return role(QStringLiteral("controlBorder")); }
    QColor separator() const { return role(QStringLiteral("separator")); }
    QColor destructive() const { return role(QStringLiteral("destructive")); }
    QColor notice() const { return role(QStringLiteral("notice")); }
    QColor noticeText() const { return role(QStringLiteral("noticeText")); }
    QColor noticePressed() const { return role(QStringLiteral("noticePressed")); }
    QColor placeholderBackground() const { return role(QStringLiteral("placeholderBackground")); }
    QColor placeholderBorder() const { return role(QStringLiteral("placeholderBorder")); }
    QColor focusRing() const { return role(QStringLiteral("focusRing")); }
    QColor secondary() const { return color(QStringLiteral("ItalianSecondary")); }

    int bodySize() const { return scaled(16); }
    // Translations, subtitles, section headers and footers.
    int secondarySize() const { return scaled(13); }
    int captionSize() const { return scaled(13); }
    int headlineSize() const { return scaled(17); }
    int titleSize() const { return scaled(20); }
    int largeTitleSize() const { return scaled(24); }
    int minimumTouchTarget() const { return 44; }

    static double contrastRatio(const QColor &a, const QColor &b);

signals:
    void paletteChanged();
    void choiceChanged();
    void typeChanged();

private:
    Appearance();
    void applyScheme();
    int scaled(int designSize) const { return qRound(designSize * m_textScale); }

    QHash<QString, QColor> m_colors;
    QHash<QString, QColor> m_palettes[2];
    QString m_choice = QStringLiteral("system");
    ColorScheme m_scheme = ColorScheme::Light;
    ColorScheme m_systemScheme = ColorScheme::Light;
    qreal m_textScale = 1.0;
    QString m_lastSystemReport;
    SystemAppearance m_system;
    ObserverSet m_observers;
};

} // namespace norvella
