#include "send/sender.h"

#include <filesystem>
#include <optional>
#include <vector>

#include "send/interruption.h"
#include "send/platform.h"
#include "send/settings_choice.h"
#include "send/standard_output.h"
#include "serial/open_port.h"
#include "serial/platform_serial.h"
#include "serial/port_list.h"
#include "serial/port_names.h"
#include "settings/data_folder.h"
#include "terminal/framing.h"
#include "terminal/log_text.h"
#include "terminal/render.h"
#include "terminal/transaction.h"

namespace quarn::send {
namespace {

/// Prints messages on standard error. Nobody can be asked.
class StandardErrorMessages final : public MessageOperations {
 public:
  void ShowErrorMessage(const QString&, const QString& line0, const QString& line1,
                        const QString& line2) override {
    Complain(QStringLiteral("%1 %2 %3").arg(line1, line0, line2).simplified());
  }
  void ShowInformationMessage(const QString& suffix, const QString& line0, const QString& line1,
                              const QString& line2) override {
    ShowErrorMessage(suffix, line0, line1, line2);
  }
  bool AskConfirmation(const QString&, const QString&, const QString&, const QString&,
                       AnswerByDefault) override {
    return false;
  }
  bool AskYesNo(const QString&, const QString&, const QString&, const QString&, AnswerByDefault) override {
    return false;
  }
  bool AskSimple(const QString&, AnswerByDefault) override { return false; }
  bool AskSimpleYesNo(const QString&, AnswerByDefault) override { return false; }
  void ShowTransientMessage(const QString& text, std::optional<QPoint>) override { Complain(text); }
  void ShowPlainMessage(const QString& text) override { Complain(text); }
};

class NoIndicator final : public WaitIndicator {
 public:
  void Show() override {}
  void Restore() override {}
};

/// A shell needs no painting and no held input. Ctrl+C acts as the ESC key.
class ShellHost final : public TransactionHost {
 public:
  void BeginWait() override {}
  void EndWait() override {}
  void KeepPainting() override {}
  void ShowWaitingText(const QString&) override {}
  [[nodiscard]] int CaretPosition() const override { return -1; }
  bool EscapePressed() override { return IsInterrupted(); }
};

/// The command as shown in a message, at most one line long.
QString Quoted(const QByteArray& command) {
  constexpr qsizetype kMost = 40;
  const QByteArray text = SpellOut(command.left(kMost));
  return QLatin1Char('"') + QString::fromLatin1(text) +
         (command.size() > kMost ? QStringLiteral("...\"") : QStringLiteral("\""));
}

/// Refuses all commands if one of them could be sent only in part: a part could be a different command.
bool AllCanBeSent(const QByteArrayList& commands, const QString& delimiter) {
  for (const QByteArray& command : commands) {
    switch (TransmissionOf(delimiter, command)) {
      case Transmission::Whole:
        continue;
      case Transmission::CutShort:
        Complain(QStringLiteral("%1 holds the byte that ends a command, and would be cut off behind it")
                     .arg(Quoted(command)));
        return false;
      case Transmission::Nothing:
        Complain(QStringLiteral("%1 is too long: with its framing a command has at most 1023 bytes")
                     .arg(Quoted(command)));
        return false;
    }
  }
  return true;
}

/// Why a port may exist although it is not listed: the folder with the numbers cannot be opened, or too few
/// files can be opened for a listing. Empty if the list is complete.
QString WhyNotListed(const QString& portsFolder) {
  constexpr int kMostOpenAtATime = 16;
  std::vector<std::filesystem::directory_iterator> open;
  for (int i = 0; i < kMostOpenAtATime; ++i) {
    std::error_code error;
    open.emplace_back(portsFolder.toStdU16String(), error);
    if (error == std::errc::no_such_file_or_directory) break;
    if (error) return portsFolder + QStringLiteral(": ") + QString::fromStdString(error.message());
  }
  return {};
}

bool Connect(const SettingsRecord& settings, const QString& portsFolder, PortConnection& connection) {
  if (IsBeyondLastPort(settings.comPort)) {
    Complain(QStringLiteral("%1: port numbers end at 99. %2")
                 .arg(settings.comPort, HowToChangePortNumber(portsFolder)));
    return false;
  }
  const auto opener = CreateLineOpener(portsFolder);
  const auto source = CreatePortSource(portsFolder);
  StandardErrorMessages messages;
  NoIndicator indicator;
  RefreshPortList(*source, connection);
  if (ConnectPort(settings, connection, {*opener, messages, indicator})) return true;
  const bool missing = connection.lastFailure.kind == LineError::NotFound;
  const QString unlisted = missing ? WhyNotListed(portsFolder) : QString();
  Complain(unlisted.isEmpty() ? connection.lastFailure.reason : unlisted);
  return false;
}

QByteArray OutcomeText(const Options& options, const TransactionOutcome& outcome, const QByteArray& command,
                       const SettingsRecord& settings) {
  if (options.raw) return outcome.raw;
  return LogTextOf(outcome, SpellOut(command), settings).replace('\r', '\n');
}

/// Runs one command and prints its outcome. Returns the exit status.
int SendOne(const Options& options, const SettingsRecord& settings, TransactionEngine& engine,
            const QByteArray& command) {
  ShellHost host;
  const TransactionOutcome outcome = engine.RunTransaction(settings, host, command);
  if (!Print(OutcomeText(options, outcome, command, settings))) return kNotPrinted;
  // For a failed read the log has no line of its own and shows the earlier response again. A script must
  // know.
  if (!outcome.lineFailed) return static_cast<int>(outcome.result);
  const QString quoted = Quoted(command);
  const QString noThread = engine.WhyNoThread();
  Complain(noThread.isEmpty()
               ? QStringLiteral("the line failed while %1 waited for its response").arg(quoted)
               : QStringLiteral("%1 was not sent: the system gives no thread: %2").arg(quoted, noThread));
  return kFailed;
}

/// Runs the commands until one ends the run.
int SendAll(const Options& options, const SettingsRecord& settings, const PortConnection& connection) {
  TransactionEngine engine(connection);
  int status = 0;
  for (const QByteArray& command : options.commands) {
    if (IsInterrupted()) return static_cast<int>(TransactionResult::Aborted);
    status = SendOne(options, settings, engine, command);
    if (status == kFailed || status == kNotPrinted) break;
  }
  return status;
}

}  // namespace

int Send(const Options& options) {
  const QString dataFolder = DataFolder();
  if (dataFolder.isEmpty()) {
    Complain(WhyNoDataFolder());
    return kFailed;
  }
  SettingsRecord settings;
  PortConnection connection;
  if (!LoadChosenSettings(options, dataFolder, settings)) return kFailed;
  if (!AllCanBeSent(options.commands, settings.delimiter)) return kWrongUsage;
  NoticeInterruption();
  if (!Connect(settings, PortsFolder(dataFolder), connection)) return kFailed;
  if (options.raw) PassBytesAsTheyAre();
  const int status = SendAll(options, settings, connection);
  ClosePort(connection);
  return status;
}

}  // namespace quarn::send
