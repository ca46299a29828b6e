#pragma once

#include <QSize>
#include <QString>
#include <memory>
#include <span>

#include "dialogs/dialog_context.h"
#include "dialogs/modeless_window.h"
#include "dialogs/settings/option_buttons.h"

class QGridLayout;
class QPushButton;

namespace quarn {

/// The label left of the radio buttons of one key.
struct OptionLabel {
  SettingsKey key;
  const char* text;
};

/// Everything in which the option dialogs differ.
struct OptionDialogPlan {
  const char* className;
  const char* title;
  QSize leastUnits;  ///< of the window's inside, in dialog units
  std::span<const OptionButton> buttons;
  std::span<const OptionLabel> labels;
  int okId;
  Window window;
};

/// A dialog in which every click takes effect at once and OK only closes.
class OptionDialog : public ModelessWindow {
 public:
  void done(int result) override;

 protected:
  /// The plan's tables are not copied.
  OptionDialog(QWidget* owner, const DialogContext& context, const OptionDialogPlan& plan);
  void Look(int ticks) override;

 private:
  void CreateLayout();
  void AddRows(QGridLayout& grid);
  void AddLabel(QGridLayout& grid, int row, SettingsKey key);
  QPushButton* CreateOkButton();
  void Change(const OptionButton& option, const QString& value);
  void Refresh();

  DialogContext m_context;
  OptionDialogPlan m_plan;
  OptionButtons m_buttons;
};

}  // namespace quarn
