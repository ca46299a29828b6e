#pragma once

#include "terminal/system_encoding.h"

namespace quarn {

/// The name of the system's 8-bit encoding, as iconv knows it. Read from the environment at the first call:
/// the process need not have chosen its locale, and nobody who does so later changes it.
[[nodiscard]] const QByteArray& SystemCodeset();

/// As ToSystemEncoding and FromSystemEncoding, with an encoding by its name. An unknown one takes no text.
[[nodiscard]] std::optional<QByteArray> EncodeText(const QByteArray& codeset, QStringView text);
[[nodiscard]] std::optional<QString> DecodeText(const QByteArray& codeset, const QByteArray& bytes);

}  // namespace quarn
