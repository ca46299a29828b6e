#pragma once

#include <array>

#include "dialogs/serial/port_dialog.h"

class QComboBox;

namespace quarn {

/// COM Port Settings: the four parameters of the line. SET and OK take them into force, DEFAULT goes back
/// to those of a fresh file.
class CPortSettings final : public PortDialog {
 public:
  CPortSettings(QWidget* owner, const DialogContext& context);

 protected:
  void Look(int ticks) override;

 private:
  static constexpr int kFieldCount = 4;

  void CreateControls();
  void CreateButtons();
  void ShowValues();
  void PickItem(int field);
  /// The working values become the settings in force, here and in the working settings file.
  void Store();
  /// Closes the line and opens it anew with the settings in force.
  bool Reconnect(const SettingsRecord& settings);
  void Set();
  void RestoreDefaults();
  void PressOk();

  LineValues m_working;
  LineValues m_taken;  ///< the values in force when the working ones were taken from them
  std::array<QComboBox*, kFieldCount> m_fields{};
};

}  // namespace quarn
