#include "settings/user_file.h"

#include <QByteArray>
#include <QFile>
#include <QFileInfo>
#include <filesystem>
#include <optional>
#include <system_error>

#include "base/bounds.h"
#include "base/system_path.h"
#include "settings/damaged_file.h"
#include "settings/key_store.h"
#include "settings/settings_load_save.h"
#include "settings/settings_text.h"
#include "settings/working_file.h"

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

/// The new settings: the user's file unchanged, or this text instead.
struct Source {
  bool usable = false;
  std::optional<QString> text;
};

Source AskAndUpgrade(const QString& path, const KeySetComparison& comparison, MessageOperations& messages) {
  // An unknown key would be lost with its value.
  const AnswerByDefault byDefault =
      comparison.unknownKeys.isEmpty() ? AnswerByDefault::Agree : AnswerByDefault::Refuse;
  if (!messages.AskYesNo(QStringLiteral(": Confirmation"), QString(),
                         QStringLiteral("The config file needs to be updated. "),
                         QStringLiteral("Is it OK to proceed?"), byDefault)) {
    return {};
  }
  // Read after the question, because the file may change while it is shown.
  const BoundsFile file(path);
  const std::optional<QString> text = ReadWholeText(path);
  const std::optional<QString> upgraded = text ? UpgradedText(*text, comparison) : std::nullopt;
  if (!upgraded) {
    TellQuit(messages, QStringLiteral("Config file is invalid."));
    return {};
  }
  // A file that cannot be written, probably because it is read-only, is updated in the copy.
  if (*upgraded != *text && !WriteWholeText(path, *upgraded)) return {true, upgraded};
  messages.ShowInformationMessage(QStringLiteral(": Information"), QString(),
                                  QStringLiteral("Configuration file is updated."), QString());
  return {true, std::nullopt};
}

/// The file, if it has the program's keys or they can be added.
Source SourceWithCurrentKeys(const QString& path, MessageOperations& messages) {
  const KeySetComparison comparison = CompareWithDefaults(path);
  switch (comparison.result) {
    case KeySetResult::NoFile:
      TellQuit(messages, QStringLiteral("Config file not found."));
      return {};
    case KeySetResult::Invalid:
      TellQuit(messages, QStringLiteral("Config file is invalid."));
      return {};
    case KeySetResult::Different:
      return AskAndUpgrade(path, comparison, messages);
    case KeySetResult::Equal:
      break;
  }
  return {true, std::nullopt};
}

bool PutInForce(const Source& source, const QString& userFile, const QString& workingFile) {
  return source.text ? WriteWholeText(workingFile, *source.text) : CopySettingsFile(userFile, workingFile);
}

/// Loads and checks; the record changes only when all is well.
bool LoadChecked(const QString& path, SettingsRecord& record) {
  SettingsRecord loaded = record;
  if (LoadSettings(path, loaded) != LoadResult::Loaded || !ValidatePortName(loaded.comPort)) return false;
  record = loaded;
  return true;
}

/// Restores the previous content of the path: these bytes, or no file.
void PutBack(const QString& path, const std::optional<QByteArray>& bytes) {
  if (bytes) {
    WriteWholeBytes(path, *bytes);
  } else {
    // Through a link that was there before and led nowhere.
    QFile::remove(QFileInfo(path).canonicalFilePath());
  }
}

}  // namespace

QString OpenUserFile(const QString& userFile, const QString& workingFile, SettingsRecord& record,
                     MessageOperations& messages) {
  const Source source = SourceWithCurrentKeys(userFile, messages);
  if (!source.usable) return {};
  // It was never in use, and is too large to read into memory.
  if (IsTooLargeForSettings(workingFile)) MoveToDamagedFile(workingFile);
  // Read after the questions, because the working file may change while they are shown.
  const bool stoodThere = ClassifyPath(workingFile) != PathKind::Nothing;
  const std::optional<QByteArray> backup = ReadWholeBytes(workingFile);
  // An unreadable file could not be restored.
  if ((stoodThere && !backup) || !PutInForce(source, userFile, workingFile)) {
    TellNotOpened(messages);
    return {};
  }
  if (!LoadChecked(workingFile, record)) {
    TellError(messages, QStringLiteral("Invalid file format."),
              QStringLiteral("Could not load file contents."));
    // The record was left alone; it may hold stored commands that the file does not have yet.
    PutBack(workingFile, backup);
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
  if (std::filesystem::equivalent(SystemPath(from), SystemPath(to), error)) return false;
  const std::optional<QByteArray> bytes = ReadWholeBytes(from);
  return bytes && WriteWholeBytes(to, *bytes);
}

}  // namespace quarn
