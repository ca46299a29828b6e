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
constexpr milliseconds kBetweenLooks{10};
constexpr int kLongestMs = 60000;

milliseconds InMilliseconds(AnswerProbe::Clock::duration duration) {
  return std::chrono::duration_cast<milliseconds>(duration);
}

QByteArray ContentOf(const QString& path) {
  QFile file(path);
  return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

/// Fields: time spent running, time spent waiting for a processor, number of turns.
std::chrono::nanoseconds WaitedForProcessor(const QString& threadFolder) {
  const QByteArray statistics = ContentOf(threadFolder + QStringLiteral("/schedstat"));
  return std::chrono::nanoseconds(statistics.split(' ').value(1).toLongLong());
}

/// State D: it waits for the disk. The state follows the name, which is in brackets and may contain brackets.
bool WaitsForDisk(const QString& threadFolder) {
  const QByteArray status = ContentOf(threadFolder + QStringLiteral("/stat"));
  return status.mid(status.lastIndexOf(')') + 2).startsWith('D');
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
      m_folder(QStringLiteral("/proc/%1/task/%1").arg(process)),
      m_diskThread([this] { WatchTheDisk(); }),
      m_thread([this] { Run(); }) {}

AnswerProbe::~AnswerProbe() {
  m_stop = true;
  m_thread.join();
  m_diskThread.join();
}

// The system counts this time only if it was started with delay accounting.
void AnswerProbe::WatchTheDisk() {
  Clock::time_point before = Clock::now();
  while (!m_stop) {
    std::this_thread::sleep_for(kBetweenLooks);
    const bool waits = WaitsForDisk(m_folder);
    const Clock::time_point now = Clock::now();
    if (waits) m_waitedForDisk = m_waitedForDisk.load() + (now - before);
    before = now;
  }
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
    const Clock::duration heldUp = HeldUpByOthers() - heldUpBefore;
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

AnswerProbe::Clock::duration AnswerProbe::HeldUpByOthers() const {
  return m_waitedForDisk.load() + WaitedForProcessor(m_folder) +
         WaitedForProcessor(QStringLiteral("/proc/thread-self"));
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
