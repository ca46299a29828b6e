#pragma once

#include "dialogs/settings/option_dialog.h"

namespace quarn {

/// Terminal Screen Option: how the Terminal Screen looks and behaves.
class CScreenOption final : public OptionDialog {
 public:
  CScreenOption(QWidget* owner, const DialogContext& context);
};

}  // namespace quarn
