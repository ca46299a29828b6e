#include "device/rules.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <stdexcept>

namespace quarn::device {
namespace {

constexpr int kMostRepeats = 1'000'000;

/// Reads one rule's line from left to right.
class LineReader {
 public:
  explicit LineReader(std::string_view text) : m_text(text) { SkipBlanks(); }

  [[nodiscard]] bool AtEnd() const { return m_text.empty(); }
  [[nodiscard]] bool NextIs(char c) const { return !m_text.empty() && m_text.front() == c; }
  [[nodiscard]] bool NextIsDigit() const {
    return !m_text.empty() && std::isdigit(static_cast<unsigned char>(m_text.front())) != 0;
  }

  bool Take(std::string_view word) {
    if (!m_text.starts_with(word)) return false;
    m_text.remove_prefix(word.size());
    SkipBlanks();
    return true;
  }

  int Number() {
    int value = 0;
    const auto [end, error] = std::from_chars(m_text.data(), m_text.data() + m_text.size(), value);
    if (error != std::errc()) throw std::runtime_error("a number is expected");
    m_text.remove_prefix(static_cast<std::size_t>(end - m_text.data()));
    SkipBlanks();
    return value;
  }

  std::string Quoted() {
    if (!Take1('"')) throw std::runtime_error("a text in quotes is expected");
    std::string bytes;
    while (!m_text.empty() && m_text.front() != '"') bytes.push_back(Character());
    if (!Take1('"')) throw std::runtime_error("the closing quote is missing");
    SkipBlanks();
    return bytes;
  }

 private:
  bool Take1(char c) {
    if (!NextIs(c)) return false;
    m_text.remove_prefix(1);
    return true;
  }

  char Next() {
    if (m_text.empty()) throw std::runtime_error("the line ends in the middle of an escape");
    const char c = m_text.front();
    m_text.remove_prefix(1);
    return c;
  }

  char Character() {
    const char c = Next();
    if (c != '\\') return c;
    switch (const char escape = Next()) {
      case 'r':
        return '\r';
      case 'n':
        return '\n';
      case 't':
        return '\t';
      case 'x':
        return Hexadecimal();
      case '\\':
      case '"':
        return escape;
      default:
        throw std::runtime_error("unknown escape");
    }
  }

  char Hexadecimal() {
    constexpr std::size_t kDigits = 2;
    constexpr int kBase = 16;
    unsigned value = 0;
    const char* const last = m_text.data() + std::min(kDigits, m_text.size());
    const auto [end, error] = std::from_chars(m_text.data(), last, value, kBase);
    if (error != std::errc() || end != m_text.data() + kDigits) {
      throw std::runtime_error("two hexadecimal digits are expected");
    }
    m_text.remove_prefix(kDigits);
    return static_cast<char>(value);
  }

  void SkipBlanks() {
    const auto end = m_text.find_first_not_of(" \t\r");
    m_text.remove_prefix(std::min(end, m_text.size()));
  }

  std::string_view m_text;
};

Step ParseBytes(LineReader& reader) {
  std::string bytes = reader.Quoted();
  if (!reader.Take("*")) return Bytes{std::move(bytes)};
  const int repeats = reader.Number();
  if (repeats < 0 || repeats > kMostRepeats) throw std::runtime_error("too many repeats");
  std::string repeated;
  for (int i = 0; i < repeats; ++i) repeated += bytes;
  return Bytes{std::move(repeated)};
}

Step ParseStep(LineReader& reader) {
  if (reader.NextIs('"')) return ParseBytes(reader);
  if (reader.NextIsDigit()) return PauseMs{reader.Number()};
  if (reader.Take("line")) return Line{reader.Quoted()};
  if (reader.Take("echo")) return Echo{};
  if (reader.Take("flood")) return Flood{};
  if (reader.Take("hangup")) return HangUp{};
  throw std::runtime_error("an answer is expected");
}

Rule ParseRule(LineReader& reader) {
  Rule rule;
  if (reader.Take("*")) {
    rule.any = true;
  } else {
    rule.command = reader.Quoted();
  }
  if (!reader.Take("->")) throw std::runtime_error("\"->\" is expected after the command");
  if (reader.Take("silence")) {
    if (!reader.AtEnd()) throw std::runtime_error("nothing can follow a silence");
    return rule;
  }
  do {
    rule.steps.push_back(ParseStep(reader));
  } while (!reader.AtEnd());
  return rule;
}

}  // namespace

const Rule* FindRule(const Rules& rules, std::string_view command) {
  const auto found =
      std::ranges::find_if(rules, [&](const Rule& rule) { return rule.any || rule.command == command; });
  return found == rules.end() ? nullptr : &*found;
}

Rules ParseRules(std::string_view text) {
  constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
  if (text.starts_with(kByteOrderMark)) text.remove_prefix(kByteOrderMark.size());
  Rules rules;
  for (int number = 1; !text.empty(); ++number) {
    const std::size_t end = std::min(text.find('\n'), text.size());
    LineReader reader(text.substr(0, end));
    text.remove_prefix(std::min(end + 1, text.size()));
    if (reader.AtEnd() || reader.NextIs('#')) continue;
    try {
      rules.push_back(ParseRule(reader));
    } catch (const std::runtime_error& error) {
      throw std::runtime_error("line " + std::to_string(number) + ": " + error.what());
    }
  }
  return rules;
}

Rules BuiltInRules() {
  return ParseRules(R"(
"id"        -> line "SIM-1 bench instrument, firmware 1.00"
"*IDN?"     -> line "HALVO,SIM-1,0001,1.00"
"meas?"     -> line "+1.2345E+00 V"
"temp?"     -> 40 line "23.5 C"
"status"    -> line "READY"
"list"      -> line "CH1  +1.2345 V" line "CH2  -0.0071 V" line "CH3  +4.9987 V"
"bytes"     -> "\x02A\x05\x06\r\x7f\xff\r"
"slow"      -> "first half, " 60 "second half\r"
"big"       -> "0123456789" * 120 "\r"
"mute"      -> silence
"flood"     -> flood
"unplug"    -> hangup
*           -> line "ERR unknown command"
)");
}

}  // namespace quarn::device
