#pragma once

#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace quarn::device {

/// One step of an answer.
struct Bytes {
  std::string bytes;
};
/// Text framed like the command: with its line end, or by STX and ETX.
struct Line {
  std::string text;
};
struct PauseMs {
  int ms;
};
/// The command's own bytes, framing included.
struct Echo {};
/// Bytes without end, until the program stops listening or sends again.
struct Flood {};
struct HangUp {};
using Step = std::variant<Bytes, Line, PauseMs, Echo, Flood, HangUp>;

struct Rule {
  std::string command;      ///< without framing
  bool any = false;         ///< answers every command that no other rule answers
  std::vector<Step> steps;  ///< empty: silence
};

/// The rules for the instrument's answers. The first matching rule is used.
using Rules = std::vector<Rule>;

/// Null if no rule answers this command.
const Rule* FindRule(const Rules& rules, std::string_view command);

/// Reads rules from text, one per line; throws std::runtime_error with the line number for an invalid line.
/// Blank lines and lines that begin with # are ignored.
///
///   "id"   -> line "SIM-1"            answer framed as the command was
///   "slow" -> "one " 30 "two\r"       bytes, a pause in milliseconds before the next, bytes
///   "big"  -> "x" * 1500 "\r"         bytes repeated
///   "e"    -> echo                    also: silence, flood, hangup
///   *      -> line "ERR"              every other command
///
/// In quotes, \r \n \t \\ \" and \xHH stand for bytes.
Rules ParseRules(std::string_view text);

/// A small bench instrument.
Rules BuiltInRules();

}  // namespace quarn::device
