#include "dialogs/settings/screen_option.h"

#include <array>

#include "settings/setting_values.h"

namespace quarn {
namespace {

constexpr OptionBinding kStart{&SettingsRecord::startDisp, keys::kStartDisp};
constexpr OptionBinding kClear{&SettingsRecord::autoClr, keys::kAutoClr};
constexpr OptionBinding kNumbers{&SettingsRecord::lineNum, keys::kLineNum};
constexpr OptionBinding kFunctionKeys{&SettingsRecord::funcKey, keys::kFuncKey};
constexpr OptionBinding kEmpty{&SettingsRecord::enblNull, keys::kEnblNull};
constexpr OptionBinding kLength{&SettingsRecord::inputMax, keys::kInputMax};
constexpr OptionBinding kColour{&SettingsRecord::bkColor, keys::kBkColor};

using enum OptionButton::Kind;

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

}  // namespace

CScreenOption::CScreenOption(QWidget* owner, const DialogContext& context)
    : OptionDialog(owner, context, kScreenPlan) {}

}  // namespace quarn
