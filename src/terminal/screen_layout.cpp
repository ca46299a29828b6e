#include "terminal/screen_layout.h"

#include <algorithm>
#include <array>

#include "serial/port_names.h"
#include "settings/setting_values.h"

namespace quarn {
namespace {

ScreenWidth Width(const SettingValue& length, int button, int window) {
  return {length.text.toString(), length.number, length.number, button, window};
}

constexpr int kButtonsPerRow = 6;
constexpr int kButtonHeight = 22;
constexpr int kButtonGap = 9;
constexpr int kButtonsLeft = 20;
constexpr int kButtonsLeftNumbered = 45;
constexpr int kButtonsTop = 628;
constexpr int kButtonRowPitch = 32;

constexpr int kTextLeft = 22;
constexpr int kTextWidth = 600;
constexpr int kTextHeight = 20;
constexpr int kPromptTop = 12;
constexpr int kCommandLeft = 32;
constexpr int kCommandLeftNumbered = 87;
constexpr int kRowsTop = 35;
constexpr int kRowPitch = 18;
constexpr int kNumberedExtraWidth = 50;

struct ScaledHeight {
  int percent;
  int withButtons;
  int without;
};
constexpr std::array<ScaledHeight, 4> kHeights = {
    {{100, 740, 675}, {125, 750, 680}, {150, 760, 691}, {175, 770, 699}}};
constexpr ScaledHeight kUnknownHeight = {0, 740, 657};

bool Numbered(const SettingsRecord& settings) { return IsOn(settings.lineNum); }

}  // namespace

const ScreenWidth& ScreenWidthOf(const QString& inputMax) {
  static const std::array kWidths{Width(values::kNarrow, 60, 460), Width(values::kMedium, 70, 520),
                                  Width(values::kWide, 80, 580)};
  static const ScreenWidth kUnknown = {QString(), 0, values::kNarrow.number, 60, 535};
  const auto* const found = std::ranges::find(kWidths, inputMax, &ScreenWidth::letter);
  return found == kWidths.end() ? kUnknown : *found;
}

const std::array<TerminalButton, kTerminalButtonCount> kTerminalButtons = {{
    {1001, u"F 1", 0},
    {1003, u"F 2", 1},
    {1006, u"F 3", 2},
    {1007, u"F 4", 3},
    {1008, u"F 5", 4},
    {kSendButtonId, u"SEND", -1},
    {1009, u"F 6", 5},
    {1010, u"F 7", 6},
    {1011, u"F 8", 7},
    {1012, u"F 9", 8},
    {1013, u"F 10", 9},
    {kClearButtonId, u"CLEAR", -1},
}};

QString PromptText(const SettingsRecord& settings) {
  return Numbered(settings) ? QStringLiteral("LINE   >") : QStringLiteral(">");
}

QRect PromptRect() { return {kTextLeft, kPromptTop, kTextWidth, kTextHeight}; }

QRect CommandDisplayRect(const SettingsRecord& settings) {
  return {Numbered(settings) ? kCommandLeftNumbered : kCommandLeft, kPromptTop, kTextWidth, kTextHeight};
}

QRect RowRect(int row) { return {kTextLeft, kRowsTop + kRowPitch * row, kTextWidth, kTextHeight}; }

QRect ButtonRect(int index, const SettingsRecord& settings) {
  const int width = ScreenWidthOf(settings.inputMax).buttonWidth;
  const int left = Numbered(settings) ? kButtonsLeftNumbered : kButtonsLeft;
  return {(width + kButtonGap) * (index % kButtonsPerRow) + left,
          kButtonsTop + kButtonRowPitch * (index / kButtonsPerRow), width, kButtonHeight};
}

bool ButtonsShown(const SettingsRecord& settings) { return IsOn(settings.funcKey); }

QSize TerminalWindowSize(const SettingsRecord& settings, int scalePercent) {
  const auto* const found = std::ranges::find(kHeights, scalePercent, &ScaledHeight::percent);
  const ScaledHeight& height = found == kHeights.end() ? kUnknownHeight : *found;
  const int width =
      ScreenWidthOf(settings.inputMax).windowWidth + (Numbered(settings) ? kNumberedExtraWidth : 0);
  return {width, ButtonsShown(settings) ? height.withButtons : height.without};
}

ColourScheme ColourSchemeOf(const SettingsRecord& settings) {
  if (settings.bkColor == values::kNavy.text) return ColourScheme::Navy;
  if (settings.bkColor == values::kBlack.text) return ColourScheme::Black;
  return ColourScheme::System;
}

QString TerminalTitle(const QString& portName, bool open, const QString& inputMax, bool overwrite,
                      const OperationLog& log) {
  QString title = QStringLiteral("Quarn - Terminal Screeen (") + PortTitlePart(portName, open) +
                  QStringLiteral(")  ") + ScreenWidthOf(inputMax).letter + QStringLiteral("- ") +
                  (overwrite ? QStringLiteral("OVR") : QStringLiteral("INS"));
  if (log.HasContent()) {
    title += QStringLiteral("  [ ") + QString::number(log.TopLine() + 1) + QLatin1Char('-') +
             QString::number(log.WritePos()) + QStringLiteral("  ]");
  }
  return title;
}

}  // namespace quarn
