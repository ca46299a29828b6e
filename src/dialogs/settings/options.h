#pragma once

#include "dialogs/settings/option_dialog.h"

namespace quarn {

/// Command Format: delimiter, buffer size, port speed and time-out.
class CCommandFormat final : public OptionDialog {
 public:
  CCommandFormat(QWidget* owner, const DialogContext& context);
};

/// Terminal Screen Option: how the Terminal Screen looks and behaves.
class CScreenOption final : public OptionDialog {
 public:
  CScreenOption(QWidget* owner, const DialogContext& context);
};

/// Main Dialog Option: where the main dialog is shown at the next start. It does not move now.
class CMainOption final : public OptionDialog {
 public:
  CMainOption(QWidget* owner, const DialogContext& context);
};

}  // namespace quarn
