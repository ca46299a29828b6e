#include "send/sender.h"

#include <cstdio>
#include <optional>

#include "send/interruption.h"
#include "send/standard_output.h"
#include "serial/open_port.h"
#include "serial/platform_serial.h"
#include "serial/port_list.h"
#include "serial/port_names.h"
#include "settings/data_folder.h"
#include "settings/settings_load_save.h"
#include "terminal/log_text.h"
#include "terminal/transaction.h"
#include "terminal/wait_plan.h"

namespace quarn::send {
namespace {

constexpr int kFailed = 5;

void Complain(const QString& text) {
  std::fprintf(stderr, "quarn-send: %s\n", text.toLocal8Bit().constData());
}

/// There is nobody to ask and nothing to draw: messages go to standard error.
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

/// Nothing has to be painted or held; Ctrl+C is the ESC key.
class ShellHost final : public TransactionHost {
 public:
  void BeginWait() override {}
  void EndWait() override {}
  void KeepPainting() override {}
  void ShowWaitingText(const QString&) override {}
  [[nodiscard]] int CaretPosition() const override { return -1; }
  bool EscapePressed() override { return IsInterrupted(); }
};

bool LoadSettingsFile(const Options& options, const QString& dataFolder, SettingsRecord& settings) {
  const QString file =
      options.settingsFile.isEmpty() ? WorkingSettingsFile(dataFolder) : options.settingsFile;
  const LoadResult loaded = LoadSettings(file, settings);
  if (loaded == LoadResult::NoFile) Complain(file + QStringLiteral(": no such settings file"));
  if (loaded == LoadResult::Incomplete) Complain(file + QStringLiteral(": not a complete settings file"));
  if (!options.port.isEmpty()) settings.comPort = options.port;
  return loaded == LoadResult::Loaded;
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
  Complain(connection.lastFailure.reason);
  return false;
}

/// The log has no line for a read that failed and shows what came before once more. Scripts are told.
bool LineFailed(TransactionResult result, const PortConnection& connection) {
  const bool ended = result != TransactionResult::Timeout && result != TransactionResult::Aborted;
  return ended && connection.status < 0;
}

/// What came, byte for byte. The receive buffer still holds an earlier response where none did.
QByteArray RawResponse(TransactionResult result, const PortConnection& connection,
                       const SettingsRecord& settings) {
  if (result == TransactionResult::Timeout || result == TransactionResult::Aborted) return {};
  if (LineFailed(result, connection)) return {};
  constexpr std::int32_t kTruncated = 3;
  const std::int32_t kept =
      connection.status == kTruncated ? ResponseLimit(settings.comBuf) : connection.byteCount + 1;
  return {connection.receiveBuffer.data(), kept};
}

void Print(const Options& options, TransactionResult result, const PortConnection& connection,
           const SettingsRecord& settings) {
  QByteArray text;
  if (options.raw) {
    text = RawResponse(result, connection, settings);
  } else {
    text = LogTextOf(result, connection.command, connection, settings);
    text.replace('\r', '\n');
  }
  std::fwrite(text.constData(), 1, static_cast<std::size_t>(text.size()), stdout);
  std::fflush(stdout);
}

}  // namespace

int Send(const Options& options) {
  const QString dataFolder = DataFolder();
  SettingsRecord settings;
  PortConnection connection;
  if (!LoadSettingsFile(options, dataFolder, settings)) return kFailed;
  NoticeInterruption();
  if (!Connect(settings, PortsFolder(dataFolder), connection)) return kFailed;
  TransactionEngine engine(connection);
  ShellHost host;
  int status = 0;
  if (options.raw) PassBytesAsTheyAre();
  for (const QString& command : options.commands) {
    if (IsInterrupted()) {
      status = static_cast<int>(TransactionResult::Aborted);
      break;
    }
    connection.command = command;
    const TransactionResult result = engine.RunTransaction(settings, host);
    Print(options, result, connection, settings);
    status = static_cast<int>(result);
    if (LineFailed(result, connection)) {
      Complain(QStringLiteral("the line failed while \"%1\" waited for its response").arg(command));
      status = kFailed;
      break;
    }
  }
  ClosePort(connection);
  return status;
}

}  // namespace quarn::send
