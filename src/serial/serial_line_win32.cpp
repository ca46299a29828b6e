#include "serial/serial_line_win32.h"

#include <windows.h>

#include <algorithm>
#include <utility>

#include "serial/limited_wait.h"
#include "serial/line_failure_win32.h"
#include "serial/read_deadline.h"

namespace quarn {

namespace {

static_assert(sizeof(DCB) == 28, "the comm API checks the record's length");

/// ERROR_MAX_THRDS_REACHED, which MinGW-w64's headers lack.
constexpr unsigned long kNoThread = 164;

/// How long a driver may take to end a cancelled call.
constexpr std::chrono::milliseconds kCancelPatience{200};
/// Closing waits for a read or write before, twice as long as for its cancellation, and so long for the
/// driver.
constexpr std::chrono::milliseconds kLongestClose{500};
/// A call that was cancelled before it reached the driver is cancelled again, after this time.
constexpr std::chrono::milliseconds kCancelAgain{1};
/// How often the driver is asked for received bytes.
constexpr std::chrono::milliseconds kLook{2};

/// The port existed when it was opened, and no other program could open it. So these errors mean that its
/// device is gone.
LineFailure FailureOnOpenLine(unsigned long code, const QString& device) {
  LineFailure failure = FailureOfSystemError(code, device);
  if (failure.kind == LineError::NotFound || failure.kind == LineError::InUse) {
    failure.kind = LineError::Disconnected;
  }
  return failure;
}

bool SetDriverTimeouts(const CommHandle& handle, const LineTimeouts& timeouts) {
  COMMTIMEOUTS record{};
  record.ReadIntervalTimeout = timeouts.readInterval;
  record.ReadTotalTimeoutMultiplier = timeouts.readTotalMultiplier;
  record.ReadTotalTimeoutConstant = timeouts.readTotalConstant;
  record.WriteTotalTimeoutMultiplier = timeouts.writeTotalMultiplier;
  record.WriteTotalTimeoutConstant = timeouts.writeTotalConstant;
  return SetCommTimeouts(handle.Get(), &record) != FALSE;
}

}  // namespace

Win32SerialLine::Win32SerialLine(void* handle, QString device)
    : m_device(std::move(device)), m_handle(std::make_shared<CommHandle>(handle)) {}

Win32SerialLine::~Win32SerialLine() { Close(); }

LineFailure Win32SerialLine::FailWith(unsigned long code) {
  LineFailure failure = FailureOnOpenLine(code, m_device);
  const Lock lock(m_meeting->mutex);
  if (failure.kind == LineError::Disconnected && !m_closing) m_lost = true;
  return failure;
}

LineResult Win32SerialLine::Conclude(bool done) {
  return done ? LineResult() : LineResult(FailWith(GetLastError()));
}

LineFailure Win32SerialLine::Stopped() const {
  return FailureOfSystemError(m_closing ? ERROR_INVALID_HANDLE : ERROR_OPERATION_ABORTED, m_device);
}

LineFailure Win32SerialLine::LeftBehind() const {
  return {LineError::Other, m_device + QStringLiteral(": the driver has not ended an earlier read or write")};
}

/// Without a time limit: until it is cancelled.
void Win32SerialLine::WaitForLeftBehind(Lock& lock, std::optional<std::chrono::milliseconds> longest) {
  const auto isOver = [&] {
    return !m_leftBehind || m_leftBehind->HasEnded() || m_closing || (!longest && m_cancelled);
  };
  if (longest) {
    m_meeting->changed.wait_for(lock, *longest, isOver);
  } else {
    m_meeting->changed.wait(lock, isOver);
  }
  // Nobody needs the bytes that it has read.
  if (m_leftBehind && m_leftBehind->HasEnded()) m_leftBehind = nullptr;
}

Win32SerialLine::Usable Win32SerialLine::UsableHandle(Lock& lock) {
  WaitForLeftBehind(lock, kCancelPatience);
  if (!m_handle || m_closing) return {nullptr, FailureOfSystemError(ERROR_INVALID_HANDLE, m_device)};
  if (m_leftBehind) return {nullptr, LeftBehind()};
  return {m_handle, {}};
}

Win32SerialLine::Usable Win32SerialLine::UsableHandle() {
  Lock lock(m_meeting->mutex);
  return UsableHandle(lock);
}

LineResult Win32SerialLine::GetState(LineState& state) {
  const auto [handle, failure] = UsableHandle();
  if (!handle) return failure;
  DCB dcb{};
  dcb.DCBlength = sizeof dcb;
  if (LineResult got = Conclude(GetCommState(handle->Get(), &dcb) != FALSE); !got) return got;
  state.baudRate = dcb.BaudRate;
  state.byteSize = dcb.ByteSize;
  state.stopBits = static_cast<StopBits>(dcb.StopBits);
  state.parity = static_cast<Parity>(dcb.Parity);
  return {};
}

LineResult Win32SerialLine::SetState(const LineState& state) {
  const auto [handle, failure] = UsableHandle();
  if (!handle) return failure;
  // Everything but the four parameters stays as the driver has it.
  DCB dcb{};
  dcb.DCBlength = sizeof dcb;
  if (LineResult got = Conclude(GetCommState(handle->Get(), &dcb) != FALSE); !got) return got;
  dcb.BaudRate = state.baudRate;
  dcb.ByteSize = state.byteSize;
  dcb.StopBits = static_cast<BYTE>(state.stopBits);
  dcb.Parity = static_cast<BYTE>(state.parity);
  return Conclude(SetCommState(handle->Get(), &dcb) != FALSE);
}

LineResult Win32SerialLine::SetTimeouts(const LineTimeouts& timeouts) {
  const auto [handle, failure] = UsableHandle();
  if (!handle) return failure;
  if (LineResult set = Conclude(SetDriverTimeouts(*handle, timeouts)); !set) return set;
  const Lock lock(m_meeting->mutex);
  m_timeouts = timeouts;
  return {};
}

bool Win32SerialLine::IsLeftBehind() const {
  const Lock lock(m_meeting->mutex);
  return m_leftBehind != nullptr;
}

LineTimeouts Win32SerialLine::Timeouts() const {
  const Lock lock(m_meeting->mutex);
  return m_timeouts;
}

LineResult Win32SerialLine::SetModemLines(const ModemLines& lines) {
  const auto [handle, failure] = UsableHandle();
  if (!handle) return failure;
  const auto set = [&](std::optional<bool> level, DWORD on, DWORD off, const char* name) {
    if (!level || EscapeCommFunction(handle->Get(), *level ? on : off) != FALSE) return LineResult();
    LineFailure refused = FailWith(GetLastError());
    const QString text = m_device + QStringLiteral(": ");
    refused.reason.replace(text, text + QString::fromLatin1(name) + QStringLiteral(" cannot be set: "));
    return LineResult(refused);
  };
  if (LineResult dtr = set(lines.dtr, SETDTR, CLRDTR, "DTR"); !dtr) return dtr;
  return set(lines.rts, SETRTS, CLRRTS, "RTS");
}

LineResult Win32SerialLine::Purge() {
  Usable usable;
  {
    Lock lock(m_meeting->mutex);
    WaitForLeftBehind(lock, std::nullopt);
    usable = UsableHandle(lock);
  }
  if (!usable.handle) return usable.failure;
  return Conclude(PurgeComm(usable.handle->Get(), PURGE_TXCLEAR | PURGE_RXCLEAR) != FALSE);
}

LineResult Win32SerialLine::ClearError() {
  const auto [handle, failure] = UsableHandle();
  if (!handle) return failure;
  DWORD errors = 0;
  return Conclude(ClearCommError(handle->Get(), &errors, nullptr) != FALSE);
}

bool Win32SerialLine::IsLost() {
  std::shared_ptr<CommHandle> handle;
  {
    const Lock lock(m_meeting->mutex);
    if (!m_handle || m_closing) return false;
    // Some systems do one operation at a time on a line. There a read would block this.
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

/// While this object exists, its thread reads or writes.
class Win32SerialLine::IoScope {
 public:
  explicit IoScope(Win32SerialLine& line) : m_line(line), m_usable(line.BeginIo()) {}
  ~IoScope() {
    if (m_usable.handle) m_line.EndIo();
  }
  IoScope(const IoScope&) = delete;
  IoScope& operator=(const IoScope&) = delete;
  /// Null if nothing may be read or written.
  [[nodiscard]] const std::shared_ptr<CommHandle>& Handle() const { return m_usable.handle; }
  /// Why not.
  [[nodiscard]] const LineFailure& Failure() const { return m_usable.failure; }

 private:
  Win32SerialLine& m_line;
  const Usable m_usable;
};

Win32SerialLine::Usable Win32SerialLine::BeginIo() {
  Lock lock(m_meeting->mutex);
  Usable usable = UsableHandle(lock);
  if (usable.handle && IsStopped()) return {nullptr, Stopped()};
  m_inIo = usable.handle != nullptr;
  return usable;
}

void Win32SerialLine::EndIo() {
  {
    const Lock lock(m_meeting->mutex);
    m_inIo = false;
  }
  m_meeting->changed.notify_all();
}

Win32SerialLine::Arrival Win32SerialLine::WaitForBytes(const CommHandle& handle,
                                                       std::optional<Clock::time_point> deadline) {
  Lock lock(m_meeting->mutex);
  for (;;) {
    lock.unlock();
    COMSTAT status{};
    DWORD errors = 0;
    const LineResult asked = Conclude(ClearCommError(handle.Get(), &errors, &status) != FALSE);
    if (!asked) return {.failure = asked.Failure()};
    if (status.cbInQue > 0) return {};
    const Clock::time_point now = Clock::now();
    if (deadline && now >= *deadline) return {.timedOut = true};
    const Clock::time_point next = now + kLook;
    lock.lock();
    m_meeting->changed.wait_until(lock, deadline ? std::min(next, *deadline) : next,
                                  [this] { return IsStopped(); });
    if (IsStopped()) return {.failure = Stopped()};
  }
}

IoResult Win32SerialLine::Read(char* buffer, std::size_t size) {
  const Clock::time_point start = Clock::now();
  const IoScope io(*this);
  if (!io.Handle()) return {.failure = io.Failure()};
  const LineTimeouts timeouts = Timeouts();
  const auto end = ReadDeadline(timeouts, size, start).Time();
  const Arrival arrival = WaitForBytes(*io.Handle(), end);
  if (arrival.failure) return {.failure = *arrival.failure};
  if (arrival.timedOut) return {.ok = true};
  // A driver that refuses this reads with the whole total, and one that is gone fails the read.
  if (end) SetDriverTimeouts(*io.Handle(), RestOf(timeouts, end, Clock::now()));
  IoResult read = ReadReceived(io.Handle(), buffer, size);
  // Behind a read that does not end, this would wait for it. The next read sets its own rest.
  if (end && !IsLeftBehind()) SetDriverTimeouts(*io.Handle(), Timeouts());
  return read;
}

IoResult Win32SerialLine::ReadReceived(const std::shared_ptr<CommHandle>& handle, char* buffer,
                                       std::size_t size) {
  const auto transfer = CommTransfer::Read(handle, m_meeting, size);
  IoResult read = Await(transfer);
  if (read.ok) std::copy_n(transfer->Bytes().begin(), read.bytes, buffer);
  return read;
}

IoResult Win32SerialLine::Write(const char* data, std::size_t size) {
  const IoScope io(*this);
  if (!io.Handle()) return {.failure = io.Failure()};
  return Await(CommTransfer::Write(io.Handle(), m_meeting, std::string(data, size)));
}

/// The call's outcome. Bytes moved before the line broke count; the next call reports the break.
IoResult Win32SerialLine::Await(const std::shared_ptr<CommTransfer>& transfer) {
  if (!transfer) return {.failure = FailWith(kNoThread)};
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
    return {.failure = Stopped()};
  }
  const std::size_t moved = transfer->Moved();
  if (!transfer->Error()) return {.ok = true, .bytes = moved};
  if (moved > 0) {
    return {.ok = true, .bytes = moved, .failure = FailureOnOpenLine(*transfer->Error(), m_device)};
  }
  lock.unlock();
  return {.failure = FailWith(*transfer->Error())};
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

LineResult Win32SerialLine::Close() {
  Lock lock(m_meeting->mutex);
  m_closing = true;
  m_meeting->changed.notify_all();
  m_meeting->changed.wait_for(lock, 2 * kCancelPatience, [this] { return !m_inIo; });
  const auto handle = std::exchange(m_handle, nullptr);
  const auto leftBehind = std::exchange(m_leftBehind, nullptr);
  if (!handle) return {};
  if (m_inIo || (leftBehind && !leftBehind->HasEnded())) return LeftBehind();
  lock.unlock();
  const auto close = [handle, device = m_device] {
    return handle->Close() ? LineResult() : LineResult(FailureOnOpenLine(GetLastError(), device));
  };
  // A driver whose adapter does not answer may wait for seconds.
  if (const auto closed = DoWithin(kLongestClose, close)) return *closed;
  return LineResult({LineError::Other, m_device + QStringLiteral(": the driver has not closed it yet")});
}

OpenResult Win32LineOpener::Open(const QString& devicePath) {
  // Share mode 0: while the port is open here, no other program can open it.
  void* handle = CreateFileW(devicePath.toStdWString().c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr,
                             OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
  if (handle == INVALID_HANDLE_VALUE) {
    return {nullptr, FailureOfSystemError(GetLastError(), devicePath)};
  }
  return {std::make_shared<Win32SerialLine>(handle, devicePath), {}};
}

}  // namespace quarn
