// A response on its way from the line to the log: cleaned, rendered, wrapped, stored, numbered, copied.

#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "terminal/framing.h"
#include "terminal/log_text.h"
#include "terminal/operation_log.h"

using namespace quarn;

namespace {

void Require(bool condition) {
  if (!condition) std::abort();
}

/// Lines of printable ASCII, none wider than the screen's.
void CheckText(const QByteArray& text, int width) {
  int column = 0;
  for (const char each : text) {
    if (each == '\r') {
      column = 0;
      continue;
    }
    Require(each >= ' ' && each <= '~');
    // The overflow line is not wrapped.
    Require(++column <= width || text.contains("Error: "));
  }
  Require(text.endsWith('\r'));
}

/// Puts the text into a log three times: every line is complete and in order, and the last one is visible.
void CheckLog(const QByteArray& text, const QString& lineNum) {
  // One log for all runs, as the program has one for all sessions.
  static OperationLog log;
  log.ResetLog();
  for (int i = 0; i < 3; ++i) {
    if (log.BeginTransaction()) log.AppendLogText(text);
    Require(log.LineCount() <= LogLineCapacity && log.LineCount() == log.WritePos());
    Require(log.TopLine() >= 0 && (log.LineCount() == 0 || log.TopLine() < log.LineCount()));
    Require(log.LineCount() <= log.TopLine() + ScreenRowCount);
  }
  for (int row = 0; row < ScreenRowCount; ++row) Require(log.RowText(row, lineNum).size() <= 8192 + 7);
  const QByteArray copied = log.CopyLogAll(QStringLiteral("OFF")).toLatin1();
  Require((text + text + text).startsWith(copied) && copied.count('\r') == log.LineCount());
  Require(copied.size() == 3 * text.size() || log.LineCount() == LogLineCapacity || text.size() > 8192);
}

}  // namespace

/// The first two bytes choose delimiter, width, result and line numbers; the rest is the response.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 2) return 0;
  static const char* const kDelimiters[] = {"CR", "LF", "CRLF", "STX_ETX", "other"};
  static const char* const kWidths[] = {"N", "M", "W", ""};
  static const TransactionResult kResults[] = {TransactionResult::Received, TransactionResult::Overflow,
                                               TransactionResult::Timeout};
  SettingsRecord settings;
  settings.delimiter = QString::fromLatin1(kDelimiters[data[0] % 5]);
  settings.inputMax = QString::fromLatin1(kWidths[data[0] / 5 % 4]);
  settings.comBuf = QStringLiteral("1K");
  TransactionOutcome outcome;
  outcome.result = kResults[data[1] % 3];
  const QString lineNum = data[1] % 2 == 0 ? QStringLiteral("ON") : QStringLiteral("OFF");

  outcome.response = NormaliseResponse(settings.delimiter, QByteArray(reinterpret_cast<const char*>(data + 2),
                                                                      static_cast<qsizetype>(size - 2)));
  outcome.byteCount = static_cast<std::int32_t>(size);
  const QByteArray text = LogTextOf(outcome, "cmd", settings);
  CheckText(text, settings.inputMax == u"W" ? 64 : settings.inputMax == u"M" ? 56 : 48);

  CheckLog(text, lineNum);
  return 0;
}
