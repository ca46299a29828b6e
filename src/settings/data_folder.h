#pragma once

#include <QString>

namespace quarn {

/// The folder of this user's working settings file: the system's folder for application data, then the
/// maker's folder, then the program's; ends with a separator. An absolute path, or empty if the system
/// defines none. Creates nothing: programs that only read settings leave no folders behind.
QString DataFolder();

/// Why DataFolder() is empty, as one sentence for the user.
QString WhyNoDataFolder();

/// Creates the data folder and missing folders above it, for this user alone. Called by programs that write
/// settings, at the start. Existing folders do not change. Returns whether it is there; on Linux errno says
/// why not.
bool MakeDataFolder(const QString& dataFolder);

/// The working settings file in a data folder.
inline QString WorkingSettingsFile(const QString& dataFolder) {
  return dataFolder + QStringLiteral("Quarn.ini");
}

/// The folder that assigns COM numbers to serial devices, if the system does not.
inline QString PortsFolder(const QString& dataFolder) { return dataFolder + QStringLiteral("ports"); }

/// Returns when the names of the files beside `path` are on the disk as they are now: until then a power loss
/// may take back one renaming and leave a later one. False if the system reports a failure.
[[nodiscard]] bool FlushNamesBeside(const QString& path);

}  // namespace quarn
