#include "ui/message_dialogs.h"

#include <QApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QStyle>
#include <QTimerEvent>
#include <QVBoxLayout>

#include "identity.h"
#include "ui/control.h"
#include "ui/placement.h"

namespace quarn {
namespace {

constexpr int kOkId = 1;
constexpr int kNoId = 2;
constexpr int kYesId = 1066;
constexpr int kPictureId = 1022;
constexpr int kMarginUnits = 10;
constexpr int kGapUnits = 6;
constexpr int kButtonWidthUnits = 50;
constexpr int kLeastTextWidthUnits = 120;

std::vector<MessageButton> OkButton() { return {{kOkId, QStringLiteral("OK"), 1}}; }

QLabel* AddLine(QVBoxLayout& column, const MessageLine& line, QWidget& parent) {
  auto* label = WithControlId(new QLabel(line.text, &parent), line.controlId);
  // Names of files and devices are shown as they are, whatever they look like.
  label->setTextFormat(Qt::PlainText);
  label->setVisible(!line.text.isEmpty());
  column.addWidget(label);
  return label;
}

QLabel* WarningPicture(QWidget& parent) {
  auto* picture = WithControlId(new QLabel(&parent), kPictureId);
  const int side = parent.style()->pixelMetric(QStyle::PM_MessageBoxIconSize);
  picture->setPixmap(parent.style()->standardIcon(QStyle::SP_MessageBoxWarning).pixmap(side));
  return picture;
}

}  // namespace

QString MessageCaption(const QString& suffix) {
  return QString::fromLatin1(identity::kName) + QLatin1Char(' ') + suffix;
}

MessageDialog::MessageDialog(QWidget* owner, const QString& caption, const std::vector<MessageLine>& lines,
                             const std::vector<MessageButton>& buttons, bool warningPicture)
    : QDialog(owner, Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint | Qt::WindowCloseButtonHint) {
  setWindowTitle(caption);
  setModal(true);
  const QRect units = MapDialogUnits(font(), {kMarginUnits, kGapUnits, kButtonWidthUnits, 0});
  auto* whole = new QVBoxLayout(this);
  whole->setSizeConstraint(QLayout::SetFixedSize);
  whole->setContentsMargins(units.x(), units.x(), units.x(), units.x());
  whole->setSpacing(units.y() * 2);
  auto* upper = new QHBoxLayout;
  upper->setSpacing(units.x());
  if (warningPicture) upper->addWidget(WarningPicture(*this), 0, Qt::AlignTop);
  auto* column = new QVBoxLayout;
  column->setSpacing(units.y());
  column->addStrut(MapDialogUnits(font(), {0, 0, kLeastTextWidthUnits, 0}).width());
  for (const MessageLine& line : lines) AddLine(*column, line, *this);
  upper->addLayout(column, 1);
  whole->addLayout(upper);
  if (buttons.empty()) return;
  auto* row = new QHBoxLayout;
  row->setSpacing(units.x());
  row->addStretch();
  for (const MessageButton& each : buttons) {
    auto* button = WithControlId(new QPushButton(each.text, this), each.controlId);
    button->setMinimumWidth(units.width());
    button->setDefault(row->count() == 1);
    connect(button, &QPushButton::clicked, this, [this, result = each.result] {
      m_answer = result;
      done(result != 0 ? Accepted : Rejected);
    });
    row->addWidget(button);
  }
  row->addStretch();
  whole->addLayout(row);
}

void MessageDialog::showEvent(QShowEvent* event) {
  QDialog::showEvent(event);
  layout()->activate();
  if (m_position) {
    move(*m_position);
  } else {
    CenterOnScreen(*this);
  }
}

// On screen line 1 stands at the top, line 0 in the middle and line 2 at the bottom.

CConfirmErr::CConfirmErr(QWidget* owner, const QString& suffix, const QString& line0, const QString& line1,
                         const QString& line2)
    : MessageDialog(owner, MessageCaption(suffix), {{1051, line1}, {1053, line0}, {1052, line2}}, OkButton(),
                    true) {}

CConfirmOK::CConfirmOK(QWidget* owner, const QString& suffix, const QString& line0, const QString& line1,
                       const QString& line2)
    : MessageDialog(owner, MessageCaption(suffix), {{1051, line1}, {1053, line0}, {1052, line2}},
                    OkButton()) {}

CConfirmYesCancel::CConfirmYesCancel(QWidget* owner, const QString& suffix, const QString& line0,
                                     const QString& line1, const QString& line2)
    : MessageDialog(owner, MessageCaption(suffix), {{1081, line1}, {1079, line0}, {1080, line2}},
                    {{kOkId, QStringLiteral("OK"), 1}, {1314, QStringLiteral("CANCEL"), 0}}) {}

CConfirmYesNo::CConfirmYesNo(QWidget* owner, const QString& suffix, const QString& line0,
                             const QString& line1, const QString& line2)
    : MessageDialog(owner, MessageCaption(suffix), {{1081, line1}, {1079, line0}, {1080, line2}},
                    {{kYesId, QStringLiteral("YES"), 1}, {kNoId, QStringLiteral("NO"), 0}}) {}

COneshotMsgPos::COneshotMsgPos(QWidget* owner, const QString& text, std::optional<QPoint> position,
                               int displayMs)
    : MessageDialog(owner, MessageCaption(QStringLiteral(": Infomation")), {{1067, text}}, {}),
      m_timer(startTimer(displayMs, Qt::PreciseTimer)) {
  m_position = position;
}

void COneshotMsgPos::timerEvent(QTimerEvent* event) {
  if (event->timerId() != m_timer) return;
  killTimer(m_timer);
  accept();
}

}  // namespace quarn
