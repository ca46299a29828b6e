#pragma once

#include "dialogs/settings/option_dialog.h"

namespace quarn {

/// How a command ends, how much of an answer is kept, and how patient the port is.
class CCommandFormat final : public OptionDialog {
 public:
  CCommandFormat(QWidget* owner, const DialogContext& context);
};

}  // namespace quarn
