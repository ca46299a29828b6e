#include <shlobj.h>
#include <windows.h>

#include <QDir>
#include <array>

#include "identity.h"
#include "settings/data_folder.h"

namespace quarn {

QString DataFolder() {
  std::array<wchar_t, MAX_PATH> base{};
  if (SHGetSpecialFolderPathW(nullptr, base.data(), CSIDL_APPDATA, FALSE) == FALSE) return {};
  return QString::fromWCharArray(base.data()) + QLatin1Char('\\') + QString::fromLatin1(identity::kMaker) +
         QLatin1Char('\\') + QString::fromLatin1(identity::kName) + QLatin1Char('\\');
}

QString WhyNoDataFolder() {
  return QStringLiteral("There is no folder for the settings: Windows names none for application data.");
}

bool MakeDataFolder(const QString& dataFolder) { return QDir().mkpath(dataFolder); }

bool FlushNamesBeside(const QString& /*path*/) {
  // The file system logs renamings in their order.
  return true;
}

}  // namespace quarn
