#include "serial/serial_line_win32.h"

#include <windows.h>

#include <algorithm>
#include <utility>

#include "serial/line_failure_win32.h"
#include "serial/read_limits.h"

namespace quarn {

namespace {

static_assert(sizeof(DCB) == 28, "the comm API checks the record's length");

/// ERROR_MAX_THRDS_REACHED, which MinGW-w64's headers lack.
constexpr unsigned long kNoThread = 164;

/// How long a driver has to end a call that was cancelled.
constexpr std::chrono::milliseconds kCancelPatience{200};
/// A call that was cancelled before it had reached the driver is cancelled again.
constexpr std::chrono::milliseconds kCancelAgain{1};
/// How often the driver is asked whether something has come.
constexpr std::chrono::milliseconds kLook{2};

/// The port was there when it was opened, and nobody else could open it: what says otherwise now is a driver
/// whose device is gone.
LineFailure FailureOnOpenLine(unsigned long code, const QString& device) {
  LineFailure failure = FailureOfSystemError(code, device);
  if (failure.kind == LineError::NotFound || failure.kind == LineError::InUse) {
    failure.kind = LineError::Disconnected;
  }
  return failure;
}

}  // namespace

Win32SerialLine::Win32SerialLine(void* handle, QString device)
    : m_device(std::move(device)), m_handle(std::make_shared<CommHandle>(handle)) {}

Win32SerialLine::~Win32SerialLine() { Close(); }

bool Win32SerialLine::FailWith(unsigned long code) {
  LineFailure failure = FailureOnOpenLine(code, m_device);
  const Lock lock(m_meeting->mutex);
  if (failure.kind == LineError::Disconnected && !m_closing) m_lost = true;
  m_failure = std::move(failure);
  return false;
}

bool Win32SerialLine::Conclude(bool done) { return done || FailWith(GetLastError()); }

/// Under the meeting's mutex, as the next one.
bool Win32SerialLine::FailStopped() {
  m_failure = FailureOfSystemError(m_closing ? ERROR_INVALID_HANDLE : ERROR_OPERATION_ABORTED, m_device);
  return false;
}

bool Win32SerialLine::FailLeftBehind() {
  m_failure = {LineError::Other,
               m_device + QStringLiteral(": the driver has not ended an earlier read or write")};
  return false;
}

/// Without a longest time: until somebody cancels.
void Win32SerialLine::WaitForLeftBehind(Lock& lock, std::optional<std::chrono::milliseconds> longest) {
  const auto isOver = [&] {
    return !m_leftBehind || m_leftBehind->HasEnded() || m_closing || (!longest && m_cancelled);
  };
  if (longest) {
    m_meeting->changed.wait_for(lock, *longest, isOver);
  } else {
    m_meeting->changed.wait(lock, isOver);
  }
  // What it has read belongs to nobody any more.
  if (m_leftBehind && m_leftBehind->HasEnded()) m_leftBehind = nullptr;
}

/// The handle for one call to the driver; null, with the failure noted, when there is none to be used.
std::shared_ptr<CommHandle> Win32SerialLine::UsableHandle(Lock& lock) {
  WaitForLeftBehind(lock, kCancelPatience);
  if (!m_handle || m_closing) {
    m_failure = FailureOfSystemError(ERROR_INVALID_HANDLE, m_device);
    return nullptr;
  }
  if (!m_leftBehind) return m_handle;
  FailLeftBehind();
  return nullptr;
}

std::shared_ptr<CommHandle> Win32SerialLine::UsableHandle() {
  Lock lock(m_meeting->mutex);
  return UsableHandle(lock);
}

bool Win32SerialLine::GetState(LineState& state) {
  const auto handle = UsableHandle();
  DCB dcb{};
  dcb.DCBlength = sizeof dcb;
  if (!handle || !Conclude(GetCommState(handle->Get(), &dcb) != FALSE)) return false;
  state.baudRate = dcb.BaudRate;
  state.byteSize = dcb.ByteSize;
  state.stopBits = static_cast<StopBits>(dcb.StopBits);
  state.parity = static_cast<Parity>(dcb.Parity);
  return true;
}

bool Win32SerialLine::SetState(const LineState& state) {
  const auto handle = UsableHandle();
  // Everything but the four parameters stays as the driver has it.
  DCB dcb{};
  dcb.DCBlength = sizeof dcb;
  if (!handle || !Conclude(GetCommState(handle->Get(), &dcb) != FALSE)) return false;
  dcb.BaudRate = state.baudRate;
  dcb.ByteSize = state.byteSize;
  dcb.StopBits = static_cast<BYTE>(state.stopBits);
  dcb.Parity = static_cast<BYTE>(state.parity);
  return Conclude(SetCommState(handle->Get(), &dcb) != FALSE);
}

bool Win32SerialLine::SetTimeouts(const LineTimeouts& timeouts) {
  const auto handle = UsableHandle();
  COMMTIMEOUTS record{};
  record.ReadIntervalTimeout = timeouts.readInterval;
  record.ReadTotalTimeoutMultiplier = timeouts.readTotalMultiplier;
  record.ReadTotalTimeoutConstant = timeouts.readTotalConstant;
  record.WriteTotalTimeoutMultiplier = timeouts.writeTotalMultiplier;
  record.WriteTotalTimeoutConstant = timeouts.writeTotalConstant;
  if (!handle || !Conclude(SetCommTimeouts(handle->Get(), &record) != FALSE)) return false;
  const Lock lock(m_meeting->mutex);
  m_timeouts = timeouts;
  return true;
}

bool Win32SerialLine::Purge() {
  std::shared_ptr<CommHandle> handle;
  {
    Lock lock(m_meeting->mutex);
    WaitForLeftBehind(lock, std::nullopt);
    handle = UsableHandle(lock);
  }
  return handle && Conclude(PurgeComm(handle->Get(), PURGE_TXCLEAR | PURGE_RXCLEAR) != FALSE);
}

bool Win32SerialLine::ClearError() {
  const auto handle = UsableHandle();
  DWORD errors = 0;
  return handle && Conclude(ClearCommError(handle->Get(), &errors, nullptr) != FALSE);
}

bool Win32SerialLine::IsLost() {
  std::shared_ptr<CommHandle> handle;
  {
    const Lock lock(m_meeting->mutex);
    if (!m_handle || m_closing) return false;
    // Where the system does one thing at a time on a line, a read would hold this up.
    if (m_lost || m_inIo || m_leftBehind) return m_lost;
    handle = m_handle;
  }
  DCB dcb{};
  dcb.DCBlength = sizeof dcb;
  if (GetCommState(handle->Get(), &dcb) != FALSE) return false;
  const bool lost = FailureOnOpenLine(GetLastError(), m_device).kind == LineError::Disconnected;
  const Lock lock(m_meeting->mutex);
  m_lost = m_lost || lost;
  return m_lost;
}

/// From here to its end a thread reads or writes.
class Win32SerialLine::IoScope {
 public:
  explicit IoScope(Win32SerialLine& line) : m_line(line), m_handle(line.BeginIo()) {}
  ~IoScope() {
    if (m_handle) m_line.EndIo();
  }
  IoScope(const IoScope&) = delete;
  IoScope& operator=(const IoScope&) = delete;
  /// Null when nothing may be read or written.
  [[nodiscard]] const std::shared_ptr<CommHandle>& Handle() const { return m_handle; }

 private:
  Win32SerialLine& m_line;
  const std::shared_ptr<CommHandle> m_handle;
};

std::shared_ptr<CommHandle> Win32SerialLine::BeginIo() {
  Lock lock(m_meeting->mutex);
  auto handle = UsableHandle(lock);
  if (handle && IsStopped()) {
    FailStopped();
    return nullptr;
  }
  m_inIo = handle != nullptr;
  return handle;
}

void Win32SerialLine::EndIo() {
  {
    const Lock lock(m_meeting->mutex);
    m_inIo = false;
  }
  m_meeting->changed.notify_all();
}

Win32SerialLine::Arrival Win32SerialLine::WaitForBytes(const CommHandle& handle, std::size_t size) {
  Lock lock(m_meeting->mutex);
  const auto deadline = ReadLimits(m_timeouts, size, Clock::now()).Deadline();
  for (;;) {
    lock.unlock();
    COMSTAT status{};
    DWORD errors = 0;
    if (!Conclude(ClearCommError(handle.Get(), &errors, &status) != FALSE)) return Arrival::Failed;
    if (status.cbInQue > 0) return Arrival::Bytes;
    const Clock::time_point now = Clock::now();
    if (deadline && now >= *deadline) return Arrival::TimedOut;
    const Clock::time_point next = now + kLook;
    lock.lock();
    m_meeting->changed.wait_until(lock, deadline ? std::min(next, *deadline) : next,
                                  [this] { return IsStopped(); });
    if (IsStopped()) {
      FailStopped();
      return Arrival::Failed;
    }
  }
}

IoResult Win32SerialLine::Read(char* buffer, std::size_t size) {
  const IoScope io(*this);
  if (!io.Handle()) return {};
  const Arrival arrival = WaitForBytes(*io.Handle(), size);
  if (arrival != Arrival::Bytes) return {.ok = arrival == Arrival::TimedOut, .bytes = 0};
  const auto transfer = CommTransfer::Read(io.Handle(), m_meeting, size);
  if (!Await(transfer)) return {};
  std::copy_n(transfer->Bytes().begin(), transfer->Moved(), buffer);
  return {.ok = true, .bytes = transfer->Moved()};
}

IoResult Win32SerialLine::Write(const char* data, std::size_t size) {
  const IoScope io(*this);
  if (!io.Handle()) return {};
  const auto transfer = CommTransfer::Write(io.Handle(), m_meeting, std::string(data, size));
  if (!Await(transfer)) return {};
  return {.ok = true, .bytes = transfer->Moved()};
}

/// Whether the call has succeeded. What moved before the line broke counts; the next call meets the break.
bool Win32SerialLine::Await(const std::shared_ptr<CommTransfer>& transfer) {
  if (!transfer) return FailWith(kNoThread);
  Lock lock(m_meeting->mutex);
  const auto ended = [&transfer] { return transfer->HasEnded(); };
  m_meeting->changed.wait(lock, [&] { return ended() || IsStopped(); });
  const Clock::time_point end = Clock::now() + kCancelPatience;
  while (!ended() && Clock::now() < end) {
    lock.unlock();
    transfer->Cancel();
    lock.lock();
    m_meeting->changed.wait_for(lock, kCancelAgain, ended);
  }
  if (!ended()) {
    m_leftBehind = transfer;
    return FailStopped();
  }
  if (!transfer->Error() || transfer->Moved() > 0) return true;
  lock.unlock();
  return FailWith(*transfer->Error());
}

void Win32SerialLine::CancelIo() {
  Lock lock(m_meeting->mutex);
  m_cancelled = true;
  m_meeting->changed.notify_all();
  m_meeting->changed.wait_for(lock, 2 * kCancelPatience, [this] { return !m_inIo; });
}

void Win32SerialLine::AllowIo() {
  const Lock lock(m_meeting->mutex);
  m_cancelled = false;
}

bool Win32SerialLine::Close() {
  Lock lock(m_meeting->mutex);
  m_closing = true;
  m_meeting->changed.notify_all();
  m_meeting->changed.wait_for(lock, 2 * kCancelPatience, [this] { return !m_inIo; });
  const auto handle = std::exchange(m_handle, nullptr);
  const auto leftBehind = std::exchange(m_leftBehind, nullptr);
  if (!handle) return FailStopped();
  if (m_inIo || (leftBehind && !leftBehind->HasEnded())) return FailLeftBehind();
  lock.unlock();
  return Conclude(handle->Close());
}

LineFailure Win32SerialLine::LastFailure() const {
  const Lock lock(m_meeting->mutex);
  return m_failure;
}

OpenResult Win32LineOpener::Open(const QString& devicePath) {
  // Share mode 0: while the port is open here no other program can open it.
  void* handle = CreateFileW(devicePath.toStdWString().c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr,
                             OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
  if (handle == INVALID_HANDLE_VALUE) {
    return {nullptr, FailureOfSystemError(GetLastError(), devicePath)};
  }
  return {std::make_shared<Win32SerialLine>(handle, devicePath), {}};
}

}  // namespace quarn
