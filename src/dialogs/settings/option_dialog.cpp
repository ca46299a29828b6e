#include "dialogs/settings/option_dialog.h"

#include <QAbstractButton>
#include <QGridLayout>
#include <QLabel>

#include "ui/controls.h"
#include "ui/placement.h"

namespace quarn {
namespace {

constexpr int kColumns = kMostRadioButtons + 2;  ///< with a label, and the room to the right

/// A label's words without the hyphens before its buttons.
QString WordsOf(QString label) {
  while (label.endsWith(u'-') || label.endsWith(u' ')) label.chop(1);
  return label;
}

}  // namespace

OptionDialog::OptionDialog(QWidget* owner, const DialogContext& context, const OptionDialogPlan& plan)
    : ModelessWindow(owner, context.state, plan.window, QString::fromLatin1(plan.className)),
      m_context(context),
      m_plan(plan),
      m_buttons(*this, plan.buttons,
                [this](const OptionButton& option, const QString& value) { Change(option, value); }) {
  Requests().refresh.Remove(m_plan.window);
  CreateLayout();
  Refresh();
  StartTicks();
}

void OptionDialog::CreateLayout() {
  const DialogGrid units(*this);
  const int margin = units.Width(DialogGrid::kMargin);
  // Two nested layouts: each keeps one of the two minimum sizes.
  auto* outer = new QHBoxLayout(this);
  outer->setSizeConstraint(QLayout::SetFixedSize);
  outer->setContentsMargins(margin, margin, margin, margin);
  outer->addStrut(units.Height(m_plan.leastUnits.height()) - 2 * margin);
  auto* column = new QVBoxLayout;
  column->setSpacing(0);
  column->addStrut(units.Width(m_plan.leastUnits.width()) - 2 * margin);
  outer->addLayout(column);
  auto* grid = new QGridLayout;
  grid->setHorizontalSpacing(units.Width(DialogGrid::kGap));
  grid->setVerticalSpacing(units.Height(DialogGrid::kGap));
  grid->setColumnStretch(kColumns - 1, 1);
  AddRows(*grid);
  column->addLayout(grid);
  column->addSpacing(units.Height(DialogGrid::kGroupGap));
  column->addStretch();
  QPushButton* ok = CreateOkButton();
  column->addWidget(ok, 0, Qt::AlignRight);
  // Not on a button that would change a setting at once.
  ok->setFocus();
}

void OptionDialog::AddRows(QGridLayout& grid) {
  const auto table = m_buttons.Table();
  int row = -1;
  int column = 0;
  for (std::size_t i = 0; i < table.size(); ++i) {
    const OptionButton& option = table[i];
    QAbstractButton& button = m_buttons.Button(i);
    const bool kindChanges = i > 0 && table[i - 1].kind != option.kind;
    if (kindChanges) {
      // The grid adds a gap on only one side of an empty row.
      grid.setRowMinimumHeight(++row, DialogGrid(*this).Height(DialogGrid::kGroupGap - DialogGrid::kGap));
    }
    if (option.kind == OptionButton::Check) {
      grid.addWidget(&button, ++row, 0, 1, kColumns, Qt::AlignLeft);
      continue;
    }
    if (i == 0 || kindChanges || !(table[i - 1].binding.key == option.binding.key)) {
      AddLabel(grid, ++row, option.binding.key);
      column = 0;
    }
    grid.addWidget(&button, row, ++column, Qt::AlignLeft);
  }
}

void OptionDialog::AddLabel(QGridLayout& grid, int row, SettingsKey key) {
  for (const OptionLabel& each : m_plan.labels) {
    if (!(each.key == key)) continue;
    auto* label = new QLabel(QString::fromLatin1(each.text), this);
    label->setTextFormat(Qt::PlainText);
    label->setObjectName(WordsOf(label->text()));
    label->setAccessibleName(WordsOf(label->text()));
    grid.addWidget(label, row, 0);
    // For screen readers, the group's name is part of each button's name.
    for (std::size_t i = 0; i < m_buttons.Table().size(); ++i) {
      if (!(m_buttons.Table()[i].binding.key == key)) continue;
      QAbstractButton& button = m_buttons.Button(i);
      button.setAccessibleName(WordsOf(label->text()) + QLatin1Char(' ') + button.text().trimmed());
    }
  }
}

QPushButton* OptionDialog::CreateOkButton() {
  auto* ok = WithControlId(new DialogButton(QStringLiteral("OK"), this), m_plan.okId);
  ok->setObjectName(QStringLiteral("okButton"));
  ok->setAccessibleName(ok->text());
  ok->setMinimumWidth(DialogGrid(*this).WholeWidth(DialogGrid::kButtonWidth));
  ok->setDefault(true);
  connect(ok, &QPushButton::clicked, this, &QDialog::accept);
  return ok;
}

void OptionDialog::Change(const OptionButton& option, const QString& value) {
  {
    const Busy busy(*this);
    option.change(m_context, option.binding, value);
  }
  Refresh();
  // A refused change leaves the clicked button unchecked.
  m_buttons.LeadFocusToTheChosen();
}

void OptionDialog::Refresh() {
  setWindowTitle(QString::fromLatin1(m_plan.title));
  m_buttons.Refresh(m_context.settings);
}

void OptionDialog::Look(int /*ticks*/) {
  if (IsRefreshTaken()) Refresh();
}

void OptionDialog::done(int result) {
  if (!HasToStay()) MarkClosed();
  ModelessWindow::done(result);
}

}  // namespace quarn
