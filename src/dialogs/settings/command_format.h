#pragma once

#include "dialogs/settings/option_dialog.h"

namespace quarn {

/// Command Format: delimiter, buffer size, port speed and time-out.
class CCommandFormat final : public OptionDialog {
 public:
  CCommandFormat(QWidget* owner, const DialogContext& context);
};

}  // namespace quarn
