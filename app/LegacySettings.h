#pragma once

#include <QString>

namespace norvella {

class Settings;

// Moves the preferences of the old "norvella.plist" file into the settings
// store, then deletes the file. Returns true when a file was found and read.
//
// A file that cannot be read is renamed to "norvella.plist.corrupt" and never
// read again. While it is being parsed the file is named
// "norvella.plist.reading", so a launch that dies inside the parser leaves it
// under that name and the next launch moves it aside instead of dying again.
bool migrateLegacySettings(Settings &settings, const QString &documentsDirectory);

namespace LegacySettingsFiles {
inline constexpr char Name[] = "norvella.plist";
inline constexpr char Reading[] = "norvella.plist.reading";
inline constexpr char Corrupt[] = "norvella.plist.corrupt";
}

} // namespace norvella
