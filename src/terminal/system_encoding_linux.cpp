#include "terminal/system_encoding_linux.h"

#include <iconv.h>
#include <langinfo.h>
#include <locale.h>

#include <QStringDecoder>
#include <QStringEncoder>
#include <QtEndian>
#include <cstddef>

namespace quarn {
namespace {

constexpr char kUtf8[] = "UTF-8";
/// The encoding of QString.
constexpr const char* kText = Q_BYTE_ORDER == Q_LITTLE_ENDIAN ? "UTF-16LE" : "UTF-16BE";

/// The locale of the environment; Qt sets that of the process.
QByteArray CodesetOfTheLocale() {
  const locale_t locale = newlocale(LC_CTYPE_MASK, "", nullptr);
  if (locale == nullptr) return kUtf8;
  QByteArray codeset = nl_langinfo_l(CODESET, locale);
  freelocale(locale);
  // Without a locale: a line needs more than 7-bit ASCII, and files and windows use UTF-8 then, too.
  return codeset == "ANSI_X3.4-1968" ? QByteArray(kUtf8) : codeset;
}

/// Returns nullopt if a character of the one encoding is not in the other.
std::optional<QByteArray> Convert(const char* from, const char* to, QByteArray bytes) {
  iconv_t const converter = iconv_open(to, from);
  if (converter == reinterpret_cast<iconv_t>(-1)) return std::nullopt;
  // No character of any encoding is longer than eight bytes, its shift sequences included.
  QByteArray converted(bytes.size() * 8 + 8, '\0');
  char* source = bytes.data();
  char* end = converted.data();
  auto left = static_cast<std::size_t>(bytes.size());
  auto room = static_cast<std::size_t>(converted.size());
  // Not zero: an error, or characters replaced by similar ones.
  const bool whole = iconv(converter, &source, &left, &end, &room) == 0 &&
                     iconv(converter, nullptr, nullptr, &end, &room) == 0;
  iconv_close(converter);
  if (!whole) return std::nullopt;
  converted.truncate(end - converted.constData());
  return converted;
}

}  // namespace

const QByteArray& SystemCodeset() {
  static const QByteArray codeset = CodesetOfTheLocale();
  return codeset;
}

std::optional<QByteArray> EncodeText(const QByteArray& codeset, QStringView text) {
  if (codeset == kUtf8) {
    QStringEncoder encoder(QStringEncoder::Utf8, QStringEncoder::Flag::Stateless);
    QByteArray bytes = encoder.encode(text);
    return encoder.hasError() ? std::nullopt : std::optional(bytes);
  }
  const QByteArray characters(reinterpret_cast<const char*>(text.utf16()),
                              text.size() * static_cast<qsizetype>(sizeof(char16_t)));
  return Convert(kText, codeset.constData(), characters);
}

std::optional<QString> DecodeText(const QByteArray& codeset, const QByteArray& bytes) {
  if (codeset == kUtf8) {
    QStringDecoder decoder(QStringDecoder::Utf8,
                           QStringDecoder::Flag::Stateless | QStringDecoder::Flag::ConvertInitialBom);
    QString text = decoder.decode(bytes);
    return decoder.hasError() ? std::nullopt : std::optional(text);
  }
  const std::optional<QByteArray> characters = Convert(codeset.constData(), kText, bytes);
  if (!characters) return std::nullopt;
  return QString(reinterpret_cast<const QChar*>(characters->constData()),
                 characters->size() / static_cast<qsizetype>(sizeof(QChar)));
}

std::optional<QByteArray> ToSystemEncoding(QStringView text) { return EncodeText(SystemCodeset(), text); }

std::optional<QString> FromSystemEncoding(const QByteArray& bytes) {
  return DecodeText(SystemCodeset(), bytes);
}

}  // namespace quarn
