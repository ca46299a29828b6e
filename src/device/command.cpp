#include "device/command.h"

namespace quarn::device {
namespace {

constexpr char kStx = 0x02;

std::size_t EndOfFraming(const std::string& received, std::size_t end) {
  const bool crLf = received[end] == '\r' && end + 1 < received.size() && received[end + 1] == '\n';
  return end + (crLf ? 2 : 1);
}

}  // namespace

std::vector<Command> TakeCommands(std::string& received) {
  std::vector<Command> commands;
  while (true) {
    const bool framed = received.starts_with(kStx);
    const std::size_t end =
        framed ? received.find_first_of("\x02\x03", 1) : received.find_first_of("\r\n\x02\x03");
    if (end == std::string::npos) {
      if (received.size() > kLongestCommandBytes) received.clear();
      return commands;
    }
    if (received[end] == kStx) {
      received.erase(0, end);
      continue;
    }
    const std::size_t start = framed ? 1 : 0;
    const std::size_t next = EndOfFraming(received, end);
    commands.push_back(
        {received.substr(start, end - start), received.substr(0, start), received.substr(end, next - end)});
    received.erase(0, next);
  }
}

}  // namespace quarn::device
