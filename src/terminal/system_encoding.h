#pragma once

#include <QByteArray>
#include <QString>
#include <QStringView>
#include <optional>

namespace quarn {

// Converts between text and the bytes of the line and the log. The system's 8-bit encoding is that of the
// locale, or UTF-8 if none is set; on Windows the ANSI code page. Any thread.

/// Returns nullopt if a character is not in the encoding; characters are never replaced.
[[nodiscard]] std::optional<QByteArray> ToSystemEncoding(QStringView text);

/// Returns nullopt if the bytes are not valid text in the encoding.
[[nodiscard]] std::optional<QString> FromSystemEncoding(const QByteArray& bytes);

}  // namespace quarn
