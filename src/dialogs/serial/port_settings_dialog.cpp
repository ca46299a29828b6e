#include "dialogs/serial/port_settings_dialog.h"

#include <QComboBox>
#include <QGridLayout>
#include <QLabel>
#include <QPushButton>
#include <QScopedValueRollback>
#include <span>
#include <utility>

#include "dialogs/serial/port_messages.h"
#include "settings/setting_values.h"
#include "settings/settings_load_save.h"
#include "ui/controls.h"
#include "ui/placement.h"

namespace quarn {
namespace {

constexpr int kDefaultId = 1001;
constexpr int kXPercent = 50;
constexpr int kYPercent = 20;
constexpr int kFieldWidth = 95;  // dialog units; the title is seen whole

/// The slowest bit rate on offer. A settings file may name slower ones.
constexpr int kSlowestOffered = 1200;

struct Field {
  int controlId;
  const char* name;
  const char* label;
  QString LineValues::*value;
  std::span<const SettingValue> choices;
};

constexpr std::array kFields{
    Field{1066, "bitsPerSecond", "Bits Per Second:", &LineValues::bps, values::kBitRates},
    Field{1006, "dataBits", "Data Bits:", &LineValues::bits, values::kDataBits},
    Field{1007, "parity", "Parity:", &LineValues::parity, values::kParities},
    Field{1008, "stopBits", "Stop Bits:", &LineValues::stop, values::kStopBits},
};

QStringList ChoicesOf(const Field& field) {
  QStringList choices;
  for (const SettingValue& each : field.choices) {
    if (field.value == &LineValues::bps && each.number < kSlowestOffered) continue;
    choices.append(each.text.toString());
  }
  return choices;
}

QString Confirmation() { return QStringLiteral(": Confirmation"); }

}  // namespace

CPortSettings::CPortSettings(QWidget* owner, const DialogContext& context)
    : PortDialog(owner, context, Window::PortSettings, QStringLiteral("CPortSettings")),
      m_working(LineValuesOf(context.settings)),
      m_taken(m_working) {
  Requests().refresh.Remove(Window::PortSettings);
  CreateControls();
  ShowValues();
  Put([this] { PlaceOnScreenByPercent(*this, kXPercent, kYPercent); });
  StartTicks();
}

void CPortSettings::CreateControls() {
  const DialogGrid measure(*this);
  auto* grid = new QGridLayout(this);
  grid->setSizeConstraint(QLayout::SetFixedSize);
  const int margin = measure.Width(DialogGrid::kMargin);
  grid->setContentsMargins(margin, margin, margin, margin);
  grid->setHorizontalSpacing(measure.Width(DialogGrid::kGap));
  grid->setVerticalSpacing(measure.Height(DialogGrid::kGap));
  grid->setColumnMinimumWidth(1, measure.WholeWidth(kFieldWidth));
  grid->setColumnMinimumWidth(2, measure.Width(DialogGrid::kGroupGap) - 2 * grid->horizontalSpacing());
  int row = 0;
  for (const Field& field : kFields) {
    auto* label = new QLabel(QString::fromLatin1(field.label), this);
    auto* box = WithControlId(new QComboBox(this), field.controlId);
    box->setObjectName(QLatin1String(field.name));
    box->setAccessibleName(QString::fromLatin1(field.label).chopped(1));
    box->addItems(ChoicesOf(field));
    box->setMaxVisibleItems(box->count());
    label->setBuddy(box);
    connect(box, &QComboBox::activated, this, [this, row] { PickItem(row); });
    grid->setRowMinimumHeight(row, measure.Height(DialogGrid::kRowHeight));
    grid->addWidget(label, row, 0);
    grid->addWidget(box, row, 1);
    m_fields[static_cast<std::size_t>(row++)] = box;
  }
  CreateButtons();
}

void CPortSettings::CreateButtons() {
  auto* grid = static_cast<QGridLayout*>(layout());
  grid->addWidget(
      AddButton("defaultButton", QStringLiteral("DEFAULT"), kDefaultId, [this] { RestoreDefaults(); }), 0, 3);
  grid->addWidget(AddButton("setButton", QStringLiteral("SET"), 1084, [this] { Set(); }), 2, 3);
  QPushButton* ok = AddButton("okButton", QStringLiteral("OK"), 1002, [this] { PressOk(); });
  ok->setDefault(true);
  grid->addWidget(ok, 3, 3);
}

void CPortSettings::ShowValues() {
  for (std::size_t i = 0; i < m_fields.size(); ++i) {
    const QString& value = m_working.*kFields[i].value;
    m_fields[i]->setCurrentIndex(m_fields[i]->findText(value, Qt::MatchExactly | Qt::MatchCaseSensitive));
  }
  setWindowTitle(PortSettingsTitle(m_working));
}

void CPortSettings::PickItem(int field) {
  const auto index = static_cast<std::size_t>(field);
  if (m_fields[index]->currentIndex() < 0) return;
  m_working.*kFields[index].value = m_fields[index]->currentText();
  ShowValues();
}

void CPortSettings::Look(int /*ticks*/) {
  if (!IsRefreshTaken()) return;
  const LineValues inForce = LineValuesOf(Context().settings);
  if (inForce != m_taken) m_working = m_taken = inForce;  // another file has been loaded
  ShowValues();
}

void CPortSettings::Store() {
  PutLineValues(m_working, Context().settings);
  m_taken = m_working;
  StoreAllSettings(Context().workingSettingsFile, Context().settings, Context().Messages());
}

bool CPortSettings::Reconnect(const SettingsRecord& settings) {
  PortConnection& connection = Context().connection;
  const QScopedValueRollback underWay(Context().state.portBeingChanged, true);
  const WaitShown wait(Context().environment.waitIndicator);
  ClosePort(connection);
  const bool opened = ConnectPort(settings, connection, Context().environment);
  connection.connected.Update(OpeningThat(opened));
  // After a NO to connecting it again it has no name any more.
  if (opened) Context().state.currentPortName = settings.comPort;
  RaiseConnectionRefreshes(Requests());
  return opened;
}

void CPortSettings::Set() {
  // Before the line, whose failure has a box.
  Store();
  if (Context().connection.connected.IsSet() && !Reconnect(Context().settings)) {
    TellPortNotAvailable(Context().Messages(), Context().state.currentPortName);
  }
}

void CPortSettings::RestoreDefaults() {
  if (!Context().Messages().AskConfirmation(
          Confirmation(), QString(),
          QStringLiteral("Are you sure you want to restore the default settings? "), QString(),
          AnswerByDefault::Refuse)) {
    return;
  }
  m_working = DefaultLineValues();
  ShowValues();
  Store();
  Reconnect(Context().settings);
  Context().Messages().ShowTransientMessage(QStringLiteral("Settings have been reset to default values."));
}

void CPortSettings::PressOk() {
  if (m_working != LineValuesOf(Context().settings) &&
      Context().Messages().AskConfirmation(Confirmation(), QString(),
                                           QStringLiteral("Settings have been changed."),
                                           QStringLiteral("Is it OK to save this configuration?"))) {
    SettingsRecord chosen = Context().settings;
    PutLineValues(m_working, chosen);
    Reconnect(chosen);
    Store();
  }
  close();
}

}  // namespace quarn
