#include "terminal/log_text.h"

#include <algorithm>
#include <array>

#include "terminal/control_bytes.h"
#include "terminal/render.h"
#include "terminal/screen_layout.h"
#include "terminal/wait_plan.h"

namespace quarn {
namespace {

struct ErrorText {
  TransactionResult result;
  const char* text;
};
constexpr std::array<ErrorText, 6> kErrorTexts = {{
    {TransactionResult::Timeout, "Error: Response Timeout Error"},
    {TransactionResult::InvalidData, "Error: Received Invalid Data"},
    {TransactionResult::Overflow, "Error: Receive Buffer Overflow"},
    {TransactionResult::Aborted, "Warning: Aborted by ESC Key"},
    {TransactionResult::AlreadyRunning, "Error: Communication Error"},
    {TransactionResult::NotSendable, "Error: Command Cannot Be Sent"},
}};

QByteArray ErrorTextOf(TransactionResult result) {
  const auto* const found = std::ranges::find(kErrorTexts, result, &ErrorText::result);
  return found == kErrorTexts.end() ? QByteArray() : QByteArray(found->text);
}

QByteArray LimitTextOf(const QString& comBuf) {
  return " (MAX. " + QByteArray::number(ResponseLimit(comBuf)) + ")";
}

/// The response as lines, the last of them ended by exactly one CR.
QByteArray ResponseLines(const QByteArray& response, const SettingsRecord& settings) {
  QByteArray lines = WrapLogText(RenderBytesForLog(response), ScreenWidthOf(settings.inputMax).lineWidth);
  while (lines.endsWith(kCr)) lines.chop(1);
  return lines + kCr;
}

/// A truncated response ends within its last line: that line is replaced by "...".
QByteArray TruncatedLines(const QByteArray& response, const SettingsRecord& settings) {
  QByteArray lines = ResponseLines(response, settings);
  lines.chop(1);
  lines.truncate(lines.lastIndexOf(kCr) + 1);
  return lines + "..." + kCr;
}

}  // namespace

QByteArray LogTextOf(const TransactionOutcome& outcome, const QByteArray& command,
                     const SettingsRecord& settings) {
  const TransactionResult result = outcome.result;
  if (result == TransactionResult::LogFull) return QByteArray(1, kCr);
  QByteArray text = '[' + command + ']' + kCr;
  if (result == TransactionResult::Received) return text + ResponseLines(outcome.response, settings);
  if (result == TransactionResult::Overflow) text += TruncatedLines(outcome.response, settings);
  text += ErrorTextOf(result);
  if (result == TransactionResult::Overflow) {
    text += " > " + QByteArray::number(outcome.byteCount) + LimitTextOf(settings.comBuf);
  }
  return text + kCr + kCr;
}

}  // namespace quarn
