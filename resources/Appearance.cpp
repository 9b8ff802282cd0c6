#include "Appearance.h"

#include "CrashLog.h"

#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>

#include <cmath>

namespace norvella {

Appearance &Appearance::shared()
{
    static Appearance *appearance = [] {
        auto *a = new Appearance;
        a->load();
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
    QFile file(resourcePath);
    const QJsonDocument doc = file.open(QIODevice::ReadOnly) ? QJsonDocument::fromJson(file.readAll()) : QJsonDocument();
    if (!doc.isObject()) {
        CrashLog::log(QStringLiteral("Unable to read colours from %1; using the built-in ones").arg(resourcePath));
        return false;
    }
    const QJsonObject object = doc.object();
    for (auto it = object.begin(); it != object.end(); ++it) {
        const QColor value = QColor::fromString(it.value().toString());
        if (value.isValid())
            m_colors.insert(it.key(), value);
    }
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
