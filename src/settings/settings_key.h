#pragma once

#include <QStringView>

namespace quarn {

/// A key's text with its trailing "=", such as "COM_PORT=". Matched exactly and case-sensitively at the start
/// of a line. It does not own the text: use a literal, or a string that lives longer.
class SettingsKey {
 public:
  constexpr explicit SettingsKey(QStringView text) : m_text(text) {}

  [[nodiscard]] constexpr QStringView Text() const { return m_text; }

  friend bool operator==(SettingsKey a, SettingsKey b) { return a.m_text == b.m_text; }

 private:
  QStringView m_text;
};

/// The key part of a line: up to and including the first "="; the whole line if there is none.
[[nodiscard]] inline QStringView KeyPart(QStringView line) {
  const qsizetype equals = line.indexOf(u'=');
  return equals < 0 ? line : line.first(equals + 1);
}

}  // namespace quarn
