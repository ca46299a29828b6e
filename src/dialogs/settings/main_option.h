#pragma once

#include "dialogs/settings/option_dialog.h"

namespace quarn {

/// Where the main dialog comes up the next time. It is not moved.
class CMainOption final : public OptionDialog {
 public:
  CMainOption(QWidget* owner, const DialogContext& context);
};

}  // namespace quarn
