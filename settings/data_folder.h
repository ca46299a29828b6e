#pragma once

#include <QString>

namespace quarn {

/// Where this user's working settings file lives: the system's folder for application data, then the
/// maker's folder, then the program's; ends with a separator. The maker's folder is created when it is
/// missing; the program's own is left to start-up.
QString DataFolder();

/// Makes the data folder, its last level alone and for this user alone. One that is there stays as it is; a
/// failure shows when the first file is to be written there.
void MakeDataFolder(const QString& dataFolder);

/// The working settings file in a data folder.
inline QString WorkingSettingsFile(const QString& dataFolder) {
  return dataFolder + QStringLiteral("Quarn.ini");
}

/// The folder that gives serial devices their COM numbers, where the system does not.
inline QString PortsFolder(const QString& dataFolder) { return dataFolder + QStringLiteral("ports"); }

}  // namespace quarn
