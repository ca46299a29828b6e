#include "terminal/framing.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "settings/setting_values.h"
#include "terminal/control_bytes.h"

namespace quarn {
namespace {

/// The transmit buffer takes 1024 bytes, the last of them a NUL.
constexpr qsizetype kLongestTransmission = 1023;

/// How one delimiter frames a command and how its response is cleaned: `removed` is deleted, `lineEnd`
/// becomes CR. Zero: nothing to delete or replace.
struct Delimiter {
  QStringView name;
  const char* before;
  const char* after;
  char removed;
  char lineEnd;
};

constexpr std::array<Delimiter, 4> kDelimiters = {{
    {values::kCr.text, "", "\r", 0, 0},
    {values::kLf.text, "", "\n", 0, kLf},
    {values::kCrLf.text, "", "\r\n", kLf, 0},
    {values::kStxEtx.text, "\x02", "\x03", kStx, kEtx},
}};
static_assert(kStx == '\x02' && kEtx == '\x03' && kCr == '\r');

const Delimiter& DelimiterNamed(const QString& name) {
  const auto* const found =
      std::ranges::find_if(kDelimiters, [&](const Delimiter& each) { return name == each.name; });
  return found == kDelimiters.end() ? kDelimiters.front() : *found;
}

}  // namespace

FramedCommand FrameCommand(const QString& delimiter, const QByteArray& command) {
  const Delimiter& rule = DelimiterNamed(delimiter);
  QByteArray bytes = rule.before + command + rule.after;
  const char terminator = bytes.back();
  return {std::move(bytes), terminator};
}

Transmission TransmissionOf(const QString& delimiter, const QByteArray& command) {
  const FramedCommand framed = FrameCommand(delimiter, command);
  const qsizetype end = framed.bytes.indexOf(framed.terminator);
  if (end >= kLongestTransmission) return Transmission::Nothing;
  // A command that already has its terminator loses only the second one.
  const qsizetype sent = end + 1 - qsizetype(std::strlen(DelimiterNamed(delimiter).before));
  return sent < command.size() ? Transmission::CutShort : Transmission::Whole;
}

bool SendFramed(SerialLine& line, const FramedCommand& framed) {
  const qsizetype end = framed.bytes.indexOf(framed.terminator);
  if (end < 0 || end >= kLongestTransmission) return false;
  const auto size = static_cast<std::size_t>(end) + 1;
  const IoResult written = line.Write(framed.bytes.constData(), size);
  return written.ok && written.bytes == size;
}

bool HoldsOnlyFraming(const QString& delimiter, const QByteArray& response) {
  const Delimiter& rule = DelimiterNamed(delimiter);
  return std::ranges::all_of(
      response, [&](char each) { return each == rule.removed || (each == kEtx && rule.lineEnd == kEtx); });
}

QByteArray NormaliseResponse(const QString& delimiter, QByteArray response) {
  const Delimiter& rule = DelimiterNamed(delimiter);
  if (rule.removed != 0) response.replace(QByteArray(1, rule.removed), QByteArray());
  if (rule.lineEnd != 0) response.replace(rule.lineEnd, kCr);
  return response;
}

}  // namespace quarn
