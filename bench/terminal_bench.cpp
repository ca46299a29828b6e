// Rendering, the log's appending, and the redraw of the 32 rows on the offscreen platform.

#include <benchmark/benchmark.h>

#include <QApplication>
#include <QKeyEvent>
#include <chrono>

#include "dialogs/terminal/terminal_screen.h"
#include "settings/settings_table.h"
#include "support/recorded_messages.h"
#include "terminal/operation_log.h"
#include "terminal/render.h"

namespace quarn {
namespace {

constexpr int kLargestResponse = 8191;

QByteArray Response(bool printable) {
  QByteArray bytes;
  for (int i = 0; i < kLargestResponse; ++i) {
    bytes.append(static_cast<char>(printable ? ' ' + i % 95 : i));
  }
  return bytes;
}

void BM_RenderPrintable(benchmark::State& state) {
  const QByteArray bytes = Response(true);
  for (auto _ : state) benchmark::DoNotOptimize(RenderBytesForLog(bytes));
}
BENCHMARK(BM_RenderPrintable)->Unit(benchmark::kMicrosecond);

void BM_RenderEveryByteValue(benchmark::State& state) {
  const QByteArray bytes = Response(false);
  for (auto _ : state) benchmark::DoNotOptimize(RenderBytesForLog(bytes));
}
BENCHMARK(BM_RenderEveryByteValue)->Unit(benchmark::kMicrosecond);

/// Nothing but bytes that are spelled out with six characters.
void BM_RenderHighBytes(benchmark::State& state) {
  const QByteArray bytes(kLargestResponse, '\xff');
  for (auto _ : state) benchmark::DoNotOptimize(RenderBytesForLog(bytes));
}
BENCHMARK(BM_RenderHighBytes)->Unit(benchmark::kMicrosecond);

/// Time of 40 appends of two lines each, to a log that holds `range(0)` lines already.
void BM_Append(benchmark::State& state) {
  constexpr int kAppends = 40;
  const QByteArray text("[meas?]\r+1.2345E+00 V\r");
  for (auto _ : state) {
    OperationLog log;
    for (int line = 0; line < state.range(0); line += 100)
      log.AppendLogText(QByteArray("filler\r").repeated(100));
    const auto start = std::chrono::steady_clock::now();
    for (int i = 0; i < kAppends; ++i) log.AppendLogText(text);
    state.SetIterationTime(std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
    benchmark::DoNotOptimize(log.LineCount());
  }
}
BENCHMARK(BM_Append)->Arg(0)->Arg(3900)->UseManualTime()->Unit(benchmark::kMicrosecond);

/// One press of an arrow key: every one of the 32 rows gets another text and is painted.
void BM_RedrawRows(benchmark::State& state) {
  SettingsRecord settings = DefaultSettings();
  settings.lineNum = QStringLiteral("ON");
  PortConnection connection;
  SharedState shared;
  OperationLog log;
  for (int line = 0; line < 1000; ++line) {
    log.AppendLogText(QByteArray::number(line) + QByteArray(44, 'x') + '\r');
  }
  CommandLine commandLine;
  test::RecordedMessages messages;
  TransactionEngine engine(connection);
  QRect savedRect;
  CTerminalScreen window(nullptr,
                         {settings, connection, shared, engine, log, commandLine, messages, savedRect});
  window.setAttribute(Qt::WA_DeleteOnClose, false);
  window.show();
  QCoreApplication::processEvents();
  bool up = true;
  for (auto _ : state) {
    QKeyEvent key(QEvent::KeyPress, up ? Qt::Key_Up : Qt::Key_Down, Qt::NoModifier);
    up = !up;
    QApplication::sendEvent(&window, &key);
    window.repaint();
  }
}
BENCHMARK(BM_RedrawRows)->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace quarn

int main(int argc, char** argv) {
  qputenv("QT_QPA_PLATFORM", "offscreen");
  const QApplication application(argc, argv);
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  return 0;
}
