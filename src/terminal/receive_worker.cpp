#include "terminal/receive_worker.h"

#include <array>
#include <chrono>
#include <system_error>
#include <utility>

#include "terminal/framing.h"
#include "terminal/wait_plan.h"

namespace quarn {
namespace {

/// The largest response that one read takes.
constexpr std::size_t kReadSize = 8191;
constexpr std::chrono::milliseconds kSettlingTime{50};

}  // namespace

Reading ReadingOf(const char* bytes, std::size_t count, const QString& comBuf) {
  const auto limit = static_cast<std::size_t>(ResponseLimit(comBuf));
  Reading reading;
  // One byte above the limit still counts as complete: the count leaves out the last byte.
  reading.truncated = count > limit + 1;
  reading.byteCount = static_cast<std::int32_t>(count) - 1;
  reading.bytes = QByteArray(bytes, static_cast<qsizetype>(reading.truncated ? limit : count));
  return reading;
}

ReceiveWorker::ReceiveWorker(const SettingsRecord& settings, QByteArray command,
                             std::shared_ptr<SerialLine> line, WaitableFlag& busy)
    : m_settings(settings), m_command(std::move(command)), m_line(std::move(line)), m_busy(busy) {
  m_running.TrySet();
  m_settling.TrySet();
  Start();
}

void ReceiveWorker::Start() {
  try {
    m_thread = std::thread([this] { Run(); });
  } catch (const std::system_error& error) {
    m_whyNoThread = QString::fromStdString(error.code().message());
    Deliver({.failed = true});
    m_running.Clear();
    m_busy.Clear();
  }
}

ReceiveWorker::~ReceiveWorker() { End(); }

void ReceiveWorker::End() {
  const bool reading = m_running.IsSet();
  if (reading && m_line) m_line->CancelIo();
  m_settling.Clear();
  if (m_thread.joinable()) m_thread.join();
  if (reading && m_line) m_line->AllowIo();
}

std::optional<Reading> ReceiveWorker::Delivered() const {
  const std::lock_guard guard(m_deliveryMutex);
  return m_delivered;
}

void ReceiveWorker::Run() {
  SendAndReceive();
  m_running.Clear();
}

void ReceiveWorker::SendAndReceive() {
  if (m_line) {
    // Failures of the purge and of the transmission are not reported: the following read shows them.
    m_line->Purge();
    SendFramed(*m_line, FrameCommand(m_settings.delimiter, m_command));
  }
  if (!m_busy.IsSet()) return;
  std::array<char, kReadSize> bytes{};
  IoResult read;
  if (m_line) {
    m_line->ClearError();
    read = m_line->Read(bytes.data(), bytes.size());
  }
  if (read.ok) {
    Reading reading = ReadingOf(bytes.data(), read.bytes, m_settings.comBuf);
    reading.cutOff = read.failure.kind != LineError::None && read.failure.kind != LineError::Cancelled;
    Deliver(std::move(reading));
    m_settling.WaitClear(std::chrono::steady_clock::now() + kSettlingTime);
  } else {
    Deliver({.failed = true});
  }
  m_busy.Clear();
}

void ReceiveWorker::Deliver(Reading reading) {
  const std::lock_guard guard(m_deliveryMutex);
  m_delivered = std::move(reading);
}

}  // namespace quarn
