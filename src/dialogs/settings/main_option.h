#pragma once

#include "dialogs/settings/option_dialog.h"

namespace quarn {

/// Main Dialog Option: where the main dialog is shown at the next start. It does not move now.
class CMainOption final : public OptionDialog {
 public:
  CMainOption(QWidget* owner, const DialogContext& context);
};

}  // namespace quarn
