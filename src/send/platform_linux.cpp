#include <QStringDecoder>

#include "send/platform.h"

namespace quarn::send {
namespace {

/// Qt takes file names for UTF-8, whatever the locale.
std::optional<QString> NameIn(const QByteArray& bytes) {
  QStringDecoder decoder(QStringDecoder::Utf8,
                         QStringDecoder::Flag::Stateless | QStringDecoder::Flag::ConvertInitialBom);
  QString name = decoder.decode(bytes);
  return decoder.hasError() ? std::nullopt : std::optional(name);
}

}  // namespace

/// Commands are already bytes here; no conversion.
Arguments ArgumentsOf(int argc, char** argv) {
  Arguments arguments;
  for (int i = 1; i < argc; ++i) {
    const QByteArray bytes(argv[i]);
    arguments.push_back({NameIn(bytes), bytes});
  }
  return arguments;
}

void SpeakToConsoleInSystemEncoding() {}

void PassBytesAsTheyAre() {}

void TakeBytesAsTheyAre() {}

}  // namespace quarn::send
