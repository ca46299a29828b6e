#include "ui/message_dialogs.h"

#include <QGuiApplication>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QPushButton>
#include <QScreen>
#include <QScrollArea>
#include <QScrollBar>
#include <QStyleOptionFocusRect>
#include <QStylePainter>
#include <QTimerEvent>
#include <QVBoxLayout>
#include <algorithm>

#include "identity.h"
#include "ui/controls.h"
#include "ui/message_text.h"
#include "ui/pictures.h"
#include "ui/placement.h"

namespace quarn {
namespace {

constexpr int kOkId = 1;
constexpr int kCancelId = 2;
constexpr int kNoId = 2;
constexpr int kConfirmCancelId = 1314;
constexpr int kYesId = 1066;
constexpr int kPictureId = 1022;
constexpr int kQuestionId = 1064;
constexpr int kTransientId = 1067;
constexpr int kPlainTextId = 0xFFFF;  // that of a text which nobody asks for

constexpr int kMarginUnits = 10;
constexpr int kGapUnits = 4;
constexpr int kButtonWidthUnits = 50;
constexpr int kLeastTextWidthUnits = 120;
constexpr QRect kPictureUnits{0, 0, 23, 20};
/// The largest share of the screen that a box uses.
constexpr int kMostPercentOfScreen = 90;
constexpr int kWholePercent = 100;
/// The time a typing user needs to notice a new box.
constexpr int kTypedBeforeMs = 500;

QSize MostRoom() {
  const QScreen* screen = QGuiApplication::primaryScreen();
  const QSize size = screen != nullptr ? screen->availableGeometry().size() : QSize(640, 480);
  return size * kMostPercentOfScreen / kWholePercent;
}

std::vector<MessageLine> ErrorLines(const QString& line0, const QString& line1, const QString& line2) {
  return {{1051, "line1", line1}, {1053, "line0", line0}, {1052, "line2", line2}};
}

std::vector<MessageLine> QuestionLines(const QString& line0, const QString& line1, const QString& line2) {
  return {{1081, "line1", line1}, {1079, "line0", line0}, {1080, "line2", line2}};
}

MessageButton Ok() { return {kOkId, "okButton", QStringLiteral("OK"), 1}; }
MessageButton Cancel(int id) { return {id, "cancelButton", QStringLiteral("CANCEL"), 0}; }
MessageButton Yes() { return {kYesId, "yesButton", QStringLiteral("YES"), 1}; }
MessageButton No() { return {kNoId, "noButton", QStringLiteral("NO"), 0}; }

QLabel* PictureLabel(QWidget& parent) {
  auto* picture = WithControlId(new QLabel(&parent), kPictureId);
  picture->setObjectName(QStringLiteral("picture"));
  picture->setAccessibleName(QStringLiteral("Warning"));
  const QSize room = MapDialogUnits(parent.font(), kPictureUnits).size();
  picture->setPixmap(WarningPicture(room, parent.devicePixelRatioF()));
  return picture;
}

/// A text that is too tall for the screen. Keys scroll it when it has the focus, which a line around it
/// shows.
class ScrolledText final : public QScrollArea {
 public:
  explicit ScrolledText(QWidget* parent) : QScrollArea(parent) {
    setObjectName(QStringLiteral("scrolledText"));
    setAccessibleName(QStringLiteral("Message"));
    setFrameShape(QFrame::NoFrame);
    setViewportMargins(kLine, kLine, kLine, kLine);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
  }
  static constexpr int kLine = 2;  ///< room for it, in pixels

 protected:
  bool event(QEvent* event) override {
    const bool done = QScrollArea::event(event);
    if (event->type() == QEvent::Paint && hasFocus()) {
      QStyleOptionFocusRect line;
      line.initFrom(this);
      line.backgroundColor = palette().color(backgroundRole());
      QStylePainter(this).drawPrimitive(QStyle::PE_FrameFocusRect, line);
    }
    return done;
  }
};

QString Spoken(const std::vector<MessageLine>& lines) {
  QStringList texts;
  for (const MessageLine& line : lines) {
    if (!line.text.isEmpty()) texts.append(line.text);
  }
  return texts.join(QLatin1Char('\n'));
}

}  // namespace

QString MessageCaption(const QString& suffix) {
  return QString::fromLatin1(identity::kName) + QLatin1Char(' ') + suffix;
}

MessageDialog::MessageDialog(QWidget* owner, const QString& name, const QString& caption,
                             const std::vector<MessageLine>& lines, const std::vector<MessageButton>& buttons,
                             AnswerByDefault byDefault, bool warningPicture)
    : PlacedDialog(owner,
                   Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint | Qt::WindowCloseButtonHint),
      m_comesByItself(byDefault == AnswerByDefault::AgreeUncalled) {
  setObjectName(name);
  setWindowTitle(caption);
  setAccessibleDescription(Spoken(lines));
  setModal(true);
  const QRect units = MapDialogUnits(font(), {kMarginUnits, kGapUnits, 0, 0});
  auto* whole = new QVBoxLayout(this);
  whole->setSizeConstraint(QLayout::SetFixedSize);
  whole->setContentsMargins(units.x(), units.x(), units.x(), units.x());
  whole->setSpacing(units.x());
  auto* upper = new QHBoxLayout;
  upper->setSpacing(units.x());
  whole->addLayout(upper);
  QSize room = MostRoom().shrunkBy(FrameOf(*this)).shrunkBy(whole->contentsMargins());
  if (!buttons.empty()) {
    QHBoxLayout* row = AddButtons(buttons, byDefault);
    whole->addLayout(row);
    room.rheight() -= row->sizeHint().height() + whole->spacing();
  }
  if (warningPicture) {
    QLabel* picture = PictureLabel(*this);
    upper->addWidget(picture, 0, Qt::AlignTop);
    room.rwidth() -= picture->sizeHint().width() + upper->spacing();
  }
  upper->addWidget(CreateText(lines, room), 1, Qt::AlignVCenter);
}

QWidget* MessageDialog::CreateText(const std::vector<MessageLine>& lines, QSize room) {
  auto* text = new QWidget(this);
  auto* column = new QVBoxLayout(text);
  const QRect units = MapDialogUnits(font(), {0, kGapUnits, kLeastTextWidthUnits, 0});
  column->setContentsMargins(0, 0, 0, 0);
  column->setSpacing(units.y());
  column->addStrut(std::min(units.width(), room.width()));
  std::vector<MessageText*> labels;
  for (const MessageLine& line : lines) {
    auto* label = WithControlId(new MessageText(line.text, text), line.controlId);
    label->setObjectName(QLatin1String(line.name));
    label->WrapAt(room.width());
    label->setVisible(!line.text.isEmpty());
    column->addWidget(label, 0, Qt::AlignLeft);
    labels.push_back(label);
  }
  if (column->sizeHint().height() <= room.height()) return text;

  auto* scroll = new ScrolledText(this);
  const int bar = scroll->verticalScrollBar()->sizeHint().width() + units.y() + 2 * ScrolledText::kLine;
  for (MessageText* label : labels) label->WrapAt(room.width() - bar);
  scroll->setWidget(text);
  scroll->setFixedSize(std::min(column->sizeHint().width() + bar, room.width()), room.height());
  return scroll;
}

QHBoxLayout* MessageDialog::AddButtons(const std::vector<MessageButton>& buttons, AnswerByDefault byDefault) {
  const int width = DialogGrid(*this).WholeWidth(kButtonWidthUnits);
  auto* row = new QHBoxLayout;
  row->setSpacing(MapDialogUnits(font(), {kGapUnits, 0, 0, 0}).x() * 2);
  row->addStretch();
  for (const MessageButton& each : buttons) {
    auto* button = WithControlId(new DialogButton(each.text, this), each.controlId);
    button->setObjectName(QLatin1String(each.name));
    button->setMinimumWidth(width);
    connect(button, &QPushButton::clicked, this, [this, result = each.result] {
      m_answer = result;
      done(result != 0 ? Accepted : Rejected);
    });
    row->addWidget(button);
    button->installEventFilter(this);
    m_buttons.push_back(button);
    const bool agrees = each.result != 0;
    if (agrees == (byDefault != AnswerByDefault::Refuse)) m_defaultButton = button;
  }
  row->addStretch();
  m_defaultButton->setDefault(true);
  return row;
}

void MessageDialog::showEvent(QShowEvent* event) {
  PlacedDialog::showEvent(event);
  if (m_defaultButton != nullptr) m_defaultButton->setFocus();
  if (m_comesByItself) m_typedBefore.setRemainingTime(kTypedBeforeMs, Qt::PreciseTimer);
}

void MessageDialog::keyPressEvent(QKeyEvent* event) {
  if (IsHeldSinceBefore(*event)) return;
  if (QPushButton* button = ButtonOfKey(*event)) {
    button->click();
  } else {
    PlacedDialog::keyPressEvent(event);
  }
}

bool MessageDialog::eventFilter(QObject* watched, QEvent* event) {
  const bool isHeld = event->type() == QEvent::KeyPress && IsHeldSinceBefore(static_cast<QKeyEvent&>(*event));
  return isHeld || PlacedDialog::eventFilter(watched, event);
}

bool MessageDialog::IsHeldSinceBefore(const QKeyEvent& event) const {
  const bool answers =
      event.key() == Qt::Key_Return || event.key() == Qt::Key_Enter || event.key() == Qt::Key_Escape;
  return m_comesByItself && answers && event.isAutoRepeat();
}

QPushButton* MessageDialog::ButtonOfKey(const QKeyEvent& event) const {
  // With Shift or Alt it is still the letter. A key held down since before the box opened does not answer.
  const Qt::KeyboardModifiers others = event.modifiers() & ~(Qt::ShiftModifier | Qt::AltModifier);
  if (m_comesByItself && !m_typedBefore.hasExpired()) return nullptr;
  if (m_buttons.size() < 2 || others != Qt::NoModifier || event.isAutoRepeat()) return nullptr;
  const auto found = std::find_if(m_buttons.begin(), m_buttons.end(), [&event](const QPushButton* button) {
    return button->text().front().unicode() == event.key();
  });
  return found == m_buttons.end() ? nullptr : *found;
}

void MessageDialog::Place() {
  if (m_position) {
    move(*m_position);
  } else {
    PlacedDialog::Place();
  }
}

// On screen line 1 stands at the top, line 0 in the middle and line 2 at the bottom.

CConfirmErr::CConfirmErr(QWidget* owner, const QString& suffix, const QString& line0, const QString& line1,
                         const QString& line2)
    : MessageDialog(owner, QStringLiteral("CConfirmErr"), MessageCaption(suffix),
                    ErrorLines(line0, line1, line2), {Ok()}, AnswerByDefault::Agree, true) {}

CConfirmOK::CConfirmOK(QWidget* owner, const QString& suffix, const QString& line0, const QString& line1,
                       const QString& line2)
    : MessageDialog(owner, QStringLiteral("CConfirmOK"), MessageCaption(suffix),
                    ErrorLines(line0, line1, line2), {Ok()}) {}

CConfirmYesCancel::CConfirmYesCancel(QWidget* owner, const QString& suffix, const QString& line0,
                                     const QString& line1, const QString& line2, AnswerByDefault byDefault)
    : MessageDialog(owner, QStringLiteral("CConfirmYesCancel"), MessageCaption(suffix),
                    QuestionLines(line0, line1, line2), {Ok(), Cancel(kConfirmCancelId)}, byDefault) {}

CConfirmSimple::CConfirmSimple(QWidget* owner, const QString& text, AnswerByDefault byDefault)
    : MessageDialog(owner, QStringLiteral("CConfirmSimple"), QStringLiteral("Quarn - Confirmation"),
                    {{kQuestionId, "message", text}}, {Ok(), Cancel(kCancelId)}, byDefault) {}

CYesNo::CYesNo(QWidget* owner, const QString& text, AnswerByDefault byDefault)
    : MessageDialog(owner, QStringLiteral("CYesNo"), QStringLiteral("Quarn -  Confirmation"),
                    {{kQuestionId, "message", text}}, {Yes(), No()}, byDefault) {}

CConfirmYesNo::CConfirmYesNo(QWidget* owner, const QString& suffix, const QString& line0,
                             const QString& line1, const QString& line2, AnswerByDefault byDefault)
    : MessageDialog(owner, QStringLiteral("CConfirmYesNo"), MessageCaption(suffix),
                    QuestionLines(line0, line1, line2), {Yes(), No()}, byDefault) {}

PlainMessage::PlainMessage(QWidget* owner, const QString& text)
    : MessageDialog(owner, QStringLiteral("PlainMessage"), QString::fromLatin1(identity::kName),
                    {{kPlainTextId, "message", text}}, {Ok()}) {}

COneshotMsgPos::COneshotMsgPos(QWidget* owner, const QString& text, std::optional<QPoint> position,
                               int displayMs)
    : MessageDialog(owner, QStringLiteral("COneshotMsgPos"), MessageCaption(QStringLiteral(": Infomation")),
                    {{kTransientId, "message", text}}, {}),
      m_displayMs(displayMs) {
  m_position = position;
}

void COneshotMsgPos::showEvent(QShowEvent* event) {
  MessageDialog::showEvent(event);
  if (!m_timer.isActive()) m_timer.start(m_displayMs, Qt::PreciseTimer, this);
}

void COneshotMsgPos::timerEvent(QTimerEvent* event) {
  if (event->timerId() != m_timer.timerId()) {
    MessageDialog::timerEvent(event);
    return;
  }
  m_timer.stop();
  accept();
}

void COneshotMsgPos::keyPressEvent(QKeyEvent* event) {
  // There is no button for Enter; it closes the box as Escape does.
  if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) {
    accept();
    return;
  }
  MessageDialog::keyPressEvent(event);
}

}  // namespace quarn
