#include "send/settings_choice.h"

#include <QFile>
#include <filesystem>
#include <system_error>

#include "base/system_path.h"
#include "send/connect.h"
#include "send/standard_output.h"
#include "serial/line_parameters.h"
#include "settings/data_folder.h"
#include "settings/key_store.h"
#include "settings/setting_values.h"
#include "settings/settings_load_save.h"
#include "settings/settings_table.h"

namespace quarn::send {
namespace {

/// Why the file cannot be read; empty if it can.
QString WhyNotReadable(const QString& path) {
  using std::filesystem::file_type;
  std::error_code error;
  switch (std::filesystem::status(SystemPath(path), error).type()) {
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

QString ChosenFile(const Options& options, const QString& dataFolder) {
  return options.settingsFile.isEmpty() ? WorkingSettingsFile(dataFolder) : options.settingsFile;
}

bool HasWorkingFile(const QString& dataFolder) {
  std::error_code error;
  return std::filesystem::status(SystemPath(WorkingSettingsFile(dataFolder)), error).type() !=
         std::filesystem::file_type::not_found;
}

/// With a port in the options no file is needed, but one that is there is used.
bool NeedsNoFile(const Options& options, const QString& dataFolder) {
  if (options.defaults) return true;
  if (!options.settingsFile.isEmpty() || options.port.isEmpty()) return false;
  return dataFolder.isEmpty() || !HasWorkingFile(dataFolder);
}

/// Returns false and prints the reason if they cannot be read.
bool Load(const QString& file, SettingsRecord& settings) {
  QString reason = WhyNotReadable(file);
  if (reason.isEmpty() && LoadSettings(file, settings) != LoadResult::Loaded) reason = WhyNotComplete(file);
  if (reason.isEmpty()) return true;
  Complain(file + QStringLiteral(": ") + reason);
  return false;
}

}  // namespace

void ApplyOptions(const Options& options, SettingsRecord& settings) {
  if (!options.port.isEmpty()) settings.comPort = PortNameOf(options.port);
  const LineOptions& line = options.line;
  if (line.rate) settings.comBps = QString::number(*line.rate);
  settings.comBits = line.dataBits.value_or(settings.comBits);
  settings.comParity = line.parity.value_or(settings.comParity);
  settings.comStop = line.stopBits.value_or(settings.comStop);
  settings.delimiter = line.delimiter.value_or(settings.delimiter);
  settings.comBuf = line.buffer.value_or(settings.comBuf);
  settings.portSpeed = line.speed.value_or(settings.portSpeed);
}

QString ReplacedRate(const Options& options, const SettingsRecord& settings) {
  if (options.line.rate || FindValue(values::kBitRates, settings.comBps) != nullptr) return {};
  return QStringLiteral(
             "the settings name %1 bps, which they do not offer; the line runs at %2 (--bps sets any rate)")
      .arg(settings.comBps)
      .arg(BaudRateOf(settings.comBps));
}

bool LoadChosenSettings(const Options& options, const QString& dataFolder, SettingsRecord& settings) {
  if (NeedsNoFile(options, dataFolder)) {
    settings = DefaultSettings();
  } else if (options.settingsFile.isEmpty() && dataFolder.isEmpty()) {
    Complain(WhyNoDataFolder());
    return false;
  } else if (options.settingsFile.isEmpty() && !HasWorkingFile(dataFolder)) {
    Complain(
        WorkingSettingsFile(dataFolder) +
        QStringLiteral(": no such settings file; name a port with --port (quarn-send --list shows them)"));
    return false;
  } else if (!Load(ChosenFile(options, dataFolder), settings)) {
    return false;
  }
  if (const QString text = ReplacedRate(options, settings); !text.isEmpty()) Complain(text);
  ApplyOptions(options, settings);
  if (settings.comPort != kNoPort) return true;
  Complain(QStringLiteral("no port is chosen; name one with --port (quarn-send --list shows them)"));
  return false;
}

}  // namespace quarn::send
