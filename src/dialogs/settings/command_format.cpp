#include "dialogs/settings/command_format.h"

#include <array>

namespace quarn {
namespace {

constexpr OptionBinding kDelimiter{&SettingsRecord::delimiter, keys::kDelimiter};
constexpr OptionBinding kBuffer{&SettingsRecord::comBuf, keys::kComBuf};
constexpr OptionBinding kSpeed{&SettingsRecord::portSpeed, keys::kPortSpeed};
constexpr OptionBinding kTimeout{&SettingsRecord::rTimeout, keys::kRTimeout};

using enum OptionButton::Kind;

constexpr std::array kFormatButtons{
    OptionButton{1015, Radio, "CR", "delimiterCr", kDelimiter, u"CR", StoreOption},
    OptionButton{1021, Radio, "LF", "delimiterLf", kDelimiter, u"LF", StoreOption},
    OptionButton{1022, Radio, "CRLF", "delimiterCrLf", kDelimiter, u"CRLF", StoreOption},
    OptionButton{1018, Radio, "STX / ETX ", "delimiterStxEtx", kDelimiter, u"STX_ETX", StoreOption},
    OptionButton{1085, Radio, "1024", "buffer1024", kBuffer, u"1K", StoreOption},
    OptionButton{1087, Radio, "2048", "buffer2048", kBuffer, u"2K", StoreOption},
    OptionButton{1086, Radio, "6144", "buffer6144", kBuffer, u"6K", StoreOption},
    OptionButton{1017, Radio, "HIGH", "portSpeedHigh", kSpeed, u"HIGH", ChangePortSpeed},
    OptionButton{1020, Radio, "LOW", "portSpeedLow", kSpeed, u"LOW", ChangePortSpeed},
    OptionButton{1088, Check, " Apply Response Timeout", "responseTimeout", kTimeout, nullptr, StoreOption},
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
