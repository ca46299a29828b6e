#pragma once

#include <QByteArray>
#include <QString>
#include <ostream>

// Found by GoogleTest, so that a failed comparison shows text instead of bytes.

inline void PrintTo(const QString& text, std::ostream* out) {
  *out << '"' << text.toUtf8().constData() << '"';
}

/// Bytes that are no text are shown as in a source.
inline void PrintTo(const QByteArray& bytes, std::ostream* out) {
  constexpr char kDigits[] = "0123456789abcdef";
  *out << '"';
  for (const char each : bytes) {
    const auto value = static_cast<unsigned char>(each);
    if (value >= 0x20 && value < 0x7F) {
      *out << each;
    } else {
      *out << "\\x" << kDigits[value / 16] << kDigits[value % 16];
    }
  }
  *out << '"';
}
