#pragma once

#include <QByteArray>
#include <QString>
#include <QStringView>
#include <optional>

namespace quarn {

// Text, and the bytes that a line carries and the log holds. The system's 8-bit encoding is that of the
// locale, or UTF-8 where none is set; on Windows the ANSI code page. Any thread.

/// Nothing when a character has no place in the encoding: none is replaced by another.
[[nodiscard]] std::optional<QByteArray> ToSystemEncoding(QStringView text);

/// Nothing when the bytes are no text in the encoding.
[[nodiscard]] std::optional<QString> FromSystemEncoding(const QByteArray& bytes);

}  // namespace quarn
