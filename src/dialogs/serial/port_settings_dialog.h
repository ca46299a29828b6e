#pragma once

#include <array>

#include "dialogs/serial/port_dialog.h"

class QComboBox;

namespace quarn {

/// COM Port Settings: the four parameters of the line. SET and OK apply them, DEFAULT resets them to the
/// defaults.
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
  /// Applies the working values to the current settings and to the working settings file.
  void Store();
  /// Closes the line and opens it with these settings.
  bool Reconnect(const SettingsRecord& settings);
  void Set();
  void RestoreDefaults();
  void PressOk();

  LineValues m_working;
  LineValues m_taken;  ///< the current values when the working ones were copied from them
  std::array<QComboBox*, kFieldCount> m_fields{};
};

}  // namespace quarn
