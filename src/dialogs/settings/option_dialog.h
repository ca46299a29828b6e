#pragma once

#include <QSize>
#include <QString>
#include <memory>
#include <span>

#include "dialogs/dialog_context.h"
#include "dialogs/settings/option_buttons.h"
#include "ui/polled_dialog.h"

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
  bool OpenWindows::*open;
  bool WindowRequests::*refresh;
  bool WindowRequests::*close;
};

/// A dialog in which every click takes effect at once and OK only closes. Modeless; deletes itself when
/// closed. Its open flag is set while it exists.
class OptionDialog : public PolledDialog {
 public:
  void done(int result) override;

 protected:
  /// The plan's tables are not copied.
  OptionDialog(QWidget* owner, const DialogContext& context, const OptionDialogPlan& plan);
  void OnTick(int ticks) override;
  [[nodiscard]] int QuietTicks() const override;

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
