#include "dialogs/settings/main_option.h"

#include <array>

#include "settings/setting_values.h"

namespace quarn {
namespace {

constexpr OptionBinding kPosition{&SettingsRecord::mainPos, keys::kMainPos};

constexpr std::array kMainButtons{
    OptionButton{1073, OptionButton::Radio, "TOP - LEFT", "topLeft", kPosition, values::kTopLeft,
                 StoreOption},
    OptionButton{1074, OptionButton::Radio, "TOP - RIGHT", "topRight", kPosition, values::kTopRight,
                 StoreOption},
};

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

CMainOption::CMainOption(QWidget* owner, const DialogContext& context)
    : OptionDialog(owner, context, kMainPlan) {}

}  // namespace quarn
