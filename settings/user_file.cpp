#include "settings/user_file.h"

#include <QByteArray>
#include <QFile>
#include <QFileInfo>
#include <algorithm>
#include <filesystem>
#include <optional>
#include <system_error>

#include "settings/key_store.h"
#include "settings/life_cycle.h"
#include "settings/settings_load_save.h"
#include "settings/settings_text.h"

namespace quarn {
namespace {

void TellError(MessageOperations& messages, const QString& first, const QString& second) {
  messages.ShowErrorMessage(QStringLiteral(": Error"), QString(), first, second);
}

void TellQuit(MessageOperations& messages, const QString& why) {
  TellError(messages, why, QStringLiteral("Click \"OK\" to quit loading."));
}

void TellNotOpened(MessageOperations& messages) {
  TellError(messages, QStringLiteral("Destination folder error!"),
            QStringLiteral("Could not open the QRN file."));
}

/// Whether an upgrade did what it could. A missing key stays missing where its text stands in the value of
/// another: that file is up to date as far as it goes, and is found incomplete when it is loaded.
bool IsUpgraded(const QString& path) {
  const KeySetComparison comparison = CompareWithDefaults(path);
  if (comparison.result == KeySetResult::Equal) return true;
  if (comparison.result != KeySetResult::Different || !comparison.unknownKeys.isEmpty()) return false;
  const QString text = ReadWholeText(path).value_or(QString());
  return std::none_of(comparison.missingLines.begin(), comparison.missingLines.end(),
                      [&text](const QString& line) { return TextWithKeyLine(text, line).has_value(); });
}

/// An upgrade takes several rewrites; one that stops halfway is taken back.
bool UpgradeWholly(const QString& path, const KeySetComparison& comparison) {
  const std::optional<QByteArray> before = ReadWholeBytes(path);
  UpgradeFile(path, comparison);
  if (IsUpgraded(path)) return true;
  if (before && ReadWholeBytes(path) != before) WriteWholeBytes(path, *before);
  return false;
}

bool AskAndUpgrade(const QString& path, const KeySetComparison& comparison, MessageOperations& messages) {
  // A key that this program does not know would be lost with its value.
  const AnswerByDefault byDefault =
      comparison.unknownKeys.isEmpty() ? AnswerByDefault::Agree : AnswerByDefault::Refuse;
  if (!messages.AskYesNo(QStringLiteral(": Confirmation"), QString(),
                         QStringLiteral("The config file needs to be updated. "),
                         QStringLiteral("Is it OK to proceed?"), byDefault)) {
    return false;
  }
  if (!UpgradeWholly(path, comparison)) {
    TellNotOpened(messages);
    return false;
  }
  messages.ShowInformationMessage(QStringLiteral(": Information"), QString(),
                                  QStringLiteral("Configuration file is updated."), QString());
  return true;
}

/// Whether the file has the program's keys, or has been given them.
bool HasCurrentKeys(const QString& path, MessageOperations& messages) {
  const KeySetComparison comparison = CompareWithDefaults(path);
  switch (comparison.result) {
    case KeySetResult::NoFile:
      TellQuit(messages, QStringLiteral("Config file not found."));
      return false;
    case KeySetResult::Invalid:
      TellQuit(messages, QStringLiteral("Config file is invalid."));
      return false;
    case KeySetResult::Different:
      return AskAndUpgrade(path, comparison, messages);
    case KeySetResult::Equal:
      break;
  }
  return true;
}

/// Loads and checks; the record changes only when all is well.
bool LoadChecked(const QString& path, SettingsRecord& record) {
  SettingsRecord loaded = record;
  if (LoadSettings(path, loaded) != LoadResult::Loaded || !ValidatePortName(loaded.comPort)) return false;
  record = loaded;
  return true;
}

/// Puts back what stood at the path before: these bytes, or nothing.
void PutBack(const QString& path, const std::optional<QByteArray>& bytes) {
  if (bytes) {
    WriteWholeBytes(path, *bytes);
  } else {
    // Through a link, which stood there before and led nowhere.
    QFile::remove(QFileInfo(path).canonicalFilePath());
  }
}

}  // namespace

QString OpenUserFile(const QString& userFile, const QString& workingFile, SettingsRecord& record,
                     MessageOperations& messages) {
  if (!HasCurrentKeys(userFile, messages)) return {};
  // Taken after the questions, while which the working file may still change.
  const bool stoodThere = ClassifyPath(workingFile) != PathKind::Nothing;
  const std::optional<QByteArray> backup = ReadWholeBytes(workingFile);
  // What cannot be read could not be put back.
  if ((stoodThere && !backup) || !CopySettingsFile(userFile, workingFile)) {
    TellNotOpened(messages);
    return {};
  }
  if (!LoadChecked(workingFile, record)) {
    TellError(messages, QStringLiteral("Invalid file format."),
              QStringLiteral("Could not load file contents."));
    PutBack(workingFile, backup);
    LoadChecked(workingFile, record);
    return {};
  }
  record.loadedMarker = QStringLiteral("TRUE");
  messages.ShowTransientMessage(QStringLiteral("QRN file was opened successfully."));
  return userFile;
}

bool HoldSameSettings(const QString& userFile, const QString& workingFile) {
  return ReadWholeText(userFile).value_or(QString()) == ReadWholeText(workingFile).value_or(QString());
}

bool CopySettingsFile(const QString& from, const QString& to) {
  std::error_code error;
  if (std::filesystem::equivalent(from.toStdU16String(), to.toStdU16String(), error)) return false;
  const std::optional<QByteArray> bytes = ReadWholeBytes(from);
  return bytes && WriteWholeBytes(to, *bytes);
}

}  // namespace quarn
