#include "dialogs/settings/options.h"

#include <array>
#include <cstddef>
#include <span>
#include <string_view>

#include "settings/setting_values.h"

namespace quarn {
namespace {

constexpr OptionBinding kDelimiter{&SettingsRecord::delimiter, keys::kDelimiter};
constexpr OptionBinding kBuffer{&SettingsRecord::comBuf, keys::kComBuf};
constexpr OptionBinding kSpeed{&SettingsRecord::portSpeed, keys::kPortSpeed};
constexpr OptionBinding kTimeout{&SettingsRecord::rTimeout, keys::kRTimeout};

using enum OptionButton::Kind;

/// The key's text as a type that is compared at compile time.
constexpr auto KeyOf(const OptionButton& option) {
  const QStringView text = option.binding.key.Text();
  return std::basic_string_view(text.utf16(), static_cast<std::size_t>(text.size()));
}

/// A table that a dialog can show: no control's number comes twice, and a row has room for its radio buttons.
constexpr bool CanBeShown(std::span<const OptionButton> table) {
  std::size_t inRow = 0;
  for (std::size_t i = 0; i < table.size(); ++i) {
    const bool sameRow = i > 0 && table[i].kind == Radio && KeyOf(table[i]) == KeyOf(table[i - 1]);
    inRow = sameRow ? inRow + 1 : 1;
    if (inRow > kMostRadioButtons) return false;
    for (std::size_t j = 0; j < i; ++j) {
      if (table[i].controlId == table[j].controlId) return false;
    }
  }
  return true;
}

constexpr std::array kFormatButtons{
    OptionButton{1015, Radio, "CR", "delimiterCr", kDelimiter, values::kCr, StoreOption},
    OptionButton{1021, Radio, "LF", "delimiterLf", kDelimiter, values::kLf, StoreOption},
    OptionButton{1022, Radio, "CRLF", "delimiterCrLf", kDelimiter, values::kCrLf, StoreOption},
    OptionButton{1018, Radio, "STX / ETX ", "delimiterStxEtx", kDelimiter, values::kStxEtx, StoreOption},
    OptionButton{1085, Radio, "%1", "buffer1024", kBuffer, values::kBuffer1K, StoreOption},
    OptionButton{1087, Radio, "%1", "buffer2048", kBuffer, values::kBuffer2K, StoreOption},
    OptionButton{1086, Radio, "%1", "buffer6144", kBuffer, values::kBuffer6K, StoreOption},
    OptionButton{1017, Radio, "HIGH", "portSpeedHigh", kSpeed, values::kHighSpeed, ChangePortSpeed},
    OptionButton{1020, Radio, "LOW", "portSpeedLow", kSpeed, values::kLowSpeed, ChangePortSpeed},
    OptionButton{1088, Check, " Apply Response Timeout", "responseTimeout", kTimeout, {}, StoreOption},
};

static_assert(CanBeShown(kFormatButtons));

constexpr std::array kFormatLabels{
    OptionLabel{keys::kDelimiter, "Delimiter   -----"},
    OptionLabel{keys::kComBuf, "Max Receive Buffer Size ----"},
    OptionLabel{keys::kPortSpeed, "Port Speed ----"},
};

const OptionDialogPlan kFormatPlan{
    .className = "CCommandFormat",
    .title = "Quarn - Command Format",
    .leastUnits = {239, 90},
    .buttons = kFormatButtons,
    .labels = kFormatLabels,
    .okId = 1013,
    .window = Window::CommandFormat,
};

constexpr OptionBinding kStart{&SettingsRecord::startDisp, keys::kStartDisp};
constexpr OptionBinding kClear{&SettingsRecord::autoClr, keys::kAutoClr};
constexpr OptionBinding kNumbers{&SettingsRecord::lineNum, keys::kLineNum};
constexpr OptionBinding kFunctionKeys{&SettingsRecord::funcKey, keys::kFuncKey};
constexpr OptionBinding kEmpty{&SettingsRecord::enblNull, keys::kEnblNull};
constexpr OptionBinding kLength{&SettingsRecord::inputMax, keys::kInputMax};
constexpr OptionBinding kColour{&SettingsRecord::bkColor, keys::kBkColor};

constexpr std::array kScreenButtons{
    OptionButton{
        1070, Check, "Display Terminal Screen at Startup", "displayAtStartup", kStart, {}, StoreOption},
    OptionButton{
        1071, Check, "Clear Command Line After Sending", "clearAfterSending", kClear, {}, StoreOption},
    OptionButton{1072, Check, "Line Number", "lineNumber", kNumbers, {}, StoreShownOption},
    OptionButton{1075, Check, "Show Function Keys", "showFunctionKeys", kFunctionKeys, {}, StoreShownOption},
    OptionButton{1074, Check, "Allow Sending Empty Command Lines", "allowEmpty", kEmpty, {}, StoreOption},
    OptionButton{1065, Radio, "N (%1)", "length48", kLength, values::kNarrow, ChangeInputMax},
    OptionButton{1066, Radio, "M (%1)", "length56", kLength, values::kMedium, ChangeInputMax},
    OptionButton{1067, Radio, "W (%1)", "length64", kLength, values::kWide, ChangeInputMax},
    OptionButton{1073, Radio, "Navy", "colourNavy", kColour, values::kNavy, StoreShownOption},
    OptionButton{1069, Radio, "Black", "colourBlack", kColour, values::kBlack, StoreShownOption},
    OptionButton{1068, Radio, "System", "colourSystem", kColour, values::kSystemColours, StoreShownOption},
};

static_assert(CanBeShown(kScreenButtons));

constexpr std::array kScreenLabels{
    OptionLabel{keys::kInputMax, "Max Command Length  -----"},
    OptionLabel{keys::kBkColor, "Background Color  -----------"},
};

const OptionDialogPlan kScreenPlan{
    .className = "CScreenOption",
    .title = "Quarn - Terminal Screen Option",
    .leastUnits = {0, 0},
    .buttons = kScreenButtons,
    .labels = kScreenLabels,
    .okId = 1,
    .window = Window::ScreenOption,
};

constexpr OptionBinding kPosition{&SettingsRecord::mainPos, keys::kMainPos};

constexpr std::array kMainButtons{
    OptionButton{1073, Radio, "TOP - LEFT", "topLeft", kPosition, values::kTopLeft, StoreOption},
    OptionButton{1074, Radio, "TOP - RIGHT", "topRight", kPosition, values::kTopRight, StoreOption},
};

static_assert(CanBeShown(kMainButtons));

constexpr std::array kMainLabels{OptionLabel{keys::kMainPos, "Startup Display Position  ---"}};

const OptionDialogPlan kMainPlan{
    .className = "CMainOption",
    .title = "Quarn - Main Dialog Optiom",
    .leastUnits = {0, 0},
    .buttons = kMainButtons,
    .labels = kMainLabels,
    .okId = 1,
    .window = Window::MainOption,
};

}  // namespace

CCommandFormat::CCommandFormat(QWidget* owner, const DialogContext& context)
    : OptionDialog(owner, context, kFormatPlan) {}

CScreenOption::CScreenOption(QWidget* owner, const DialogContext& context)
    : OptionDialog(owner, context, kScreenPlan) {}

CMainOption::CMainOption(QWidget* owner, const DialogContext& context)
    : OptionDialog(owner, context, kMainPlan) {}

}  // namespace quarn
