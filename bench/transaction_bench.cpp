// How long after a response's last byte its line stands in the log, and whether the silence that ends a
// response is measured true. Over a real pseudo-terminal, with the window's own way of waiting.
//
//   transaction_bench [TRANSACTIONS [RESPONSES]]

#include <QApplication>
#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <thread>
#include <vector>

#include "serial/line_parameters.h"
#include "serial/open_line_linux.h"
#include "support/served_instrument.h"
#include "terminal/execute_command.h"
#include "ui/input_hold.h"

namespace quarn {
namespace {

using Clock = std::chrono::steady_clock;
using Milliseconds = std::chrono::duration<double, std::milli>;

/// What the worker rests after a response.
constexpr double kSettlingMs = 50.0;

class PaintingHost final : public TransactionHost {
 public:
  void BeginWait() override { m_hold.Begin(); }
  void EndWait() override { m_hold.End(); }
  bool PaintUntilClear(const WaitableFlag& flag, Clock::time_point until) override {
    const WaitableFlag::Watch watch(flag, [this] { m_hold.LookAgain(); });
    return m_hold.WaitUntil([&flag] { return !flag.IsSet(); }, until);
  }
  void ShowWaitingText(const QString&) override {}
  [[nodiscard]] int CaretPosition() const override { return -1; }
  bool EscapePressed() override { return false; }

 private:
  InputHold m_hold;
};

/// A port on an instrument of its own, at 115200 bits per second.
struct Bench {
  explicit Bench(const std::string& rules) : instrument(rules) {
    settings.comBps = QStringLiteral("115200");
    settings.comBuf = QStringLiteral("6K");
    settings.delimiter = QStringLiteral("CR");
    settings.inputMax = QStringLiteral("N");
    timeouts = TimeoutsOf(settings.comBps, QStringLiteral("HIGH"));
    const OpenResult opened = OpenTerminalDevice(instrument.NodePath());
    if (!opened.line || !opened.line->SetTimeouts(timeouts)) {
      std::fprintf(stderr, "%s\n", qPrintable(opened.failure.reason));
      std::exit(EXIT_FAILURE);
    }
    connection.handle = PortHandle(opened.line);
  }

  TransactionOutcome Run(const QString& command) {
    return ExecuteCommand({engine, settings, log, commandLine}, host, command);
  }

  test::ServedInstrument instrument;
  SettingsRecord settings;
  LineTimeouts timeouts;
  PortConnection connection;
  OperationLog log;
  CommandLine commandLine;
  PaintingHost host;
  TransactionEngine engine{connection};
};

void MeasureLatency(int transactions, bool busy) {
  Bench bench("* -> line \"+1.2345E+00 V\"");
  std::atomic<bool> spin = busy;
  std::thread load([&] {
    while (spin) {
    }
  });
  std::atomic<Clock::time_point> answered{};
  bench.instrument.OnAnswered([&] { answered = Clock::now(); });
  std::vector<double> beyond;
  for (int i = 0; i < transactions; ++i) {
    if (bench.log.LineCount() > LogLineCapacity - 10) bench.log.ResetLog();
    if (bench.Run(QStringLiteral("meas?")).result != TransactionResult::Received) std::exit(EXIT_FAILURE);
    const Milliseconds whole = Clock::now() - answered.load();
    beyond.push_back(whole.count() - kSettlingMs - bench.timeouts.readInterval);
  }
  spin = false;
  load.join();
  std::ranges::sort(beyond);
  const auto at = [&](double share) {
    return beyond[std::min(beyond.size() - 1,
                           static_cast<std::size_t>(share * static_cast<double>(beyond.size())))];
  };
  std::printf(
      "last byte to log line, beyond the rules' own wait (%s): median %.3f ms, p99 %.3f ms, max %.3f ms, n "
      "%d\n",
      busy ? "other core busy" : "idle", at(0.5), at(0.99), beyond.back(), transactions);
}

/// Two halves `gapMs` apart; returns how often they came as one response.
int CountJoined(int responses, int gapMs) {
  Bench bench("* -> \"AB\" " + std::to_string(gapMs) + " \"CD\"");
  int joined = 0;
  for (int i = 0; i < responses; ++i) {
    if (bench.log.LineCount() > LogLineCapacity - 10) bench.log.ResetLog();
    const QByteArray response = bench.Run(QStringLiteral("gap")).response;
    if (response == "ABCD") {
      ++joined;
    } else if (response != "AB") {
      std::fprintf(stderr, "unexpected response: %s\n", response.constData());
      std::exit(EXIT_FAILURE);
    }
  }
  return joined;
}

void MeasureSilence(int responses) {
  constexpr int kMarginMs = 4;
  const int interval =
      static_cast<int>(TimeoutsOf(QStringLiteral("115200"), QStringLiteral("HIGH")).readInterval);
  const int each = responses / 2;
  const int split = each - CountJoined(each, interval - kMarginMs);
  const int joined = CountJoined(each, interval + kMarginMs);
  std::printf("silence of %d ms: gap %d ms split %d of %d, gap %d ms joined %d of %d\n", interval,
              interval - kMarginMs, split, each, interval + kMarginMs, joined, each);
}

}  // namespace
}  // namespace quarn

int main(int argc, char** argv) {
  qputenv("QT_QPA_PLATFORM", "offscreen");
  const QApplication application(argc, argv);
  constexpr int kDefaultCount = 1000;
  // scripts/bench hands the same options to all; none of the benchmark library's means anything here.
  std::vector<int> counts;
  for (int i = 1; i < argc; ++i) {
    if (argv[i][0] != '-') counts.push_back(std::max(1, std::atoi(argv[i])));
  }
  counts.resize(2, kDefaultCount);
  const int transactions = counts[0];
  const int responses = counts[1];
  quarn::MeasureLatency(transactions, false);
  quarn::MeasureLatency(transactions, true);
  quarn::MeasureSilence(responses);
  return 0;
}
