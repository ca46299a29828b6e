#pragma once

#include <QString>
#include <cstddef>
#include <functional>
#include <span>
#include <vector>

#include "dialogs/settings/option_changes.h"
#include "settings/setting_values.h"

class QAbstractButton;
class QButtonGroup;
class QWidget;

namespace quarn {

/// In one row, for one setting.
inline constexpr std::size_t kMostRadioButtons = 4;

/// One button of an option dialog, and the setting it stands for.
struct OptionButton {
  enum Kind { Radio, Check };
  int controlId;  ///< another one for each control of a dialog
  Kind kind;
  const char* text;  ///< "%1" in it is the number of the value
  const char* name;  ///< object name
  OptionBinding binding;
  SettingValue value;  ///< a radio button's; a check box stands for "ON" and "OFF"
  OptionChange change;
};

/// The buttons of a table: creates them, shows the current settings in them, and passes on their clicks.
/// Radio buttons of one key form a group. The buttons belong to the dialog.
class OptionButtons {
 public:
  using Clicked = std::function<void(const OptionButton&, const QString& value)>;

  OptionButtons(QWidget& dialog, std::span<const OptionButton> table, Clicked clicked);

  /// Shows the record: checks the radio buttons with the field's value, if any; a check box if its field is
  /// "ON".
  void Refresh(const SettingsRecord& settings);

  /// If a radio button has the focus but is not the checked one of its group, moves the focus to that one.
  void LeadFocusToTheChosen();

  [[nodiscard]] std::span<const OptionButton> Table() const { return m_table; }
  [[nodiscard]] QAbstractButton& Button(std::size_t place) const { return *m_buttons[place]; }

 private:
  QAbstractButton* Create(QWidget& dialog, const OptionButton& option);
  QButtonGroup* GroupOf(QWidget& dialog, SettingsKey key);

  std::span<const OptionButton> m_table;
  Clicked m_clicked;
  std::vector<QAbstractButton*> m_buttons;  ///< as in the table
  std::vector<QButtonGroup*> m_groups;
};

}  // namespace quarn
