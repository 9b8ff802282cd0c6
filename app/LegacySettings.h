#pragma once

#include <QString>

namespace norvella {

class Settings;

// Moves the preferences of the old "norvella.plist" file into the settings
// store, then deletes the file. Returns true when a file was found and read.
bool migrateLegacySettings(Settings &settings, const QString &documentsDirectory);

} // namespace norvella
