#include "send/settings_choice.h"

#include <QFile>
#include <filesystem>
#include <system_error>

#include "send/standard_output.h"
#include "settings/data_folder.h"
#include "settings/key_store.h"
#include "settings/settings_load_save.h"

namespace quarn::send {
namespace {

/// Why the file cannot be read; empty if it can.
QString WhyNotReadable(const QString& path) {
  using std::filesystem::file_type;
  std::error_code error;
  switch (std::filesystem::status(path.toStdU16String(), error).type()) {
    case file_type::regular:
      break;
    case file_type::not_found:
      return QStringLiteral("no such settings file");
    case file_type::none:
      return QString::fromStdString(error.message());
    case file_type::directory:
      return QStringLiteral("a folder, and no settings file");
    default:
      return QStringLiteral("a device or a pipe, and no settings file");
  }
  QFile file(path);
  return file.open(QIODevice::ReadOnly) ? QString() : file.errorString();
}

/// Why a readable file is not usable.
QString WhyNotComplete(const QString& path) {
  return ReadWholeText(path) ? QStringLiteral("not a complete settings file")
                             : QStringLiteral("not a settings file: it is no UTF-8 text");
}

}  // namespace

bool LoadChosenSettings(const Options& options, const QString& dataFolder, SettingsRecord& settings) {
  const QString file =
      options.settingsFile.isEmpty() ? WorkingSettingsFile(dataFolder) : options.settingsFile;
  QString reason = WhyNotReadable(file);
  if (reason.isEmpty() && LoadSettings(file, settings) != LoadResult::Loaded) reason = WhyNotComplete(file);
  if (!reason.isEmpty()) {
    Complain(file + QStringLiteral(": ") + reason);
    return false;
  }
  if (!options.port.isEmpty()) settings.comPort = options.port;
  return true;
}

}  // namespace quarn::send
