#pragma once

#include <QDialog>

#include "ui/window_place.h"

namespace quarn {

/// A dialog that is placed each time it is shown: centred on the screen, unless a subclass places it
/// elsewhere.
class PlacedDialog : public QDialog {
 public:
  void setVisible(bool visible) override;

 protected:
  using QDialog::QDialog;
  virtual void Place();

 private:
  WindowPlace m_place{*this};
};

}  // namespace quarn
