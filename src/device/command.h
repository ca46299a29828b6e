#pragma once

#include <string>
#include <vector>

namespace quarn::device {

/// A received command: its text, and the framing, which its answer uses too.
struct Command {
  std::string text;
  std::string before;  ///< STX or nothing
  std::string after;   ///< CR, LF, CR LF or ETX
};

/// A longer unfinished command is dropped; real commands are much shorter.
inline constexpr std::size_t kLongestCommandBytes = 4096;

/// Removes complete commands from the front of `received`: those that end in CR, LF, CR LF, or are framed by
/// STX and ETX. An STX starts a new command, whatever came before it. Leaves at most kLongestCommandBytes.
std::vector<Command> TakeCommands(std::string& received);

}  // namespace quarn::device
