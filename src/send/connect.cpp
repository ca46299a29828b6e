#include "send/connect.h"

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <vector>

#include "base/system_path.h"
#include "send/exit_status.h"
#include "send/failure_text.h"
#include "send/interruption.h"
#include "send/standard_output.h"
#include "serial/open_port.h"
#include "serial/platform_serial.h"
#include "serial/port_names.h"
#include "settings/settings_load_save.h"

namespace quarn::send {
namespace {

/// Why a port may exist although it is not found: the folder with the numbers cannot be opened, or too few
/// files can be opened for a listing. Empty if neither is so.
QString WhyNotListed(const QString& portsFolder) {
  constexpr int kMostOpenAtATime = 16;
  std::vector<std::filesystem::directory_iterator> open;
  for (int i = 0; i < kMostOpenAtATime; ++i) {
    std::error_code error;
    open.emplace_back(SystemPath(portsFolder), error);
    if (error == std::errc::no_such_file_or_directory) break;
    if (error) return portsFolder + QStringLiteral(": ") + QString::fromStdString(error.message());
  }
  return {};
}

bool IsPath(const QString& port) { return port.contains(u'/'); }

/// A listing gives a number to a device that has none yet.
QString FindDevice(const QString& port, const QString& portsFolder) {
  QString device = FindPortDevice(portsFolder, port);
  if (!device.isEmpty() || IsPath(port)) return device;
  if (CreatePortSource(portsFolder)->Ports()) device = FindPortDevice(portsFolder, port);
  return device;
}

LineFailure NotPresent(const QString& port) {
  return {LineError::NotFound, port + QStringLiteral(" is not present")};
}

OpenResult Open(const QString& port, const QString& portsFolder) {
  const QString device = FindDevice(port, portsFolder);
  if (device.isEmpty()) return {nullptr, NotPresent(port)};
  OpenResult opened = OpenPortDevice(device);
  // It may have gone just now, or the system tells only when it is opened.
  if (opened.failure.kind == LineError::NotFound) opened.failure = NotPresent(port);
  return opened;
}

/// Tries again while another program has the port, until the time is over or the user interrupts.
OpenResult OpenInTime(const Options& options, const QString& port, const QString& portsFolder) {
  constexpr std::chrono::milliseconds kTryAgain{100};
  // What a settings file names is a number, as in the window.
  if (options.port.isEmpty() && !ValidatePortName(port)) return {nullptr, NotPresent(port)};
  const auto end = std::chrono::steady_clock::now() + options.wait;
  while (true) {
    OpenResult opened = Open(port, portsFolder);
    const auto now = std::chrono::steady_clock::now();
    if (opened.line || opened.failure.kind != LineError::InUse || now >= end) return opened;
    if (!SleepUntil(std::min(end, now + kTryAgain))) return opened;
  }
}

LineSetUp SetUpOf(const Options& options, const SettingsRecord& settings) {
  LineSetUp setUp = LineSetUpOf(settings);
  if (options.line.rate) setUp.state.baudRate = *options.line.rate;
  // The read must not end before the wait for it does.
  if (options.timeout) {
    setUp.timeouts.readTotalConstant =
        std::max(setUp.timeouts.readTotalConstant, static_cast<std::uint32_t>(options.timeout->count()));
  }
  return setUp;
}

void WarnOfLatency(const QString& port, const LineTimeouts& timeouts) {
  const auto latency = LatencyTimerOf(port);
  if (!latency) return;
  const QString warning = LatencyWarning(port, *latency, std::chrono::milliseconds(timeouts.readInterval));
  if (!warning.isEmpty()) Complain(warning);
}

}  // namespace

QString PortNameOf(const QString& text) {
  const QString prefix = QStringLiteral("\\\\.\\");
  const QString name = (text.startsWith(prefix) ? text.mid(prefix.size()) : text).toUpper();
  const QString digits = name.mid(3);
  const bool isNumbered =
      name.startsWith(QLatin1String("COM")) && !digits.isEmpty() &&
      std::ranges::all_of(digits, [](QChar each) { return each >= u'0' && each <= u'9'; });
  return isNumbered ? name : text;
}

int Connect(const Options& options, const SettingsRecord& settings, const QString& portsFolder,
            PortConnection& connection) {
  const QString& port = settings.comPort;
  if (IsBeyondLastPort(port)) {
    Complain(QStringLiteral("%1: port numbers end at 99. %2").arg(port, HowToChangePortNumber(portsFolder)));
    return kFailed;
  }
  const OpenResult opened = OpenInTime(options, port, portsFolder);
  if (IsInterrupted()) return kAborted;
  if (!opened.line) {
    const bool missing = opened.failure.kind == LineError::NotFound;
    const QString unlisted = missing ? WhyNotListed(portsFolder) : QString();
    Complain(unlisted.isEmpty() ? FailureText(port, opened.failure) : unlisted);
    return kFailed;
  }
  connection.handle = PortHandle(opened.line);
  SetUpStep step{};
  const LineSetUp wanted = SetUpOf(options, settings);
  WarnOfLatency(port, wanted.timeouts);
  LineResult result = SetUpLine(*opened.line, wanted, step);
  if (result && (options.dtr || options.rts)) result = opened.line->SetModemLines({options.dtr, options.rts});
  if (result) return 0;
  Complain(FailureText(port, result.Failure()));
  return kFailed;
}

}  // namespace quarn::send
