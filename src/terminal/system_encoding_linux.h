#pragma once

#include "terminal/system_encoding.h"

namespace quarn {

/// The name of the system's 8-bit encoding, as iconv knows it. Read from the environment at the first call:
/// the process need not have set its locale, and setting it later changes nothing.
[[nodiscard]] const QByteArray& SystemCodeset();

/// Like ToSystemEncoding and FromSystemEncoding, for a named encoding. An unknown one accepts no text.
[[nodiscard]] std::optional<QByteArray> EncodeText(const QByteArray& codeset, QStringView text);
[[nodiscard]] std::optional<QString> DecodeText(const QByteArray& codeset, const QByteArray& bytes);

}  // namespace quarn
