#include <QByteArrayView>
#include <cstdint>
#include <cstdlib>

#include "base/bounds.h"
#include "base/text_lines.h"
#include "settings/settings_table.h"
#include "settings/settings_text.h"

// The input is the bytes of a settings file. No file may crash its reader, and a changed file must
// have this change and no other. A fatal limit is a correct end; here it ends only one call.
namespace quarn {
namespace {

struct BoundsError {};

void Require(bool holds) {
  if (!holds) std::abort();
}

/// Runs one operation, until it ends or passes a fatal limit.
template <typename Operation>
void WithinBounds(Operation operation) {
  try {
    operation();
  } catch (const BoundsError&) {
  }
}

void CheckRoundTrip(const QString& text) { Require(DecodeSettingsText(EncodeSettingsText(text)) == text); }

void CheckUpdate(const QString& text, SettingsKey key, const QString& value) {
  const ValueUpdate update = UpdateText(text, {{key, value}});
  if (!update.newText) return;
  Require(update.ok);
  CheckRoundTrip(*update.newText);
  if (*update.newText == text || update.newText->size() > kMaxFileCharacters) return;
  Require(FindValue(*update.newText, key) == value);
}

void CheckNormalised(const QString& text, const QStringList& expected) {
  const std::optional<QStringList> entries = EntriesOf(text);
  // Entries that contain ".BEGIN" or ".END", or too many entries, are read back differently.
  if (!entries || expected.size() > kMaxLines) return;
  for (const QString& entry : expected) {
    if (entry.startsWith(QStringLiteral(".BEGIN")) || entry.startsWith(QStringLiteral(".END"))) return;
  }
  Require(*entries == expected);
}

void CheckAddAndRemove(const QString& text, const QString& line) {
  if (const auto longer = TextWithKeyLine(text, line)) {
    QStringList expected = *EntriesOf(text) + QStringList{line};
    SortTextList(expected);
    CheckRoundTrip(*longer);
    CheckNormalised(*longer, expected);
  }
  const SettingsKey key{KeyPart(line)};
  if (const auto shorter = TextWithoutKey(text, key)) {
    QStringList expected = *EntriesOf(text);
    expected.removeIf([&](const QString& entry) { return entry.startsWith(key.Text()); });
    SortTextList(expected);
    CheckRoundTrip(*shorter);
    CheckNormalised(*shorter, expected);
  }
}

void CheckFile(QByteArrayView bytes) {
  // The reader of a huge file gets at most the whole file, and no partial character.
  (void)DecodeSettingsText(bytes, BytesAre::CutShort);
  const std::optional<QString> text = DecodeSettingsText(bytes);
  if (!text) return;
  CheckRoundTrip(*text);
  WithinBounds([&] { (void)SplitTextLines(*text, u'\r'); });
  for (const Setting& setting : AllSettings()) {
    WithinBounds([&] { (void)FindValue(*text, setting.key); });
  }
  WithinBounds([&] { CheckUpdate(*text, keys::kComPort, QStringLiteral("COM12")); });
  WithinBounds([&] { CheckUpdate(*text, keys::kMem[3], QString()); });
  WithinBounds([&] { CheckUpdate(*text, SettingsKey(u".VER="), QStringLiteral("\u00E9\U0001F600")); });
  WithinBounds([&] { CheckAddAndRemove(*text, QStringLiteral("MARK_COLOR=WHITE")); });
  // A key of the file.
  WithinBounds([&] { CheckAddAndRemove(*text, text->section(u'\n', 2, 2) + u'+'); });
}

}  // namespace
}  // namespace quarn

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const bool installed = [] {
    quarn::SetBoundsErrorHandler([](const quarn::PassedLimit&) { throw quarn::BoundsError{}; });
    return true;
  }();
  if (installed) quarn::CheckFile(QByteArrayView(data, static_cast<qsizetype>(size)));
  return 0;
}
