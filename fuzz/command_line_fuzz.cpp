// The command line with any sequence of keys, pastes and stored commands, and the framed command.

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "terminal/command_line.h"
#include "terminal/framing.h"
#include "terminal/terminal_keys.h"
#include "terminal/wait_plan.h"

using namespace quarn;

namespace {

constexpr std::array kLimits = {0, 48, 56, 64};

void Require(bool condition) {
  if (!condition) std::abort();
}

void RequireCursorAtEnd(const CommandLine& line) { Require(line.CursorPos() == line.Text().size()); }

/// Typing adds at most this character, and never exceeds the limit.
void CheckTyped(const CommandLine& before, const CommandLine& line, QChar character, int limit) {
  const bool typed = line.CursorPos() != before.CursorPos();
  if (!typed) {
    Require(line.Text() == before.Text());
    return;
  }
  Require(line.CursorPos() == before.CursorPos() + 1 && before.CursorPos() < limit);
  const qsizetype grown = line.Text().size() - before.Text().size();
  Require(grown == 1 || (grown == 0 && before.IsOverwrite()));
  Require(line.Text().size() <= std::max<qsizetype>(limit, before.Text().size()));
  Require(line.Text()[std::min<qsizetype>(before.CursorPos(), before.Text().size())] == character);
}

/// One key or button, and a check of the state after it.
void Step(CommandLine& line, std::uint8_t action, QChar character, int limit) {
  const CommandLine before = line;
  switch (action % 14) {
    case 0:
      line.TypeCharacter(character, limit);
      CheckTyped(before, line, character, limit);
      return;
    case 1:
      line.TypeSpace();
      Require(line.Text() == before.Text() + u' ' && line.CursorPos() == before.CursorPos() + 1);
      return;
    case 2:
      line.DeleteAtCursor();
      Require(line.CursorPos() == before.CursorPos());
      Require(line.Text().size() ==
              before.Text().size() - (before.CursorPos() < before.Text().size() ? 1 : 0));
      return;
    case 3:
      line.Backspace();
      Require(line.CursorPos() ==
              before.CursorPos() - (before.CursorPos() > 0 && !before.Text().isEmpty() ? 1 : 0));
      Require(before.Text().size() - line.Text().size() <= 1);
      return;
    case 4:
      line.MoveLeft();
      Require(line.Text() == before.Text() && line.CursorPos() == std::max(before.CursorPos() - 1, 0));
      return;
    case 5:
      line.MoveRight(limit);
      Require(line.Text() == before.Text() && line.CursorPos() - before.CursorPos() <= 1);
      Require(line.CursorPos() == before.CursorPos() || line.CursorPos() <= limit);
      return;
    case 6:
      line.ToggleOverwrite();
      Require(line.IsOverwrite() != before.IsOverwrite() && line.Text() == before.Text());
      return;
    case 7:
      line.Empty();
      Require(line.Text().isEmpty() && line.CursorPos() == before.CursorPos());
      return;
    case 8:
      line.Reset();
      Require(line.Text().isEmpty() && line.CursorPos() == 0);
      return;
    case 9: {
      const bool append = character.unicode() % 2 == 0;
      line.LoadStored(QString(5, character), append);
      Require(line.Text() == (append ? before.Text() : QString()) + QString(5, character));
      RequireCursorAtEnd(line);
      return;
    }
    case 10:
      line.RecallLast();
      Require(line.Text() == before.LastCommand());
      RequireCursorAtEnd(line);
      return;
    case 11:
      line.Paste(QString(60, character) + QStringLiteral("\r ~\u007f\u00e9x"), limit);
      Require(line.Text().size() <= limit);
      Require(std::ranges::all_of(line.Text(), [](QChar each) { return each >= u' ' && each <= u'~'; }));
      RequireCursorAtEnd(line);
      return;
    case 12:
      line.SetLastCommand(line.Text());
      Require(line.LastCommand() == before.Text() && line.Text() == before.Text());
      return;
    default: {
      const bool flipped = line.Tick();
      Require(line.Text() == before.Text() && (flipped || line.DisplayText() == before.DisplayText()));
      return;
    }
  }
}

void CheckShown(const CommandLine& line, int refresh) {
  Require(line.CursorPos() >= 0);
  const QString shown = line.DisplayText();
  Require(shown == line.Text() ||
          shown == WithCharacterAt(line.Text(), line.CursorPos(), CommandLine::kCursor));
  const QString waiting = WaitingText(line.Text(), line.CursorPos(), refresh);
  Require(waiting == line.Text() || waiting == WithCharacterAt(line.Text(), line.CursorPos(), u'*'));
}

}  // namespace

/// The first byte chooses the limit; each three after it are an action and its character.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  const int limit = kLimits[data[0] % kLimits.size()];
  CommandLine line;
  for (std::size_t i = 1; i + 2 < size; i += 3) {
    const QChar character(static_cast<char16_t>(data[i + 1] << 8 | data[i + 2]));
    Step(line, data[i], character, limit);
    CheckShown(line, data[i]);
    ClassifyKey(data[i + 1] << 8 | data[i + 2], Qt::KeyboardModifiers::fromInt(unsigned{data[i]} << 25),
                QString(character));
  }
  for (const char* delimiter : {"CR", "LF", "CRLF", "STX_ETX", "?"}) {
    const FramedCommand framed = FrameCommand(QString::fromLatin1(delimiter), line.Text().toUtf8());
    Require(framed.bytes.endsWith(framed.terminator));
  }
  return 0;
}
