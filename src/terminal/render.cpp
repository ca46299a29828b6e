#include "terminal/render.h"

#include <QList>
#include <algorithm>
#include <cstdint>
#include <cstring>

#include "base/printable.h"
#include "terminal/control_bytes.h"
#include "terminal/system_encoding.h"

namespace quarn {
namespace {

constexpr unsigned char kFirstPrintable = 0x20;
constexpr unsigned char kDelete = 0x7F;
constexpr std::size_t kLongestSpelling = 6;

/// How a byte appears in the log.
struct Spelling {
  std::array<char, kLongestSpelling> text{};
  std::uint8_t length = 0;
};

Spelling SpellingOf(unsigned char byte) {
  QByteArray text;
  if (byte == static_cast<unsigned char>(kCr) || (byte >= kFirstPrintable && byte < kDelete)) {
    text.append(static_cast<char>(byte));
  } else if (byte < kFirstPrintable) {
    text = ControlMnemonicTable[byte];
  } else if (byte == kDelete) {
    text = "<DEL>";
  } else {
    text = "<0x" + QByteArray::number(byte, 16) + '>';
  }
  Spelling spelling;
  std::copy(text.begin(), text.end(), spelling.text.begin());
  spelling.length = static_cast<std::uint8_t>(text.size());
  return spelling;
}

std::array<Spelling, 256> AllSpellings() {
  std::array<Spelling, 256> spellings;
  for (std::size_t byte = 0; byte < spellings.size(); ++byte) {
    spellings[byte] = SpellingOf(static_cast<unsigned char>(byte));
  }
  return spellings;
}

/// The character at `next`, which moves behind it. Half a surrogate pair counts as the replacement character.
/// QString's own conversion does not check that it got memory.
char32_t TakeCharacter(QStringView text, qsizetype& next) {
  const QChar unit = text[next++];
  if (!unit.isSurrogate()) return unit.unicode();
  const bool pair = unit.isHighSurrogate() && next < text.size() && text[next].isLowSurrogate();
  return pair ? QChar::surrogateToUcs4(unit, text[next++]) : char32_t{QChar::ReplacementCharacter};
}

}  // namespace

const std::array<const char*, 32> ControlMnemonicTable = {
    "<NULL>", "<SOH>", "<STX>", "<ETX>", "<EOT>", "<ENG>", "<ACK>", "<BEL>", "<BS>",  "<HT>",  "<LF>",
    "<VT>",   "<FF>",  "<CR>",  "<SO>",  "<SI>",  "<DLE>", "<DC1>", "<DC2>", "<DC3>", "<DC4>", "<NAK>",
    "<SYN>",  "<ETB>", "<CAN>", "<EM>",  "<SUB>", "<ESC>", "<FS>",  "<GS>",  "<RS>",  "<US>"};

QByteArray RenderBytesForLog(const QByteArray& bytes) {
  static const std::array<Spelling, 256> spellings = AllSpellings();
  QByteArray text(bytes.size() * static_cast<qsizetype>(kLongestSpelling), Qt::Uninitialized);
  char* end = text.data();
  for (const char each : bytes) {
    const Spelling& spelling = spellings[static_cast<unsigned char>(each)];
    // All of it, at any length: there is room for six characters per byte, and the next one starts where this
    // ends.
    std::memcpy(end, spelling.text.data(), kLongestSpelling);
    end += spelling.length;
  }
  text.truncate(end - text.data());
  return text;
}

QByteArray SpellOut(const QByteArray& bytes) {
  return RenderBytesForLog(bytes).replace(kCr, ControlMnemonicTable[static_cast<unsigned char>(kCr)]);
}

QByteArray RenderCommandForLog(const QString& command) {
  QByteArray text;
  for (qsizetype next = 0; next < command.size();) {
    const char32_t each = TakeCharacter(command, next);
    const QString character = QString::fromUcs4(&each, 1);
    const std::optional<QByteArray> bytes = ToSystemEncoding(character);
    if (!bytes) {
      text += "<U+" + QByteArray::number(each, 16).toUpper().rightJustified(4, '0') + '>';
    } else {
      text += IsPrintable(each) ? *bytes : SpellOut(*bytes);
    }
  }
  return text;
}

QByteArray WrapLogText(const QByteArray& text, int width) {
  QByteArray wrapped;
  wrapped.reserve(text.size() + text.size() / width + 1);
  int column = 0;
  for (const char each : text) {
    if (each == kCr) {
      column = 0;
    } else if (column == width) {
      wrapped.append(kCr);
      column = 1;
    } else {
      ++column;
    }
    wrapped.append(each);
  }
  return wrapped;
}

}  // namespace quarn
