#include "system/e2e/answer_probe.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QFile>
#include <algorithm>
#include <utility>

namespace quarn::test {
namespace {

using std::chrono::milliseconds;

constexpr milliseconds kBetweenQuestions{20};
constexpr int kLongestMs = 60000;

milliseconds InMilliseconds(AnswerProbe::Clock::duration duration) {
  return std::chrono::duration_cast<milliseconds>(duration);
}

QDBusMessage WindowQuestion(const QString& service) {
  return QDBusMessage::createMethodCall(service, QStringLiteral("/org/a11y/atspi/accessible/root"),
                                        QStringLiteral("org.a11y.atspi.Accessible"),
                                        QStringLiteral("GetRoleName"));
}

}  // namespace

AnswerProbe::AnswerProbe(QString busAddress, QString service, qint64 process)
    : m_address(std::move(busAddress)),
      m_service(std::move(service)),
      m_statistics(QStringLiteral("/proc/%1/task/%1/schedstat").arg(process)),
      m_thread([this] { Run(); }) {}

AnswerProbe::~AnswerProbe() {
  m_stop = true;
  m_thread.join();
}

void AnswerProbe::Run() {
  const QString name = QStringLiteral("answer-probe-%1").arg(reinterpret_cast<quintptr>(this));
  const QDBusConnection bus = QDBusConnection::connectToBus(m_address, name);
  while (!m_stop) {
    const auto heldUpBefore = HeldUpByOthers();
    {
      const std::lock_guard guard(m_mutex);
      m_asked = Clock::now();
      m_open = true;
    }
    const QDBusMessage answer = bus.call(WindowQuestion(m_service), QDBus::Block, kLongestMs);
    const auto heldUp = std::chrono::duration_cast<Clock::duration>(HeldUpByOthers() - heldUpBefore);
    {
      const std::lock_guard guard(m_mutex);
      const auto took = Clock::now() - m_asked;
      m_open = false;
      m_longest = std::max(m_longest, took);
      m_longestOfItsOwn = std::max(m_longestOfItsOwn, took - heldUp);
    }
    ++(answer.type() == QDBusMessage::ReplyMessage ? m_answers : m_failures);
    std::this_thread::sleep_for(kBetweenQuestions);
  }
  QDBusConnection::disconnectFromBus(name);
}

std::chrono::nanoseconds AnswerProbe::HeldUpByOthers() const {
  QFile file(m_statistics);
  if (!file.open(QIODevice::ReadOnly)) return {};
  // Time spent running, time spent waiting to run, number of turns.
  return std::chrono::nanoseconds(file.readAll().split(' ').value(1).toLongLong());
}

milliseconds AnswerProbe::Longest() const {
  const std::lock_guard guard(m_mutex);
  return InMilliseconds(m_open ? std::max(m_longest, Clock::now() - m_asked) : m_longest);
}

milliseconds AnswerProbe::LongestOfItsOwn() const {
  const std::lock_guard guard(m_mutex);
  return InMilliseconds(m_longestOfItsOwn);
}

}  // namespace quarn::test
