// The simulated instrument's rules and the commands it takes off the line.

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
  // Every byte is part of one command or is left for the next.
  std::string whole;
  for (const auto& command : commands) whole += command.before + command.text + command.after;
  if (whole + received != text) std::abort();
  try {
    const quarn::device::Rules rules = quarn::device::ParseRules(text);
    for (const auto& command : commands) quarn::device::FindRule(rules, command.text);
  } catch (const std::runtime_error&) {
    // The answer to a line that is no rule.
  }
  return 0;
}
