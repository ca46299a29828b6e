#pragma once

#include <QDialog>

#include "ui/window_place.h"

namespace quarn {

/// A dialog that is where it belongs each time it appears: centred on the screen, unless a kind of dialog
/// knows better.
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
