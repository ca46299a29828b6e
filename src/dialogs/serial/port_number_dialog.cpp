#include "dialogs/serial/port_number_dialog.h"

#include <QComboBox>
#include <QGridLayout>
#include <QLabel>
#include <QPushButton>
#include <utility>

#include "dialogs/serial/port_choice.h"
#include "ui/controls.h"
#include "ui/placement.h"

namespace quarn {
namespace {

constexpr int kLabelId = -1;
constexpr int kPortsId = 1005;
constexpr int kWidthUnits = 190;  // the title is seen whole

}  // namespace

CPortNum::CPortNum(QWidget* owner, const DialogContext& context)
    : PortDialog(owner, context, Window::PortNumber, QStringLiteral("CPortNum")) {
  CreateControls();
  Fill();
  Show(ChoiceAtOpening(Situation()));
  ShowTitle(QString());
  m_ok->setFocus();
  StartTicks();
}

void CPortNum::CreateControls() {
  auto* label = WithControlId(new QLabel(QStringLiteral("PORT ="), this), kLabelId);
  label->setObjectName(QStringLiteral("portLabel"));
  m_ports = WithControlId(new QComboBox(this), kPortsId);
  m_ports->setObjectName(QStringLiteral("ports"));
  m_ports->setAccessibleName(QStringLiteral("PORT"));
  m_ports->setMaxVisibleItems(kPortRowCount);
  label->setBuddy(m_ports);
  connect(m_ports, &QComboBox::activated, this, [this] { PickItem(); });
  m_set = AddButton("setButton", QStringLiteral("SET"), 1006, [this] { Set(); });
  m_ok = AddButton("okButton", QStringLiteral("OK"), 1001, [this] { PressOk(); });
  m_ok->setDefault(true);

  const DialogGrid measure(*this);
  auto* grid = new QGridLayout(this);
  grid->setSizeConstraint(QLayout::SetFixedSize);
  const int margin = measure.Width(DialogGrid::kMargin);
  grid->setContentsMargins(margin, margin, margin, margin);
  grid->setHorizontalSpacing(measure.Width(DialogGrid::kGap));
  grid->setVerticalSpacing(measure.Height(DialogGrid::kGroupGap));
  grid->setRowMinimumHeight(0, measure.Height(DialogGrid::kRowHeight));
  grid->setRowMinimumHeight(1, measure.Height(DialogGrid::kRowHeight));
  grid->setColumnStretch(1, 1);
  grid->setColumnMinimumWidth(1, measure.Width(kWidthUnits - 2 * DialogGrid::kMargin) -
                                     label->sizeHint().width() - m_set->minimumWidth() -
                                     2 * grid->horizontalSpacing());
  grid->addWidget(label, 0, 0);
  grid->addWidget(m_ports, 0, 1);
  grid->addWidget(m_set, 0, 2);
  grid->addWidget(m_ok, 1, 2);
}

void CPortNum::Fill() {
  const PortSituation situation = Situation();
  m_ports->clear();
  m_ports->addItem(NoPort());
  m_ports->addItems(situation.ports);
  m_ports->setEnabled(!situation.ports.isEmpty());
}

void CPortNum::Show(const PortChoice& choice) {
  m_selection = choice.selection;
  m_atRest = choice.selection;
  m_ports->setCurrentIndex(m_ports->findText(choice.selection, Qt::MatchExactly | Qt::MatchCaseSensitive));
  m_set->setEnabled(choice.setEnabled);
}

void CPortNum::ShowTitle(const QString& status) { setWindowTitle(PortNumberTitle(Situation(), status)); }

void CPortNum::ShowListChange() {
  ShowTitle(QString());
  Fill();
  Show(ChoiceAtListChange(Situation()));
}

void CPortNum::PickItem() {
  const PortChoice choice = ChoiceOfItem(Situation(), m_ports->currentText());
  m_selection = choice.selection;
  m_set->setEnabled(choice.setEnabled);
  m_ok->setFocus();
}

void CPortNum::ReadControls() { m_selection = m_ports->currentText(); }

bool CPortNum::HasToLook() const {
  return m_selection != m_ports->currentText() ||
         m_set->isEnabled() != IsSetEnabled(Situation(), m_selection);
}

void CPortNum::Look(int /*ticks*/) {
  ReadControls();
  m_set->setEnabled(IsSetEnabled(Situation(), m_selection));
  if (IsRefreshTaken()) ShowListChange();
}

void CPortNum::CloseOnRequest() {
  Requests().refresh.Add(Window::PortNumber);
  close();
}

void CPortNum::Set() {
  ReadControls();
  if (Situation().ports.isEmpty()) {
    Context().Messages().ShowErrorMessage(QStringLiteral(": Error"), QString(),
                                          QStringLiteral("Port Sellection Error"),
                                          QStringLiteral("No available COM ports detected."));
    return;
  }
  Apply();
  ShowListChange();
  // There is nothing left to set, and a held click must not do it again.
  m_set->setEnabled(IsSetEnabled(Situation(), m_selection));
  Requests().refresh.Add(Window::PortNumber);
}

void CPortNum::Apply() {
  if (m_selection == NoPort()) {
    ChooseNoPort(Context());
  } else {
    ConnectToChosenPort(Context(), m_selection, FailureSentence::WithFullStop,
                        [this](const QString& status) { ShowTitle(status); });
  }
}

void CPortNum::PressOk() {
  ReadControls();
  if (IsChangePending(Situation(), m_selection, m_atRest) &&
      Context().Messages().AskYesNo(QStringLiteral(": Confirmation"), QString(),
                                    QStringLiteral("Setting has been changed."),
                                    QStringLiteral("Is it OK to apply this configuration?"))) {
    Apply();
  }
  RaiseConnectionRefreshes(Requests());
  close();
}

}  // namespace quarn
