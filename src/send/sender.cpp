#include "send/sender.h"

#include "send/commands.h"
#include "send/connect.h"
#include "send/failure_text.h"
#include "send/interruption.h"
#include "send/platform.h"
#include "send/settings_choice.h"
#include "send/standard_output.h"
#include "serial/open_port.h"
#include "settings/data_folder.h"
#include "terminal/framing.h"
#include "terminal/log_text.h"
#include "terminal/render.h"
#include "terminal/transaction.h"

namespace quarn::send {
namespace {

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
int SendAll(const Options& options, const QByteArrayList& commands, const SettingsRecord& settings,
            const PortConnection& connection) {
  TransactionEngine engine(connection);
  engine.SetOwnTimeout(options.timeout);
  int status = 0;
  for (const QByteArray& command : commands) {
    if (IsInterrupted()) return static_cast<int>(TransactionResult::Aborted);
    status = SendOne(options, settings, engine, command);
    if (status == kFailed || status == kNotPrinted) break;
  }
  return status;
}

}  // namespace

int Send(const Options& options) {
  const QString dataFolder = DataFolder();
  SettingsRecord settings;
  PortConnection connection;
  if (!LoadChosenSettings(options, dataFolder, settings)) return kFailed;
  const Commands commands = CollectCommands(options, ReadCommandFile);
  if (!commands.failure.isEmpty()) {
    Complain(commands.failure);
    return kFailed;
  }
  if (!commands.error.isEmpty()) {
    Complain(commands.error);
    return kWrongUsage;
  }
  if (!AllCanBeSent(commands.list, settings.delimiter)) return kWrongUsage;
  // A number is a link there.
  if (dataFolder.isEmpty() && !settings.comPort.contains(u'/')) {
    Complain(WhyNoDataFolder());
    return kFailed;
  }
  NoticeInterruption();
  if (!Connect(options, settings, PortsFolder(dataFolder), connection)) return kFailed;
  if (options.raw) PassBytesAsTheyAre();
  const int status = SendAll(options, commands.list, settings, connection);
  ClosePort(connection);
  return status;
}

}  // namespace quarn::send
