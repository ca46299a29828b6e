#pragma once

#include "dialogs/serial/port_dialog.h"

class QComboBox;

namespace quarn {

/// COM Port Number: selects the port by its number, or none. Follows the ports present.
class CPortNum final : public PortDialog {
 public:
  CPortNum(QWidget* owner, const DialogContext& context);

 protected:
  void Look(int ticks) override;
  [[nodiscard]] bool HasToLook() const override;
  void CloseOnRequest() override;

 private:
  void CreateControls();
  void Fill();
  /// Shows a choice made by the dialog, not by the user.
  void Show(const PortChoice& choice);
  void ShowTitle(const QString& status);
  void ShowListChange();
  void PickItem();
  /// The choice shown by the control.
  void ReadControls();
  void Set();
  void Apply();
  void PressOk();

  QComboBox* m_ports = nullptr;
  QPushButton* m_set = nullptr;
  QPushButton* m_ok = nullptr;
  QString m_selection;
  QString m_atRest;
};

}  // namespace quarn
