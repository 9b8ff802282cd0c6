#pragma once

#include <QString>

namespace norvella::BuildInfo {

// The version shown to users, "1.0.0"; the application's own when it set one.
QString shortVersion();
// The build number that follows the version in support mail; may be empty.
QString buildNumber();
// The maker's web site and support contact page, fixed when the app is built.
QString webUrl();
QString contactUrl();

} // namespace norvella::BuildInfo
