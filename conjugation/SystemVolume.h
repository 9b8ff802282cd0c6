#pragma once

#include <QString>

#include <optional>

namespace norvella {

// The default output's playback volume from the system mixer, 0 to 1 (a muted
// output reads as 0). Empty when there is no mixer or no volume control, which
// callers treat as "not low".
namespace SystemVolume {
std::optional<double> defaultOutputVolume(const QString &mixerName = QStringLiteral("default"));
// ALSA reports every failed lookup on stderr; the app handles them itself.
void silenceAlsaErrors();
}

} // namespace norvella
