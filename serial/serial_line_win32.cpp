#include "serial/serial_line_win32.h"

#include <windows.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <limits>
#include <utility>

namespace quarn {

namespace {

static_assert(sizeof(DCB) == 28, "the comm API checks the record's length");

/// ERROR_NO_SUCH_DEVICE, which MinGW-w64's headers lack.
constexpr unsigned long kNoSuchDevice = 433;

LineError KindOf(unsigned long code) {
  switch (code) {
    case ERROR_FILE_NOT_FOUND:
    case ERROR_PATH_NOT_FOUND:
    case ERROR_INVALID_NAME:
    case ERROR_BAD_PATHNAME:
      return LineError::NotFound;
    // A comm port that another program has open is refused as "access denied".
    case ERROR_ACCESS_DENIED:
    case ERROR_SHARING_VIOLATION:
    case ERROR_BUSY:
      return LineError::InUse;
    case ERROR_PRIVILEGE_NOT_HELD:
      return LineError::NoPermission;
    case ERROR_INVALID_PARAMETER:
    case ERROR_NOT_SUPPORTED:
      return LineError::Refused;
    case ERROR_OPERATION_ABORTED:
      return LineError::Cancelled;
    case ERROR_BAD_COMMAND:
    case ERROR_GEN_FAILURE:
    case ERROR_NOT_READY:
    case ERROR_DEV_NOT_EXIST:
    case kNoSuchDevice:
    case ERROR_DEVICE_NOT_CONNECTED:
    case ERROR_DEVICE_REMOVED:
    case ERROR_INVALID_HANDLE:
      return LineError::Disconnected;
    default:
      return LineError::Other;
  }
}

DWORD ClampToDword(std::size_t size) {
  return static_cast<DWORD>(std::min<std::size_t>(size, std::numeric_limits<DWORD>::max()));
}

}  // namespace

LineFailure FailureOfSystemError(unsigned long code, const QString& device) {
  std::array<wchar_t, 512> text{};
  const DWORD length = FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr,
                                      code, 0, text.data(), static_cast<DWORD>(text.size()), nullptr);
  const QString words = length > 0 ? QString::fromWCharArray(text.data(), int(length)).trimmed()
                                   : QStringLiteral("system error %1").arg(code);
  return {KindOf(code), device + QStringLiteral(": ") + words};
}

Win32SerialLine::Win32SerialLine(void* handle, QString device)
    : m_handle(handle), m_device(std::move(device)) {}

Win32SerialLine::~Win32SerialLine() {
  if (Handle() != INVALID_HANDLE_VALUE) {
    Close();
  }
}

void* Win32SerialLine::Handle() const {
  const std::lock_guard lock(m_mutex);
  return m_handle;
}

bool Win32SerialLine::FailWith(LineFailure failure) {
  const std::lock_guard lock(m_mutex);
  m_failure = std::move(failure);
  return false;
}

bool Win32SerialLine::Conclude(bool done) {
  return done || FailWith(FailureOfSystemError(GetLastError(), m_device));
}

bool Win32SerialLine::GetState(LineState& state) {
  DCB dcb{};
  dcb.DCBlength = sizeof dcb;
  if (!Conclude(GetCommState(Handle(), &dcb) != FALSE)) {
    return false;
  }
  state.baudRate = dcb.BaudRate;
  state.byteSize = dcb.ByteSize;
  state.stopBits = static_cast<StopBits>(dcb.StopBits);
  state.parity = static_cast<Parity>(dcb.Parity);
  return true;
}

bool Win32SerialLine::SetState(const LineState& state) {
  // Everything but the four parameters stays as the driver has it.
  DCB dcb{};
  dcb.DCBlength = sizeof dcb;
  if (!Conclude(GetCommState(Handle(), &dcb) != FALSE)) {
    return false;
  }
  dcb.BaudRate = state.baudRate;
  dcb.ByteSize = state.byteSize;
  dcb.StopBits = static_cast<BYTE>(state.stopBits);
  dcb.Parity = static_cast<BYTE>(state.parity);
  return Conclude(SetCommState(Handle(), &dcb) != FALSE);
}

bool Win32SerialLine::SetTimeouts(const LineTimeouts& timeouts) {
  COMMTIMEOUTS record{};
  record.ReadIntervalTimeout = timeouts.readInterval;
  record.ReadTotalTimeoutMultiplier = timeouts.readTotalMultiplier;
  record.ReadTotalTimeoutConstant = timeouts.readTotalConstant;
  record.WriteTotalTimeoutMultiplier = timeouts.writeTotalMultiplier;
  record.WriteTotalTimeoutConstant = timeouts.writeTotalConstant;
  return Conclude(SetCommTimeouts(Handle(), &record) != FALSE);
}

bool Win32SerialLine::Purge() {
  return Conclude(PurgeComm(Handle(), PURGE_TXCLEAR | PURGE_RXCLEAR) != FALSE);
}

bool Win32SerialLine::ClearError() {
  DWORD errors = 0;
  return Conclude(ClearCommError(Handle(), &errors, nullptr) != FALSE);
}

IoResult Win32SerialLine::Read(char* buffer, std::size_t size) {
  if (!BeginIo()) {
    return {};
  }
  DWORD moved = 0;
  // What came before the line broke is handed out; the next call meets the break.
  const bool done = ReadFile(Handle(), buffer, ClampToDword(size), &moved, nullptr) != FALSE || moved > 0;
  const bool ok = Conclude(done);
  EndIo();
  return {ok, ok ? moved : 0U};
}

IoResult Win32SerialLine::Write(const char* data, std::size_t size) {
  if (!BeginIo()) {
    return {};
  }
  DWORD moved = 0;
  const bool done = WriteFile(Handle(), data, ClampToDword(size), &moved, nullptr) != FALSE || moved > 0;
  const bool ok = Conclude(done);
  EndIo();
  return {ok, ok ? moved : 0U};
}

bool Win32SerialLine::BeginIo() {
  const std::lock_guard lock(m_mutex);
  if (m_handle == INVALID_HANDLE_VALUE) {
    m_failure = FailureOfSystemError(ERROR_INVALID_HANDLE, m_device);
    return false;
  }
  if (m_cancelled) {
    m_failure = FailureOfSystemError(ERROR_OPERATION_ABORTED, m_device);
    return false;
  }
  m_inIo = true;
  return true;
}

void Win32SerialLine::EndIo() {
  {
    const std::lock_guard lock(m_mutex);
    m_inIo = false;
  }
  m_left.notify_all();
}

/// Between BeginIo and the system call there is nothing yet to cancel, so one attempt may come too
/// early: repeated until the other thread is out.
void Win32SerialLine::WakeAndWait(std::unique_lock<std::mutex>& lock) {
  while (m_inIo) {
    CancelIoEx(m_handle, nullptr);
    m_left.wait_for(lock, std::chrono::milliseconds(1));
  }
}

void Win32SerialLine::CancelIo() {
  std::unique_lock lock(m_mutex);
  m_cancelled = true;
  WakeAndWait(lock);
}

void Win32SerialLine::AllowIo() { m_cancelled = false; }

bool Win32SerialLine::Close() {
  void* handle = INVALID_HANDLE_VALUE;
  {
    std::unique_lock lock(m_mutex);
    const bool before = m_cancelled.exchange(true);
    WakeAndWait(lock);
    m_cancelled = before;
    handle = std::exchange(m_handle, INVALID_HANDLE_VALUE);
  }
  // To the system that value is a handle too: this process.
  if (handle == INVALID_HANDLE_VALUE) return FailWith(FailureOfSystemError(ERROR_INVALID_HANDLE, m_device));
  return Conclude(CloseHandle(handle) != FALSE);
}

LineFailure Win32SerialLine::LastFailure() const {
  const std::lock_guard lock(m_mutex);
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
