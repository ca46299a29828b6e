#include "dialogs/serial/detailed_port_list_dialog.h"

#include <QLabel>
#include <QMouseEvent>
#include <QPushButton>
#include <QRadioButton>
#include <QScrollArea>
#include <algorithm>
#include <utility>

#include "dialogs/serial/port_choice.h"
#include "ui/accessible.h"
#include "ui/controls.h"
#include "ui/placement.h"
#include "ui/tool_tip.h"

namespace quarn {
namespace {

constexpr int kStatusId = 1064;

struct RowIds {
  int radio;
  int description;
};

constexpr std::array<RowIds, kPortRowCount> kRowIds{{
    {1031, 1021}, {1032, 1022}, {1033, 1023}, {1034, 1024}, {1035, 1025}, {1036, 1026},
    {1037, 1027}, {1038, 1028}, {1039, 1029}, {1040, 1030}, {1051, 1041}, {1052, 1042},
    {1053, 1043}, {1054, 1044}, {1055, 1045}, {1056, 1046}, {1057, 1047}, {1058, 1048},
    {1059, 1049}, {1060, 1050}, {1061, 1068}, {1063, 1069}, {1065, 1070}, {1066, 1071},
    {1067, 1072}, {1073, 1078}, {1074, 1079}, {1075, 1080}, {1076, 1081}, {1077, 1082},
}};

/// The description in this width. If it is too long, the product is cut: the path, the reason why the port
/// cannot be opened, and the port's name stay.
QString FittingDescription(const QString& description, const QFontMetrics& metrics, int width) {
  if (metrics.horizontalAdvance(description) <= width) return description;
  const QString rest = description.mid(std::max<qsizetype>(description.lastIndexOf(QLatin1String(" - ")), 0));
  const QString product = description.chopped(rest.size());
  QString cut = metrics.elidedText(product, Qt::ElideRight, width - metrics.horizontalAdvance(rest)) + rest;
  if (!product.isEmpty() && metrics.horizontalAdvance(cut) <= width) return cut;
  return metrics.elidedText(description, Qt::ElideMiddle, width);
}

}  // namespace

CPortDetails::CPortDetails(QWidget* owner, const DialogContext& context)
    : PortDialog(owner, context, Window::DetailedPortList, QStringLiteral("CPortDetails")) {
  CreateControls();
  ShowList();
  StartTicks();
}

void CPortDetails::CreateControls() {
  m_status = WithControlId(new QLabel(QStringLiteral("Select a port to connect from the list below."), this),
                           kStatusId);
  m_status->setObjectName(QStringLiteral("status"));
  m_scroll = new QScrollArea(this);
  m_scroll->setObjectName(QStringLiteral("rows"));
  m_scroll->setAccessibleName(QStringLiteral("COM ports"));
  m_scroll->setFrameShape(QFrame::NoFrame);
  m_scroll->setFocusPolicy(Qt::NoFocus);
  m_scroll->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  m_scroll->setWidget(new QWidget);
  m_radios = new QButtonGroup(this);
  for (int i = 0; i < kPortRowCount; ++i) CreateRow(i);
  connect(m_radios, &QButtonGroup::idClicked, this, [this](int index) { ClickRow(index); });
  m_set = AddButton("setButton", QStringLiteral("SET"), 1062, [this] { Set(); });
  m_ok = AddButton("okButton", QStringLiteral("OK"), 1013, [this] { PressOk(); });
  m_ok->setDefault(true);
}

void CPortDetails::CreateRow(int index) {
  MakeAccessibleAs<QRadioButton, AccessibleChoice>();
  Row& row = m_rows[static_cast<std::size_t>(index)];
  const RowIds& ids = kRowIds[static_cast<std::size_t>(index)];
  row.radio = WithControlId(new QRadioButton(m_scroll->widget()), ids.radio);
  row.radio->setObjectName(QStringLiteral("port%1").arg(index));
  row.description = WithControlId(new QLabel(m_scroll->widget()), ids.description);
  row.description->setObjectName(QStringLiteral("description%1").arg(index));
  row.description->setTextFormat(Qt::PlainText);
  row.description->installEventFilter(this);
  m_radios->addButton(row.radio, index);
}

void CPortDetails::ShowTitle(const QString& status) {
  setWindowTitle(DetailedPortListTitle(Situation(), status));
}

void CPortDetails::ShowList() {
  const PortSituation situation = Situation();
  // Asked for again: whether a port can be opened may have changed since they were listed.
  m_shown = PortRowsOf(situation.ports, Context().portSource.Ports().value_or(QList<Port>()));
  ShowTitle(QString());
  m_status->setText(PortListStatus(situation));
  LayOut();
  FillRows();
  // The marked row is the selected one, except for a click that has not been processed yet.
  if (!m_rowClicked) m_selected = situation.current;
  Mark(situation.current);
  ApplySetRule(situation.current);
}

void CPortDetails::ShowCurrentPort() {
  ShowTitle(QString());
  m_selected = Situation().current;
  m_rowClicked = false;
  Mark(m_selected);
}

void CPortDetails::FillRows() {
  for (int i = 0; i < kPortRowCount; ++i) {
    const Row& row = m_rows[static_cast<std::size_t>(i)];
    const bool shown = i < m_shown.size();
    row.radio->setVisible(shown);
    row.description->setVisible(shown);
    if (!shown) continue;
    const Port& port = m_shown[i];
    const QString fitting =
        FittingDescription(port.description, row.description->fontMetrics(),
                           row.description->width() - DialogGrid(*this).Width(DialogGrid::kGap));
    row.description->setText(fitting);
    SetPlainToolTip(*row.description, fitting == port.description ? QString() : port.description,
                    Qt::ElideMiddle);
    row.description->setAccessibleName(port.description);
    row.radio->setText(port.name);
    row.radio->setAccessibleName(port.description);
  }
}

void CPortDetails::Mark(const QString& port) {
  m_radios->setExclusive(false);
  for (const Row& row : m_rows) row.radio->setChecked(false);
  m_radios->setExclusive(true);
  if (const std::optional<int> row = RowOf(m_shown, port)) {
    m_rows[static_cast<std::size_t>(*row)].radio->setChecked(true);
  }
  LeadTabToTheChosen(*m_radios);
  ShowMarkedRow();
}

void CPortDetails::ShowMarkedRow() {
  // Before the window is shown there is nothing to scroll yet.
  if (m_radios->checkedButton() != nullptr) m_scroll->ensureWidgetVisible(m_radios->checkedButton(), 0, 0);
}

void CPortDetails::showEvent(QShowEvent* event) {
  PortDialog::showEvent(event);
  ShowMarkedRow();
}

void CPortDetails::ApplySetRule(const QString& port) {
  m_set->setEnabled(IsRowSetEnabled(Situation(), port));
}

void CPortDetails::ClickRow(int index) {
  if (index >= m_shown.size()) return;
  if (std::exchange(Requests().suppressNextClick, false)) {
    Mark(m_selected);  // the click has already marked its row
    return;
  }
  m_selected = m_shown[index].name;
  Mark(m_selected);
  ApplySetRule(m_selected);
  m_rowClicked = true;
}

bool CPortDetails::eventFilter(QObject* receiver, QEvent* event) {
  if (event->type() == QEvent::MouseButtonPress &&
      static_cast<QMouseEvent*>(event)->button() == Qt::LeftButton) {
    for (const Row& row : m_rows) {
      if (row.description != receiver) continue;
      row.radio->setFocus(Qt::MouseFocusReason);
      row.radio->click();
      return true;
    }
  }
  return PortDialog::eventFilter(receiver, event);
}

bool CPortDetails::HasToLook() const { return m_rowClicked || FrameOf(*this) != m_frame; }

void CPortDetails::Look(int /*ticks*/) {
  if (FrameOf(*this) != m_frame) {
    LayOut();
    ShowMarkedRow();
  }
  if (!IsCloseAsked() && IsRefreshTaken()) {
    if (std::exchange(Requests().suppressNextClick, false)) {
      ShowCurrentPort();
    } else {
      ShowList();
    }
  }
  if (std::exchange(m_rowClicked, false) && !IsCloseAsked()) {
    Mark(m_selected);
    ApplySetRule(m_selected);
  }
}

void CPortDetails::CloseOnRequest() {
  Requests().refresh.Add(Window::MainDialog);
  close();
}

void CPortDetails::Connect() {
  ConnectToChosenPort(Context(), m_selected, FailureSentence::WithoutFullStop,
                      [this](const QString& status) { ShowTitle(status); });
}

void CPortDetails::Set() {
  const PortSituation situation = Situation();
  if (m_selected == situation.current && situation.connected) return;
  Connect();
  m_rowClicked = false;
  ShowList();
}

void CPortDetails::PressOk() {
  if (m_selected != Context().state.currentPortName &&
      Context().Messages().AskConfirmation(QStringLiteral(": Confirmation"), QString(),
                                           QStringLiteral("Do you want to apply this configuration?"),
                                           QString())) {
    Connect();
  }
  RaiseConnectionRefreshes(Requests());
  close();
}

}  // namespace quarn
