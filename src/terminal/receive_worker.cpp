#include "terminal/receive_worker.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <system_error>

#include "terminal/framing.h"
#include "terminal/wait_plan.h"

namespace quarn {
namespace {

/// The largest response that one read takes.
constexpr std::size_t kReadSize = 8191;
constexpr std::chrono::milliseconds kSettlingTime{50};

}  // namespace

ReceiveWorker::ReceiveWorker(const SettingsRecord& settings, PortConnection& connection, WaitableFlag& busy,
                             std::mutex& resultMutex)
    : m_settings(settings),
      m_command(connection.command),
      m_line(connection.handle.Line()),
      m_connection(connection),
      m_busy(busy),
      m_resultMutex(resultMutex) {
  m_running.TrySet();
  m_settling.TrySet();
  Start();
}

void ReceiveWorker::Start() {
  try {
    m_thread = std::thread([this] { Run(); });
  } catch (const std::system_error& error) {
    m_whyNoThread = QString::fromStdString(error.code().message());
    DeliverFailure();
    m_running.Clear();
    m_busy.Clear();
  }
}

ReceiveWorker::~ReceiveWorker() {
  const bool reading = m_running.IsSet();
  if (reading && m_line) m_line->CancelIo();
  m_settling.Clear();
  if (m_thread.joinable()) m_thread.join();
  if (reading && m_line) m_line->AllowIo();
}

bool ReceiveWorker::HasDelivered() const {
  const std::lock_guard guard(m_resultMutex);
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
    Deliver(bytes.data(), read.bytes);
    m_settling.WaitClear(std::chrono::steady_clock::now() + kSettlingTime);
  } else {
    DeliverFailure();
  }
  m_busy.Clear();
}

void ReceiveWorker::Deliver(const char* bytes, std::size_t count) {
  const auto limit = static_cast<std::size_t>(ResponseLimit(m_settings.comBuf));
  // One byte above the limit still counts as complete, because the count excludes the last byte.
  const bool complete = count <= limit + 1;
  const std::size_t kept = complete ? count : limit;
  const std::lock_guard guard(m_resultMutex);
  auto& buffer = m_connection.receiveBuffer;
  *std::copy_n(bytes, kept, buffer.begin()) = '\0';
  m_connection.status = complete ? 0 : 3;
  m_connection.byteCount = static_cast<std::int32_t>(count) - 1;
  m_delivered = true;
}

void ReceiveWorker::DeliverFailure() {
  const std::lock_guard guard(m_resultMutex);
  m_connection.status = -1;
  m_connection.byteCount = -1;
  m_delivered = true;
}

}  // namespace quarn
