#pragma once

#include <QRect>
#include <QSize>
#include <QString>
#include <array>
#include <cstdint>

#include "settings/settings_record.h"
#include "terminal/operation_log.h"

namespace quarn {

// Title, geometry, colours and captions of the Terminal Screen, all derived from the settings. Rectangles are
// pixels in the client area.

/// The values that depend on INPUT_MAX.
struct ScreenWidth {
  QString letter;    ///< as the window's title shows it
  int commandLimit;  ///< longest command that can be typed, in characters
  int lineWidth;     ///< longest line of a response in the log, in characters
  int buttonWidth;   ///< pixels
  int windowWidth;   ///< pixels, frame included, without line numbers
};

/// The row for "N", "M" or "W". For any other text: no input is possible, and lines are as narrow as for "N".
const ScreenWidth& ScreenWidthOf(const QString& inputMax);

inline constexpr int kTerminalButtonCount = 12;

/// What a button of the Terminal Screen does.
struct TerminalButton {
  int controlId;
  const char16_t* caption;
  int storedCommand;  ///< 0 to 9; -1 for SEND and CLEAR
};

inline constexpr int kSendButtonId = 1004;
inline constexpr int kClearButtonId = 1005;
inline constexpr int kPromptId = 1002;
inline constexpr int kCommandDisplayId = 1017;
inline constexpr int kFirstRowId = 1000;

/// The twelve buttons in layout order: two rows of six.
extern const std::array<TerminalButton, kTerminalButtonCount> kTerminalButtons;

/// "LINE   >" with line numbers, ">" without.
QString PromptText(const SettingsRecord& settings);
QRect PromptRect();
QRect CommandDisplayRect(const SettingsRecord& settings);
/// Screen row 0 to 31; neighbours overlap by 2 pixels.
QRect RowRect(int row);
/// Button 0 to 11 of kTerminalButtons.
QRect ButtonRect(int index, const SettingsRecord& settings);
bool ButtonsShown(const SettingsRecord& settings);
/// Outer size with the frame. `scalePercent`: 100, 125, 150, 175; others have a height of their own.
QSize TerminalWindowSize(const SettingsRecord& settings, int scalePercent);

enum class ColourScheme : std::uint8_t { Navy, Black, System };
ColourScheme ColourSchemeOf(const SettingsRecord& settings);
inline bool IsDark(ColourScheme scheme) { return scheme != ColourScheme::System; }

/// Requirements for the log's font: the line height, and the text that must fit into the narrowest row (a
/// four-digit line number, its bar and blanks, and a command of 64 characters in brackets).
inline constexpr int kTerminalLineHeight = 18;
inline constexpr int kWidestRowCharacters = 73;
inline constexpr int kNarrowestRowWidth = 592;

/// The Terminal Screen's title, "Screeen" being its own spelling.
QString TerminalTitle(const QString& portName, bool open, const QString& inputMax, bool overwrite,
                      const OperationLog& log);

}  // namespace quarn
