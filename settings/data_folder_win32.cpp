#include <shlobj.h>
#include <windows.h>

#include <QDir>
#include <array>

#include "identity.h"
#include "settings/data_folder.h"

namespace quarn {

QString DataFolder() {
  std::array<wchar_t, MAX_PATH> base{};
  SHGetSpecialFolderPathW(nullptr, base.data(), CSIDL_APPDATA, FALSE);
  const QString makers =
      QString::fromWCharArray(base.data()) + QLatin1Char('\\') + QString::fromLatin1(identity::kMaker);
  // A failure shows when the first file is to be written there.
  CreateDirectoryW(reinterpret_cast<const wchar_t*>(makers.utf16()), nullptr);
  return makers + QLatin1Char('\\') + QString::fromLatin1(identity::kName) + QLatin1Char('\\');
}

void MakeDataFolder(const QString& dataFolder) {
  CreateDirectoryW(reinterpret_cast<const wchar_t*>(QDir::toNativeSeparators(dataFolder).utf16()), nullptr);
}

}  // namespace quarn
