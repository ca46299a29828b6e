#pragma once

#include <QString>

namespace quarn {

/// The session's runtime folder, deleted with the session; empty if the system provides none that is this
/// user's alone.
QString SessionFolder();

/// The folder of the settings, in which another user cannot take a name first. Made if it is missing; empty
/// if the system defines none.
QString SettingsFolder();

}  // namespace quarn
