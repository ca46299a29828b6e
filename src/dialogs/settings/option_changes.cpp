#include "dialogs/settings/option_changes.h"

#include <utility>

#include "settings/settings_load_save.h"

namespace quarn {
namespace {

void WriteOption(const DialogContext& context, const OptionBinding& option) {
  StoreValues(context.workingSettingsFile, {{option.key, option.field.In(context.settings)}},
              context.Messages());
}

}  // namespace

void StoreOption(const DialogContext& context, const OptionBinding& option, const QString& value) {
  option.field.In(context.settings) = value;
  WriteOption(context, option);
}

void StoreShownOption(const DialogContext& context, const OptionBinding& option, const QString& value) {
  context.state.requests.refresh.Add(Window::TerminalScreen);
  StoreOption(context, option, value);
}

void ChangePortSpeed(const DialogContext& context, const OptionBinding& option, const QString& value) {
  QString& speed = option.field.In(context.settings);
  if (speed == value) return;
  const QString former = std::exchange(speed, value);
  if (context.connection.handle.IsOpen() &&
      !ReconfigurePort(context.settings, context.connection, context.environment)) {
    speed = former;
    context.Messages().ShowErrorMessage(
        QStringLiteral(": Error"), QString(),
        QStringLiteral("Failed to configure  \"%1\"").arg(context.state.currentPortName),
        QStringLiteral("Check COM port state."));
    return;
  }
  WriteOption(context, option);
}

void ChangeInputMax(const DialogContext& context, const OptionBinding& option, const QString& value) {
  if (option.field.In(context.settings) == value) return;
  if (context.state.open.Contains(Window::TerminalScreen)) {
    if (!context.Messages().AskYesNo(QStringLiteral(": Confirmation"),
                                     QStringLiteral("Is it OK to clear the operation log ?"), QString(),
                                     QString(), AnswerByDefault::Refuse)) {
      return;
    }
  }
  option.field.In(context.settings) = value;
  if (context.state.open.Contains(Window::TerminalScreen)) context.state.requests.clearLog = true;
  context.state.requests.refresh.Add(Window::TerminalScreen);
  WriteOption(context, option);
}

}  // namespace quarn
