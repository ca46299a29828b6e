#include "ui/held_pause.h"

#include <QDeadlineTimer>
#include <QThread>

namespace quarn {

void HeldPause::For(int ms) {
  constexpr unsigned long kStepMs = 10;
  const QDeadlineTimer end(ms, Qt::PreciseTimer);
  m_hold.Begin();
  while (!end.hasExpired()) {
    m_hold.Pump();
    QThread::msleep(kStepMs);
  }
  m_hold.End();
}

}  // namespace quarn
