#pragma once

#include <QStringView>

namespace quarn {

/// A key's text with its trailing "=", such as "COM_PORT=". Matched exactly and case-sensitively at the
/// start of a line. It refers to text that somebody else keeps: a literal, or a string that outlives it.
class SettingsKey {
 public:
  constexpr explicit SettingsKey(QStringView text) : m_text(text) {}

  [[nodiscard]] constexpr QStringView Text() const { return m_text; }

  friend bool operator==(SettingsKey a, SettingsKey b) { return a.m_text == b.m_text; }

 private:
  QStringView m_text;
};

/// The part of a line that is its key: up to and including the first "="; a line without one is all key.
[[nodiscard]] inline QStringView KeyPart(QStringView line) {
  const qsizetype equals = line.indexOf(u'=');
  return equals < 0 ? line : line.first(equals + 1);
}

}  // namespace quarn
