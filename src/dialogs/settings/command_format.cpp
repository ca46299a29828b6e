#include "dialogs/settings/command_format.h"

#include <array>

#include "settings/setting_values.h"

namespace quarn {
namespace {

constexpr OptionBinding kDelimiter{&SettingsRecord::delimiter, keys::kDelimiter};
constexpr OptionBinding kBuffer{&SettingsRecord::comBuf, keys::kComBuf};
constexpr OptionBinding kSpeed{&SettingsRecord::portSpeed, keys::kPortSpeed};
constexpr OptionBinding kTimeout{&SettingsRecord::rTimeout, keys::kRTimeout};

using enum OptionButton::Kind;

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

}  // namespace

CCommandFormat::CCommandFormat(QWidget* owner, const DialogContext& context)
    : OptionDialog(owner, context, kFormatPlan) {}

}  // namespace quarn
