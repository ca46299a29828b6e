// The command line under any sequence of keys, pastes and stored commands, and what is framed from it.

#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "terminal/command_line.h"
#include "terminal/framing.h"
#include "terminal/terminal_keys.h"
#include "terminal/wait_plan.h"

using namespace quarn;

namespace {

constexpr int kLimit = 48;

void Require(bool condition) {
  if (!condition) std::abort();
}

void Step(CommandLine& line, std::uint8_t action, QChar character) {
  switch (action % 14) {
    case 0:
      line.TypeCharacter(character, kLimit);
      break;
    case 1:
      line.TypeSpace();
      break;
    case 2:
      line.DeleteAtCursor();
      break;
    case 3:
      line.Backspace();
      break;
    case 4:
      line.MoveLeft();
      break;
    case 5:
      line.MoveRight(kLimit);
      break;
    case 6:
      line.ToggleOverwrite();
      break;
    case 7:
      line.Empty();
      break;
    case 8:
      line.Reset();
      break;
    case 9:
      line.LoadStored(QString(5, character), character.unicode() % 2 == 0);
      break;
    case 10:
      line.RecallLast();
      break;
    case 11:
      line.Paste(QString(60, character), kLimit);
      break;
    case 12:
      line.SetLastCommand(line.Text());
      break;
    default:
      line.Tick();
      break;
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  CommandLine line;
  for (std::size_t i = 0; i + 2 < size; i += 3) {
    const QChar character(static_cast<char16_t>(data[i + 1] << 8 | data[i + 2]));
    Step(line, data[i], character);
    Require(line.CursorPos() >= 0);
    Require(line.DisplayText().size() <= line.Text().size() + 1);
    WaitingText(line.Text(), line.CursorPos(), data[i]);
    ClassifyKey(data[i + 1] << 8 | data[i + 2], Qt::KeyboardModifiers::fromInt(unsigned{data[i]} << 25),
                QString(character));
  }
  for (const char* delimiter : {"CR", "LF", "CRLF", "STX_ETX", "?"}) {
    const FramedCommand framed = FrameCommand(QString::fromLatin1(delimiter), line.Text());
    Require(framed.bytes.endsWith(framed.terminator));
  }
  return 0;
}
