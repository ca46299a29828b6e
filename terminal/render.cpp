#include "terminal/render.h"

#include <cstdint>

#include "terminal/control_bytes.h"

namespace quarn {
namespace {

constexpr unsigned char kFirstPrintable = 0x20;
constexpr unsigned char kDelete = 0x7F;

void AppendHex(QByteArray& text, unsigned char byte) {
  constexpr char kDigits[] = "0123456789abcdef";
  text.append("<0x");
  text.append(kDigits[byte >> 4]);
  text.append(kDigits[byte & 0x0F]);
  text.append('>');
}

}  // namespace

const std::array<const char*, 32> kControlMnemonicTable = {
    "<NULL>", "<SOH>", "<STX>", "<ETX>", "<EOT>", "<ENG>", "<ACK>", "<BEL>", "<BS>",  "<HT>",  "<LF>",
    "<VT>",   "<FF>",  "<CR>",  "<SO>",  "<SI>",  "<DLE>", "<DC1>", "<DC2>", "<DC3>", "<DC4>", "<NAK>",
    "<SYN>",  "<ETB>", "<CAN>", "<EM>",  "<SUB>", "<ESC>", "<FS>",  "<GS>",  "<RS>",  "<US>"};

QByteArray RenderBytesForLog(const QByteArray& bytes) {
  constexpr qsizetype kLongestSpelling = 6;
  QByteArray text;
  text.reserve(bytes.size() * kLongestSpelling);
  for (const char each : bytes) {
    const auto byte = static_cast<unsigned char>(each);
    if (each == kCr || (byte >= kFirstPrintable && byte < kDelete)) {
      text.append(each);
    } else if (byte < kFirstPrintable) {
      text.append(kControlMnemonicTable[byte]);
    } else if (byte == kDelete) {
      text.append("<DEL>");
    } else {
      AppendHex(text, byte);
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
