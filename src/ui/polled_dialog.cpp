#include "ui/polled_dialog.h"

#include <QAbstractEventDispatcher>
#include <QDeadlineTimer>
#include <QTimerEvent>
#include <utility>
#include <vector>

#include "ui/box.h"
#include "ui/box_order.h"

namespace quarn {
namespace {

std::vector<PolledDialog*>& TickingDialogs() {
  static std::vector<PolledDialog*> dialogs;
  return dialogs;
}

std::int64_t Now() { return QDeadlineTimer::current(Qt::PreciseTimer).deadline(); }

}  // namespace

PolledDialog::PolledDialog(QWidget* parent)
    : QDialog(parent, Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint | Qt::WindowSystemMenuHint |
                          Qt::WindowCloseButtonHint) {}

PolledDialog::~PolledDialog() { StopTicks(); }

bool PolledDialog::HasToStay() const { return IsBusy() || BoxOver::IsOver(*this); }

bool PolledDialog::event(QEvent* event) {
  if (event->type() != QEvent::Close || !HasToStay()) return QDialog::event(event);
  m_closeAsked = true;
  event->ignore();
  return true;
}

void PolledDialog::done(int result) {
  if (HasToStay()) {
    m_closeAsked = true;
  } else {
    QDialog::done(result);
  }
}

void PolledDialog::setVisible(bool visible) {
  if (visible && !isVisible()) LetStandAlone(*this);
  QDialog::setVisible(visible);
}

void PolledDialog::CloseIfPutOff() {
  if (!HasToStay() && std::exchange(m_closeAsked, false)) close();
}

void PolledDialog::StartTicks() {
  StopTicks();
  m_ticks.Start(Now());
  TickingDialogs().push_back(this);
  const auto* loop = QAbstractEventDispatcher::instance();
  m_connections = {connect(loop, &QAbstractEventDispatcher::aboutToBlock, this, [this] { Plan(); }),
                   // Only for a loop that never goes to sleep: asking costs more than the tick is late.
                   connect(loop, &QAbstractEventDispatcher::awake, this, [this] {
                     if (Now() - m_planned >= kTickMs) Plan();
                   })};
}

void PolledDialog::WithdrawClose() { m_closeAsked = false; }

void PolledDialog::StopTicks() {
  for (QMetaObject::Connection& connection : m_connections) disconnect(connection);
  std::erase(TickingDialogs(), this);
  m_timer.stop();
}

void PolledDialog::Plan() {
  const std::int64_t now = Now();
  m_planned = now;
  m_ticks.Plan(m_closeAsked ? 0 : QuietTicks(), now);
  if (m_ticks.IsLate(now)) {
    // It will come soon, unless its event was dropped: then it comes at its next interval, after the held
    // input.
    if (now - m_ticks.DueTime() >= kTickMs && m_timerDue) {
      m_timer.start(kTickMs, this);
      m_timerDue.reset();
    }
  } else if (!m_ticks.HasDue()) {
    m_timer.stop();
    m_timerDue.reset();
  } else if (m_timerDue != m_ticks.DueTime()) {
    m_timerDue = m_ticks.DueTime();
    m_timer.start(static_cast<int>(*m_timerDue - now), this);
  }
}

void PolledDialog::timerEvent(QTimerEvent* event) {
  if (event->timerId() != m_timer.timerId()) {
    QDialog::timerEvent(event);
    return;
  }
  m_timer.stop();
  m_timerDue.reset();
  OnTick(m_ticks.Take(Now()));
  CloseIfPutOff();
  // The loop that moves a window on Windows is not Qt's and gives no signal when it wakes.
  for (PolledDialog* dialog : TickingDialogs()) dialog->Plan();
}

}  // namespace quarn
