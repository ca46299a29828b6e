#pragma once

#include <QString>
#include <functional>
#include <span>
#include <vector>

#include "dialogs/settings/option_changes.h"

class QAbstractButton;
class QButtonGroup;
class QWidget;

namespace quarn {

/// One button of a dialog that edits settings, and what it stands for.
struct OptionButton {
  enum Kind { Radio, Check };
  int controlId;
  Kind kind;
  const char* text;
  const char* name;  ///< object name
  OptionBinding binding;
  const char16_t* value;  ///< a radio button's; a check box stands for "ON" and "OFF"
  OptionChange change;
};

/// The buttons of a table: created, kept as the live settings say, and their clicks handed on. Radio
/// buttons of one key belong together. The buttons belong to the dialog.
class OptionButtons {
 public:
  using Clicked = std::function<void(const OptionButton&, const QString& value)>;

  OptionButtons(QWidget& dialog, std::span<const OptionButton> table, Clicked clicked);

  /// Shows the record: of the radio buttons those with the field's value, be it none; a check box when its
  /// field is "ON".
  void Refresh(const SettingsRecord& settings);

  /// A radio button that has the focus and is not the chosen one of its group leaves it to that one.
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
