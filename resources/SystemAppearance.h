#pragma once

#include <QObject>
#include <QString>

#include <optional>

namespace norvella {

enum class ColorScheme { Light, Dark };

// Everything a Linux desktop publishes about light or dark. Qt 6.4 has no
// QStyleHints::colorScheme, so the app reads these sources itself.
struct SchemeSignals
{
    // NORVELLA_COLOR_SCHEME: "dark" or "light" wins over the desktop, for tests and screenshots.
    QString override;
    // The freedesktop settings portal's "org.freedesktop.appearance" "color-scheme":
    // 0 no preference, 1 prefers dark, 2 prefers light; absent without a portal.
    std::optional<uint> portal;
    // GTK_THEME, e.g. "Adwaita:dark".
    QString gtkTheme;
    // The text of gtk-4.0/settings.ini, else gtk-3.0/settings.ini.
    QString gtkSettings;
    // HSL lightness (0-255) of the platform palette's window colour; absent without one.
    std::optional<int> windowLightness;
};

struct SchemeDecision
{
    ColorScheme scheme;
    // Which source decided, for the log: "override", "portal", "GTK_THEME", "gtk settings", "palette", "default".
    QString source;
};

// The first source that states a preference decides, in the order SchemeSignals lists them.
SchemeDecision decideColorScheme(const SchemeSignals &in);

// Watches the desktop and says when its light/dark choice may have changed.
class SystemAppearance : public QObject
{
    Q_OBJECT

public:
    explicit SystemAppearance(QObject *parent = nullptr);

    static SchemeSignals gather();
    SchemeDecision current() const { return decideColorScheme(gather()); }

signals:
    void changed();
    // The application font changed: the system text size may have.
    void fontChanged();

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private slots:
    void portalSettingChanged(const QString &group, const QString &key);

private:
    void watchPortal();
};

} // namespace norvella
