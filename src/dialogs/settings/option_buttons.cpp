#include "dialogs/settings/option_buttons.h"

#include <QCheckBox>
#include <QRadioButton>
#include <utility>

#include "ui/accessible.h"
#include "ui/controls.h"

namespace quarn {
namespace {

QString ValueOf(const OptionButton& option, const QAbstractButton& button) {
  if (option.kind == OptionButton::Radio) return option.value.text.toString();
  return button.isChecked() ? kOn.toString() : kOff.toString();
}

}  // namespace

OptionButtons::OptionButtons(QWidget& dialog, std::span<const OptionButton> table, Clicked clicked)
    : m_table(table), m_clicked(std::move(clicked)) {
  for (const OptionButton& option : m_table) m_buttons.push_back(Create(dialog, option));
}

QAbstractButton* OptionButtons::Create(QWidget& dialog, const OptionButton& option) {
  const QString text =
      QString::fromLatin1(option.text).replace(QStringLiteral("%1"), QString::number(option.value.number));
  MakeAccessibleAs<QRadioButton, AccessibleChoice>();
  MakeAccessibleAs<QCheckBox, AccessibleChoice>();
  QAbstractButton* button = nullptr;
  if (option.kind == OptionButton::Radio) {
    button = new QRadioButton(text, &dialog);
    GroupOf(dialog, option.binding.key)->addButton(button);
  } else {
    button = new QCheckBox(text, &dialog);
  }
  WithControlId(button, option.controlId);
  button->setObjectName(QString::fromLatin1(option.name));
  button->setAccessibleName(text.trimmed());
  QObject::connect(button, &QAbstractButton::clicked, &dialog,
                   [this, &option, button] { m_clicked(option, ValueOf(option, *button)); });
  return button;
}

QButtonGroup* OptionButtons::GroupOf(QWidget& dialog, SettingsKey key) {
  const QString name = key.Text().toString();
  for (QButtonGroup* group : m_groups) {
    if (group->objectName() == name) return group;
  }
  // Grouped for the arrow keys; the settings decide which one is checked.
  auto* group = new QButtonGroup(&dialog);
  group->setObjectName(name);
  m_groups.push_back(group);
  return group;
}

void OptionButtons::Refresh(const SettingsRecord& settings) {
  // An exclusive group would keep the old button for a value without a button.
  for (QButtonGroup* group : m_groups) group->setExclusive(false);
  for (std::size_t i = 0; i < m_table.size(); ++i) {
    const OptionButton& option = m_table[i];
    const QStringView chosen = option.kind == OptionButton::Radio ? option.value.text : kOn;
    m_buttons[i]->setChecked(option.binding.field.In(settings) == chosen);
  }
  for (QButtonGroup* group : m_groups) {
    group->setExclusive(true);
    LeadTabToTheChosen(*group);
  }
}

void OptionButtons::LeadFocusToTheChosen() {
  for (const QButtonGroup* group : m_groups) {
    QAbstractButton* chosen = group->checkedButton();
    if (chosen == nullptr) continue;
    const auto* focused = qobject_cast<QAbstractButton*>(chosen->window()->focusWidget());
    if (focused != chosen && focused != nullptr && focused->group() == group) chosen->setFocus();
  }
}

}  // namespace quarn
