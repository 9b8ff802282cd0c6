#include "Appearance.h"

#include "CrashLog.h"

#include <QFile>
#include <QFont>
#include <QGuiApplication>
#include <QJsonDocument>
#include <QJsonObject>

#include <cmath>

namespace norvella {

namespace {

const char *schemeName(ColorScheme scheme)
{
    return scheme == ColorScheme::Dark ? "dark" : "light";
}

int index(ColorScheme scheme)
{
    return scheme == ColorScheme::Dark ? 1 : 0;
}

// The usual UI font of a Linux desktop (GNOME's 11 pt; KDE's 10 pt and Qt's
// own 9 pt stay at the design sizes too). Larger system text scales ours.
constexpr qreal ReferencePointSize = 11.0;
// Beyond this the bars and rows have no room left, whatever the system asks.
constexpr qreal MaximumTextScale = 2.0;

} // namespace

Appearance::Appearance()
{
    connect(&m_system, &SystemAppearance::changed, this, &Appearance::refreshSystemScheme);
    connect(&m_system, &SystemAppearance::fontChanged, this, &Appearance::refreshTextScale);
    m_observers.add(Notifications::AppearanceChanged,
                    [this](const Notification &notification) { setChoice(notification.object.toString()); });
}

Appearance &Appearance::shared()
{
    static Appearance *appearance = [] {
        auto *a = new Appearance;
        a->load();
        a->refreshSystemScheme();
        a->refreshTextScale();
        return a;
    }();
    return *appearance;
}

Appearance *Appearance::create(QQmlEngine *, QJSEngine *)
{
    Appearance *instance = &shared();
    QJSEngine::setObjectOwnership(instance, QJSEngine::CppOwnership);
    return instance;
}

bool Appearance::load(const QString &resourcePath)
{
    m_colors.clear();
    for (auto &palette : m_palettes)
        palette.clear();
    QFile file(resourcePath);
    const QJsonDocument doc = file.open(QIODevice::ReadOnly) ? QJsonDocument::fromJson(file.readAll()) : QJsonDocument();
    if (!doc.isObject()) {
        CrashLog::log(QStringLiteral("Unable to read colours from %1; using the built-in ones").arg(resourcePath));
        emit paletteChanged();
        return false;
    }
    const QJsonObject object = doc.object();
    auto read = [&resourcePath](const QJsonObject &from, QHash<QString, QColor> &into, const QString &where) {
        for (auto it = from.begin(); it != from.end(); ++it) {
            if (it.value().isObject())
                continue;
            const QColor value = QColor::fromString(it.value().toString());
            if (value.isValid())
                into.insert(it.key(), value);
            else
                CrashLog::log(QStringLiteral("Colour %1%2 in %3 is not a colour; ignoring it")
                                      .arg(where, it.key(), resourcePath));
        }
    };
    read(object, m_colors, QString());
    for (ColorScheme scheme : {ColorScheme::Light, ColorScheme::Dark}) {
        const QString name = QString::fromLatin1(schemeName(scheme));
        read(object.value(name).toObject(), m_palettes[index(scheme)], name + QLatin1Char('.'));
    }
    emit paletteChanged();
    return true;
}

QColor Appearance::color(const QString &name) const
{
    const auto it = m_colors.constFind(name);
    if (it != m_colors.constEnd())
        return *it;
    // Dark enough for white text, so a missing resource never makes bars unreadable.
    return QColor(0x33, 0x33, 0x33);
}

QColor Appearance::role(ColorScheme scheme, const QString &name) const
{
    const QHash<QString, QColor> &palette = m_palettes[index(scheme)];
    const auto it = palette.constFind(name);
    if (it != palette.constEnd())
        return *it;
    // Without the resource: black on white (white on black when dark), bars,
    // selections and notices the other way round, so every pair stays readable.
    static const QStringList grounds{QStringLiteral("background"), QStringLiteral("groupedBackground"),
                                     QStringLiteral("pressed"),    QStringLiteral("placeholderBackground"),
                                     QStringLiteral("bar"),        QStringLiteral("barPressed"),
                                     QStringLiteral("selection"),  QStringLiteral("notice"),
                                     QStringLiteral("noticePressed")};
    static const QStringList inverted{QStringLiteral("bar"),       QStringLiteral("barPressed"),
                                      QStringLiteral("barText"),   QStringLiteral("selection"),
                                      QStringLiteral("selectionText"), QStringLiteral("notice"),
                                      QStringLiteral("noticePressed"), QStringLiteral("noticeText")};
    bool white = grounds.contains(name);
    if (inverted.contains(name))
        white = !white;
    if (scheme == ColorScheme::Dark)
        white = !white;
    return white ? QColor(Qt::white) : QColor(Qt::black);
}

QStringList Appearance::roleNames(ColorScheme scheme) const
{
    QStringList names = m_palettes[index(scheme)].keys();
    names.sort();
    return names;
}

const QList<Appearance::ContrastPair> &Appearance::contrastPairs()
{
    auto text = [](const char *fg, const char *bg) {
        return ContrastPair{QString::fromLatin1(fg), QString::fromLatin1(bg), TextContrast};
    };
    auto control = [](const char *fg, const char *bg) {
        return ContrastPair{QString::fromLatin1(fg), QString::fromLatin1(bg), ControlContrast};
    };
    static const QList<ContrastPair> pairs{
            text("text", "background"),
            text("text", "groupedBackground"),
            text("text", "pressed"),
            text("secondaryText", "background"),
            text("secondaryText", "groupedBackground"),
            text("secondaryText", "pressed"),
            text("secondaryText", "placeholderBackground"),
            // Tense titles, links, sheet buttons, the selected tab's label.
            text("primary", "background"),
            text("primary", "groupedBackground"),
            text("primary", "pressed"),
            text("selection", "background"),
            text("selectionText", "selection"),
            text("controlBorder", "background"),
            text("controlBorder", "pressed"),
            text("barText", "bar"),
            text("barText", "barPressed"),
            text("destructive", "background"),
            text("destructive", "pressed"),
            text("noticeText", "notice"),
            text("noticeText", "noticePressed"),
            // A selected segment against its neighbours, outlines and the focus ring.
            control("selection", "pressed"),
            control("controlBorder", "groupedBackground"),
            control("focusRing", "background"),
            control("focusRing", "groupedBackground"),
            control("notice", "background"),
    };
    return pairs;
}

const QStringList &Appearance::decorativeRoles()
{
    static const QStringList roles{QStringLiteral("separator"), QStringLiteral("placeholderBorder")};
    return roles;
}

void Appearance::setChoice(const QString &choice)
{
    static const QStringList known{QStringLiteral("system"), QStringLiteral("light"), QStringLiteral("dark")};
    QString wanted = choice;
    if (!known.contains(wanted)) {
        CrashLog::log(QStringLiteral("Unknown appearance \"%1\"; following the system").arg(choice));
        wanted = known.first();
    }
    if (wanted != m_choice) {
        m_choice = wanted;
        emit choiceChanged();
    }
    applyScheme();
}

void Appearance::refreshSystemScheme()
{
    const SchemeDecision decision = m_system.current();
    const QString said = QStringLiteral("The system appearance is %1 (from %2)")
                                 .arg(QLatin1String(schemeName(decision.scheme)), decision.source);
    if (said != m_lastSystemReport)
        CrashLog::log(said);
    m_lastSystemReport = said;
    m_systemScheme = decision.scheme;
    applyScheme();
}

void Appearance::applyScheme()
{
    const ColorScheme wanted = m_choice == QLatin1String("dark")    ? ColorScheme::Dark
                             : m_choice == QLatin1String("light") ? ColorScheme::Light
                                                                  : m_systemScheme;
    if (wanted == m_scheme)
        return;
    m_scheme = wanted;
    emit paletteChanged();
}

qreal Appearance::textScaleFor(const QString &override, qreal systemPointSize)
{
    if (!override.trimmed().isEmpty()) {
        QString number = override.trimmed();
        const bool percent = number.endsWith(QLatin1Char('%'));
        if (percent)
            number.chop(1);
        bool ok = false;
        const qreal value = number.toDouble(&ok) / (percent ? 100.0 : 1.0);
        if (ok && value > 0)
            return std::clamp(value, 0.5, MaximumTextScale);
        CrashLog::log(QStringLiteral("NORVELLA_TEXT_SCALE=%1 is not a scale such as 1.5 or 150%; using the system size")
                              .arg(override));
    }
    if (systemPointSize <= 0)
        return 1.0;
    return std::clamp(systemPointSize / ReferencePointSize, 1.0, MaximumTextScale);
}

void Appearance::refreshTextScale()
{
    const qreal pointSize = qobject_cast<QGuiApplication *>(QCoreApplication::instance())
            ? QGuiApplication::font().pointSizeF()
            : -1;
    const qreal scale = textScaleFor(qEnvironmentVariable("NORVELLA_TEXT_SCALE"), pointSize);
    if (qFuzzyCompare(scale, m_textScale))
        return;
    m_textScale = scale;
    emit typeChanged();
}

double Appearance::contrastRatio(const QColor &a, const QColor &b)
{
    auto luminance = [](const QColor &c) {
        auto channel = [](double v) { return v <= 0.03928 ? v / 12.92 : std::pow((v + 0.055) / 1.055, 2.4); };
        return 0.2126 * channel(c.redF()) + 0.7152 * channel(c.greenF()) + 0.0722 * channel(c.blueF());
    };
    const double la = luminance(a), lb = luminance(b);
    return (std::max(la, lb) + 0.05) / (std::min(la, lb) + 0.05);
}

} // namespace norvella
