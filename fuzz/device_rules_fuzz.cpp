// The simulated instrument's rules, and the commands that it reads from the line.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <stdexcept>
#include <string>
#include <string_view>

#include "device/instrument.h"
#include "device/rules.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  std::string received(text);
  const auto commands = quarn::device::TakeCommands(received);
  // Each byte belongs to one command at most, and none is invented: the commands are in the input, in order,
  // and its end is kept for the next one. Bytes between them were dropped: by a new STX, or as too long.
  std::size_t at = 0;
  for (const auto& command : commands) {
    const std::string whole = command.before + command.text + command.after;
    const std::size_t found = text.find(whole, at);
    if (found == std::string_view::npos) std::abort();
    at = found + whole.size();
  }
  if (received.size() > text.size() - at || !text.ends_with(received)) std::abort();
  if (received.size() > quarn::device::kLongestCommandBytes) std::abort();
  try {
    const quarn::device::Rules rules = quarn::device::ParseRules(text);
    for (const auto& command : commands) quarn::device::FindRule(rules, command.text);
  } catch (const std::runtime_error&) {
    // The exception for a line that is not a rule.
  }
  return 0;
}
