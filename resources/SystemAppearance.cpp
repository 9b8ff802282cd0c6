#include "SystemAppearance.h"

#include "CrashLog.h"

#include <QDir>
#include <QEvent>
#include <QFile>
#include <QGuiApplication>
#include <QPalette>
#include <QStandardPaths>

#ifdef NORVELLA_HAS_DBUS
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVariant>
#endif

namespace norvella {

namespace {

const QString PortalService = QStringLiteral("org.freedesktop.portal.Desktop");
const QString PortalPath = QStringLiteral("/org/freedesktop/portal/desktop");
const QString PortalInterface = QStringLiteral("org.freedesktop.portal.Settings");
const QString AppearanceGroup = QStringLiteral("org.freedesktop.appearance");
const QString ColorSchemeKey = QStringLiteral("color-scheme");
// A portal that does not answer at once is as good as none: the window must not wait.
constexpr int PortalTimeoutMs = 250;

std::optional<uint> readPortal()
{
#ifdef NORVELLA_HAS_DBUS
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected())
        return std::nullopt;
    QDBusMessage call = QDBusMessage::createMethodCall(PortalService, PortalPath, PortalInterface, QStringLiteral("Read"));
    call << AppearanceGroup << ColorSchemeKey;
    // Starting a portal just for this would cost more than the answer is worth.
    call.setAutoStartService(false);
    const QDBusMessage reply = bus.call(call, QDBus::Block, PortalTimeoutMs);
    if (reply.type() != QDBusMessage::ReplyMessage || reply.arguments().isEmpty())
        return std::nullopt;
    // Read answers a variant inside a variant.
    QVariant value = reply.arguments().constFirst();
    while (value.canConvert<QDBusVariant>() && value.metaType() == QMetaType::fromType<QDBusVariant>())
        value = value.value<QDBusVariant>().variant();
    bool ok = false;
    const uint scheme = value.toUInt(&ok);
    if (!ok) {
        CrashLog::log(QStringLiteral("The settings portal's color-scheme is not a number; ignoring it"));
        return std::nullopt;
    }
    return scheme;
#else
    return std::nullopt;
#endif
}

QString readGtkSettings()
{
    const QString config = QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation);
    for (const QString &version : {QStringLiteral("gtk-4.0"), QStringLiteral("gtk-3.0")}) {
        QFile file(QDir(config).filePath(version + QStringLiteral("/settings.ini")));
        if (file.open(QIODevice::ReadOnly))
            return QString::fromUtf8(file.readAll());
    }
    return {};
}

// The value of `key` in a GTK settings.ini, or empty.
QString gtkSetting(const QString &text, const QString &key)
{
    const QStringList lines = text.split(QLatin1Char('\n'));
    for (const QString &line : lines) {
        const qsizetype equals = line.indexOf(QLatin1Char('='));
        if (equals > 0 && line.left(equals).trimmed() == key)
            return line.mid(equals + 1).trimmed();
    }
    return {};
}

} // namespace

SchemeDecision decideColorScheme(const SchemeSignals &in)
{
    const QString override = in.override.trimmed().toLower();
    if (override == QLatin1String("dark"))
        return {ColorScheme::Dark, QStringLiteral("override")};
    if (override == QLatin1String("light"))
        return {ColorScheme::Light, QStringLiteral("override")};
    if (!override.isEmpty())
        CrashLog::log(QStringLiteral("NORVELLA_COLOR_SCHEME=%1 is neither dark nor light; asking the desktop").arg(in.override));

    if (in.portal == 1u)
        return {ColorScheme::Dark, QStringLiteral("portal")};
    if (in.portal == 2u)
        return {ColorScheme::Light, QStringLiteral("portal")};

    // GTK names dark variants "Theme:dark" here and "Theme-dark" in settings.ini.
    if (!in.gtkTheme.isEmpty())
        return {in.gtkTheme.toLower().contains(QLatin1String("dark")) ? ColorScheme::Dark : ColorScheme::Light,
                QStringLiteral("GTK_THEME")};

    const QString preferDark = gtkSetting(in.gtkSettings, QStringLiteral("gtk-application-prefer-dark-theme")).toLower();
    if (preferDark == QLatin1String("1") || preferDark == QLatin1String("true"))
        return {ColorScheme::Dark, QStringLiteral("gtk settings")};
    if (gtkSetting(in.gtkSettings, QStringLiteral("gtk-theme-name")).toLower().endsWith(QLatin1String("-dark")))
        return {ColorScheme::Dark, QStringLiteral("gtk settings")};

    if (in.windowLightness)
        return {*in.windowLightness < 128 ? ColorScheme::Dark : ColorScheme::Light, QStringLiteral("palette")};
    return {ColorScheme::Light, QStringLiteral("default")};
}

SystemAppearance::SystemAppearance(QObject *parent) : QObject(parent)
{
    // The core instance: a program without a GUI application (a test, a tool) has no
    // palette to follow but still reads the desktop's setting.
    if (QCoreApplication *app = QCoreApplication::instance())
        app->installEventFilter(this);
    watchPortal();
}

SchemeSignals SystemAppearance::gather()
{
    SchemeSignals in;
    in.override = qEnvironmentVariable("NORVELLA_COLOR_SCHEME");
    // The override decides alone; asking the bus would only slow tests down.
    if (!in.override.isEmpty())
        return in;
    in.portal = readPortal();
    in.gtkTheme = qEnvironmentVariable("GTK_THEME");
    in.gtkSettings = readGtkSettings();
    // The app never sets an application palette, so this is the platform's.
    if (qobject_cast<QGuiApplication *>(QCoreApplication::instance()))
        in.windowLightness = QGuiApplication::palette().color(QPalette::Window).lightness();
    return in;
}

bool SystemAppearance::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == QCoreApplication::instance() && event->type() == QEvent::ApplicationPaletteChange)
        emit changed();
    else if (watched == QCoreApplication::instance() && event->type() == QEvent::ApplicationFontChange)
        emit fontChanged();
    return QObject::eventFilter(watched, event);
}

void SystemAppearance::portalSettingChanged(const QString &group, const QString &key)
{
    if (group == AppearanceGroup && key == ColorSchemeKey)
        emit changed();
}

void SystemAppearance::watchPortal()
{
#ifdef NORVELLA_HAS_DBUS
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (bus.isConnected())
        bus.connect(PortalService, PortalPath, PortalInterface, QStringLiteral("SettingChanged"), this,
                    SLOT(portalSettingChanged(QString, QString)));
#endif
}

} // namespace norvella
