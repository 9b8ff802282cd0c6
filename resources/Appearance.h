#pragma once

#include <QColor>
#include <QObject>
#include <QQmlEngine>

namespace norvella {

// The app-wide look: named colours from the colour resource, and the bar
// tints derived from them. Exposed to QML as the Theme singleton.
class Appearance : public QObject
{
    Q_OBJECT
    QML_NAMED_ELEMENT(Theme)
    QML_SINGLETON
    Q_PROPERTY(QColor primary READ primary CONSTANT)
    Q_PROPERTY(QColor secondary READ secondary CONSTANT)
    Q_PROPERTY(QColor barText READ barText CONSTANT)
    Q_PROPERTY(QColor tabTint READ primary CONSTANT)
    Q_PROPERTY(QColor segmentTint READ segmentTint CONSTANT)
    Q_PROPERTY(QColor text READ text CONSTANT)
    Q_PROPERTY(QColor secondaryText READ secondaryText CONSTANT)
    Q_PROPERTY(QColor background READ background CONSTANT)
    Q_PROPERTY(QColor separator READ separator CONSTANT)
    Q_PROPERTY(QColor groupedBackground READ groupedBackground CONSTANT)
    Q_PROPERTY(QColor pressed READ pressed CONSTANT)
    Q_PROPERTY(QColor placeholderBackground READ placeholderBackground CONSTANT)
    Q_PROPERTY(QColor placeholderBorder READ placeholderBorder CONSTANT)
    Q_PROPERTY(int minimumTouchTarget READ minimumTouchTarget CONSTANT)

public:
    static Appearance &shared();
    static Appearance *create(QQmlEngine *, QJSEngine *);

    // Reads the named colours; false (and fallbacks) when the resource is unusable.
    bool load(const QString &resourcePath = QStringLiteral(":/norvella/colors.json"));
    QColor color(const QString &name) const;

    QColor primary() const { return color(QStringLiteral("ItalianPrimary")); }
    QColor secondary() const { return color(QStringLiteral("ItalianSecondary")); }
    QColor barText() const { return Qt::white; }
    QColor segmentTint() const { return QColor(0x55, 0x55, 0x55); }
    QColor text() const { return QColor(0x1C, 0x1C, 0x1E); }
    QColor secondaryText() const { return QColor(0x5F, 0x5F, 0x66); }
    QColor background() const { return Qt::white; }
    QColor separator() const { return QColor(0xD1, 0xD1, 0xD6); }
    // Behind grouped lists, whose rows and cards use the plain background.
    QColor groupedBackground() const { return QColor(0xF2, 0xF2, 0xF7); }
    QColor pressed() const { return QColor(0xE5, 0xE5, 0xEA); }
    // The "choose a verb" prompt: just off the white page, with a soft edge.
    QColor placeholderBackground() const { return QColor(0xFC, 0xFC, 0xFC); }
    QColor placeholderBorder() const { return QColor(0xCC, 0xCC, 0xCC); }
    int minimumTouchTarget() const { return 44; }

    static double contrastRatio(const QColor &a, const QColor &b);

private:
    Appearance() = default;
    QHash<QString, QColor> m_colors;
};

} // namespace norvella
