#include "settings/settings_text.h"

#include <QStringDecoder>
#include <QStringEncoder>
#include <algorithm>
#include <utility>

#include "base/bounds.h"
#include "base/text_lines.h"
#include "identity.h"

namespace quarn {

namespace {

constexpr QStringView kBeginLine = u".BEGIN";
constexpr QStringView kEndLine = u".END";

/// The position of a key's value in a text.
struct KeyLine {
  qsizetype valueStart = 0;
  qsizetype lineEnd = 0;  // of its line feed, or the text's size
};

enum class SearchEnd { Found, EndLine, TextEnd };

SearchEnd FindKeyLine(QStringView text, SettingsKey key, KeyLine& found) {
  qsizetype start = 0;
  while (start < text.size()) {
    qsizetype end = text.indexOf(u'\n', start);
    if (end < 0) end = text.size();
    const QStringView line = text.sliced(start, end - start);
    if (line.startsWith(key.Text())) {
      found = {start + key.Text().size(), end};
      return SearchEnd::Found;
    }
    if (line == kEndLine) return SearchEnd::EndLine;
    start = end + 1;
  }
  return SearchEnd::TextEnd;
}

QString WithValue(const QString& text, const KeyLine& line, QStringView value) {
  const QStringView before = QStringView(text).first(line.valueStart);
  const QStringView after = QStringView(text).sliced(std::min(line.lineEnd + 1, text.size()));
  QString updated;
  updated.append(before).append(value).append(u'\n').append(after);
  return updated;
}

qsizetype IndexOfLineBeginning(const QStringList& lines, QStringView beginning) {
  const auto it = std::find_if(lines.begin(), lines.end(),
                               [&](const QString& line) { return line.startsWith(beginning); });
  return it == lines.end() ? -1 : it - lines.begin();
}

}  // namespace

std::optional<QString> DecodeSettingsText(QByteArrayView bytes, BytesAre extent) {
  // A stateless decoder reports an incomplete last character as an error; a stateful one waits for the rest.
  const auto flags =
      extent == BytesAre::Whole ? QStringDecoder::Flag::Stateless : QStringDecoder::Flag::Default;
  if (bytes.startsWith("\xEF\xBB\xBF")) bytes = bytes.sliced(3);
  // The mark is already removed: a second one is text.
  QStringDecoder decoder(QStringDecoder::Utf8, flags | QStringDecoder::Flag::ConvertInitialBom);
  QString text = decoder.decode(bytes);
  if (decoder.hasError()) return std::nullopt;
  return text.replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
}

QByteArray EncodeSettingsText(const QString& text) {
  QString lines = text;
  lines.replace(QStringLiteral("\n"), QStringLiteral("\r\n"));
  return QByteArrayLiteral("\xEF\xBB\xBF") + lines.toUtf8();
}

bool FitsFile(const QString& text) {
  if (text.size() > kMaxFileCharacters || EncodeSettingsText(text).size() > kMaxFileBytes) return false;
  const QList<QStringView> lines = QStringView(text).split(u'\n');
  return std::all_of(lines.begin(), lines.end(),
                     [](QStringView line) { return line.size() <= kMaxLineCharacters; });
}

std::optional<QString> FindValue(const QString& text, SettingsKey key) {
  if (text.size() <= 1 || text.size() > kMaxFileCharacters) return std::nullopt;
  KeyLine line;
  if (FindKeyLine(text, key, line) != SearchEnd::Found) return std::nullopt;
  const qsizetype length = line.lineEnd - line.valueStart;
  const qsizetype number = 1 + QStringView(text).first(line.valueStart).count(u'\n');
  RequireWithinBounds("value", kMaxValueCharacters, length, number);
  return text.mid(line.valueStart, length);
}

ValueUpdate UpdateText(const QString& text, const QList<NewValue>& values) {
  if (text.size() <= 1) return {true, std::nullopt};
  if (text.size() > kMaxFileCharacters) return {false, std::nullopt};
  ValueUpdate update{true, std::nullopt};
  QString updated = text;
  for (const NewValue& each : values) {
    KeyLine line;
    const SearchEnd end = FindKeyLine(updated, each.key, line);
    if (end == SearchEnd::EndLine) {
      update.ok = false;
      continue;
    }
    if (end == SearchEnd::Found) updated = WithValue(updated, line, each.value);
    update.newText = updated;
  }
  return update;
}

std::optional<QStringList> EntriesOf(const QString& text) {
  const QStringList lines = SplitTextLines(text);
  const qsizetype begin = IndexOfLineBeginning(lines, kBeginLine);
  const qsizetype end = IndexOfLineBeginning(lines, kEndLine);
  if (begin < 0 || end < 0) return std::nullopt;
  // One by one: mid() writes into the new list without checking that it got memory for it.
  QStringList entries;
  for (qsizetype i = begin + 1; i < end; ++i) entries.append(lines[i]);
  return entries;
}

QString NormalisedText(QStringList entries) {
  SortTextList(entries);
  QString text = QStringLiteral(".VER=") + QLatin1StringView(identity::kNameAndVersion) + u'\n';
  text.append(kBeginLine).append(u'\n');
  for (const QString& entry : std::as_const(entries)) text.append(entry).append(u'\n');
  text.append(kEndLine).append(u'\n');
  return text;
}

std::optional<QString> TextWithKeyLine(const QString& text, const QString& line) {
  const QStringView key = KeyPart(line);
  RequireWithinBounds("key part", kMaxKeyPartCharacters, key.size());
  if (QStringView(text).contains(key)) return std::nullopt;
  std::optional<QStringList> entries = EntriesOf(text);
  if (!entries) return std::nullopt;
  entries->append(line);
  return NormalisedText(std::move(*entries));
}

std::optional<QString> TextWithoutKey(const QString& text, SettingsKey key) {
  std::optional<QStringList> entries = EntriesOf(text);
  if (!entries) return std::nullopt;
  // Every line begins with an empty key: taken literally, a file with one blank line would lose all its
  // settings. The blank lines themselves are removed when the text is normalised.
  if (!key.Text().isEmpty()) {
    entries->removeIf([&](const QString& entry) { return entry.startsWith(key.Text()); });
  }
  return NormalisedText(std::move(*entries));
}

}  // namespace quarn
