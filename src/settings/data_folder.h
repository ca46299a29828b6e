#pragma once

#include <QString>

namespace quarn {

/// Where this user's working settings file lives: the system's folder for application data, then the
/// maker's folder, then the program's; ends with a separator. An absolute path, or empty where the system
/// names none. Nothing is made: who only reads settings leaves no folders behind.
QString DataFolder();

/// Why DataFolder() is empty, as one sentence for a person.
QString WhyNoDataFolder();

/// Makes the data folder and what is missing above it, for this user alone. Called by who keeps settings, as
/// soon as the folder is named. What is there stays as it is; a failure shows when the first file is to be
/// written there.
void MakeDataFolder(const QString& dataFolder);

/// The working settings file in a data folder.
inline QString WorkingSettingsFile(const QString& dataFolder) {
  return dataFolder + QStringLiteral("Quarn.ini");
}

/// The folder that gives serial devices their COM numbers, where the system does not.
inline QString PortsFolder(const QString& dataFolder) { return dataFolder + QStringLiteral("ports"); }

}  // namespace quarn
