#include "serial/played_driver_win32.h"

#include <algorithm>
#include <utility>

namespace quarn::test {
namespace {

PlayedDriver* g_played = nullptr;

}  // namespace

PlayedDriver::PlayedDriver() { g_played = this; }

PlayedDriver::~PlayedDriver() {
  Release();
  // First all calls must have returned.
  Lock lock(m_mutex);
  m_changed.wait(lock, [this] { return m_inCall == 0; });
  g_played = nullptr;
}

std::vector<PlayedDriver::Opening> PlayedDriver::Openings() const {
  const Lock lock(m_mutex);
  return m_openings;
}

bool PlayedDriver::IsOpen() const {
  const Lock lock(m_mutex);
  return m_handle != INVALID_HANDLE_VALUE;
}

void PlayedDriver::NoteClosed() {
  Lock lock(m_mutex);
  m_changed.wait(lock, [this] { return !m_closeHeld; });
  m_handle = INVALID_HANDLE_VALUE;
}

void PlayedDriver::Have(const DCB& state) {
  const Lock lock(m_mutex);
  m_state = state;
}

DCB PlayedDriver::State() const {
  const Lock lock(m_mutex);
  return m_state;
}

COMMTIMEOUTS PlayedDriver::Timeouts() const {
  const Lock lock(m_mutex);
  return m_timeouts;
}

std::vector<DWORD> PlayedDriver::Purges() const {
  const Lock lock(m_mutex);
  return m_purges;
}

std::vector<DWORD> PlayedDriver::Escapes() const {
  const Lock lock(m_mutex);
  return m_escapes;
}

void PlayedDriver::FailGetState() {
  const Lock lock(m_mutex);
  m_getStateFails = true;
}

void PlayedDriver::FailSetTimeouts() {
  const Lock lock(m_mutex);
  m_setTimeoutsFails = true;
}

void PlayedDriver::FailWith(DWORD error) {
  const Lock lock(m_mutex);
  m_error = error;
}

void PlayedDriver::Receive(const std::string& bytes) {
  const Lock lock(m_mutex);
  m_received += bytes;
}

std::string PlayedDriver::Sent() const {
  const Lock lock(m_mutex);
  return m_sent;
}

int PlayedDriver::Reads() const {
  const Lock lock(m_mutex);
  return static_cast<int>(m_reads.size());
}

std::vector<COMMTIMEOUTS> PlayedDriver::TimeoutsOfReads() const {
  const Lock lock(m_mutex);
  return m_reads;
}

int PlayedDriver::Looks() const {
  const Lock lock(m_mutex);
  return m_looks;
}

void PlayedDriver::Hold(bool heedsCancelling) {
  const Lock lock(m_mutex);
  m_held = true;
  m_heedsCancelling = heedsCancelling;
}

void PlayedDriver::HoldClose() {
  const Lock lock(m_mutex);
  m_closeHeld = true;
}

void PlayedDriver::Release() {
  {
    const Lock lock(m_mutex);
    m_held = false;
    m_closeHeld = false;
  }
  m_changed.notify_all();
}

HANDLE PlayedDriver::Open(const Opening& opening) {
  const Lock lock(m_mutex);
  m_openings.push_back(opening);
  // Some object of the system stands for the port.
  m_handle = CreateEventW(nullptr, TRUE, FALSE, nullptr);
  return m_handle;
}

bool PlayedDriver::Owns(HANDLE handle) const {
  const Lock lock(m_mutex);
  return handle == m_handle && handle != INVALID_HANDLE_VALUE;
}

BOOL PlayedDriver::Outcome() const {
  if (m_error == ERROR_SUCCESS) return TRUE;
  SetLastError(m_error);
  return FALSE;
}

BOOL PlayedDriver::GetState(DCB* state) {
  const Lock lock(m_mutex);
  if (m_getStateFails) {
    SetLastError(ERROR_NOT_SUPPORTED);
    return FALSE;
  }
  *state = m_state;
  return Outcome();
}

BOOL PlayedDriver::SetState(const DCB& state) {
  const Lock lock(m_mutex);
  m_state = state;
  return Outcome();
}

BOOL PlayedDriver::SetTimeouts(const COMMTIMEOUTS& timeouts) {
  const Lock lock(m_mutex);
  if (m_setTimeoutsFails) {
    SetLastError(ERROR_NOT_SUPPORTED);
    return FALSE;
  }
  m_timeouts = timeouts;
  return Outcome();
}

BOOL PlayedDriver::Purge(DWORD flags) {
  const Lock lock(m_mutex);
  m_purges.push_back(flags);
  return Outcome();
}

BOOL PlayedDriver::Escape(DWORD function) {
  const Lock lock(m_mutex);
  m_escapes.push_back(function);
  return Outcome();
}

BOOL PlayedDriver::ClearError(COMSTAT* status) {
  const Lock lock(m_mutex);
  if (status != nullptr) {
    ++m_looks;
    *status = {};
    status->cbInQue = static_cast<DWORD>(m_received.size());
  }
  return Outcome();
}

bool PlayedDriver::WaitWhileHeld(Lock& lock) {
  m_cancelled = false;
  ++m_inCall;
  m_changed.wait(lock, [this] { return !m_held || m_cancelled; });
  --m_inCall;
  m_changed.notify_all();
  if (m_cancelled) SetLastError(ERROR_OPERATION_ABORTED);
  return !m_cancelled;
}

BOOL PlayedDriver::Read(char* buffer, DWORD size, DWORD* moved) {
  Lock lock(m_mutex);
  m_reads.push_back(m_timeouts);
  if (!WaitWhileHeld(lock)) return FALSE;
  const std::size_t count = std::min<std::size_t>(size, m_received.size());
  std::copy_n(m_received.begin(), count, buffer);
  m_received.erase(0, count);
  *moved = static_cast<DWORD>(count);
  return Outcome();
}

BOOL PlayedDriver::Write(const char* data, DWORD size, DWORD* moved) {
  Lock lock(m_mutex);
  if (!WaitWhileHeld(lock)) return FALSE;
  m_sent.append(data, size);
  *moved = size;
  return Outcome();
}

BOOL PlayedDriver::Cancel() {
  {
    const Lock lock(m_mutex);
    // Reports success, like some real drivers.
    m_cancelled = m_heedsCancelling && m_inCall > 0;
  }
  m_changed.notify_all();
  return TRUE;
}

}  // namespace quarn::test

namespace {

using quarn::test::PlayedDriver;

PlayedDriver* DriverOf(HANDLE handle) {
  PlayedDriver* const played = quarn::test::g_played;
  return played != nullptr && played->Owns(handle) ? played : nullptr;
}

}  // namespace

// The tested code is linked with the pointers of this file instead of the system's imports.
extern "C" {

// NOLINTBEGIN: the linker's names
extern decltype(&CreateFileW) __real___imp_CreateFileW;
extern decltype(&CloseHandle) __real___imp_CloseHandle;
extern decltype(&GetCommState) __real___imp_GetCommState;
extern decltype(&SetCommState) __real___imp_SetCommState;
extern decltype(&SetCommTimeouts) __real___imp_SetCommTimeouts;
extern decltype(&PurgeComm) __real___imp_PurgeComm;
extern decltype(&ClearCommError) __real___imp_ClearCommError;
extern decltype(&ReadFile) __real___imp_ReadFile;
extern decltype(&WriteFile) __real___imp_WriteFile;
extern decltype(&CancelIoEx) __real___imp_CancelIoEx;
extern decltype(&EscapeCommFunction) __real___imp_EscapeCommFunction;

static HANDLE WINAPI PlayedCreateFile(LPCWSTR path, DWORD access, DWORD shareMode,
                                      LPSECURITY_ATTRIBUTES security, DWORD disposition, DWORD flags,
                                      HANDLE templateFile) {
  const std::wstring name(path);
  if (quarn::test::g_played == nullptr || name.find(L"COM") == std::wstring::npos) {
    return __real___imp_CreateFileW(path, access, shareMode, security, disposition, flags, templateFile);
  }
  return quarn::test::g_played->Open(
      {name, access, shareMode, security != nullptr, disposition, flags, templateFile != nullptr});
}

static BOOL WINAPI PlayedCloseHandle(HANDLE handle) {
  if (PlayedDriver* played = DriverOf(handle)) played->NoteClosed();
  return __real___imp_CloseHandle(handle);
}

static BOOL WINAPI PlayedGetCommState(HANDLE handle, DCB* state) {
  PlayedDriver* played = DriverOf(handle);
  return played != nullptr ? played->GetState(state) : __real___imp_GetCommState(handle, state);
}

static BOOL WINAPI PlayedSetCommState(HANDLE handle, DCB* state) {
  PlayedDriver* played = DriverOf(handle);
  return played != nullptr ? played->SetState(*state) : __real___imp_SetCommState(handle, state);
}

static BOOL WINAPI PlayedSetCommTimeouts(HANDLE handle, COMMTIMEOUTS* timeouts) {
  PlayedDriver* played = DriverOf(handle);
  return played != nullptr ? played->SetTimeouts(*timeouts) : __real___imp_SetCommTimeouts(handle, timeouts);
}

static BOOL WINAPI PlayedPurgeComm(HANDLE handle, DWORD flags) {
  PlayedDriver* played = DriverOf(handle);
  return played != nullptr ? played->Purge(flags) : __real___imp_PurgeComm(handle, flags);
}

static BOOL WINAPI PlayedClearCommError(HANDLE handle, DWORD* errors, COMSTAT* status) {
  PlayedDriver* played = DriverOf(handle);
  return played != nullptr ? played->ClearError(status) : __real___imp_ClearCommError(handle, errors, status);
}

static BOOL WINAPI PlayedReadFile(HANDLE handle, void* buffer, DWORD size, DWORD* moved,
                                  OVERLAPPED* overlapped) {
  PlayedDriver* played = DriverOf(handle);
  return played != nullptr ? played->Read(static_cast<char*>(buffer), size, moved)
                           : __real___imp_ReadFile(handle, buffer, size, moved, overlapped);
}

static BOOL WINAPI PlayedWriteFile(HANDLE handle, const void* data, DWORD size, DWORD* moved,
                                   OVERLAPPED* overlapped) {
  PlayedDriver* played = DriverOf(handle);
  return played != nullptr ? played->Write(static_cast<const char*>(data), size, moved)
                           : __real___imp_WriteFile(handle, data, size, moved, overlapped);
}

static BOOL WINAPI PlayedCancelIoEx(HANDLE handle, OVERLAPPED* overlapped) {
  PlayedDriver* played = DriverOf(handle);
  return played != nullptr ? played->Cancel() : __real___imp_CancelIoEx(handle, overlapped);
}

static BOOL WINAPI PlayedEscapeCommFunction(HANDLE handle, DWORD function) {
  PlayedDriver* played = DriverOf(handle);
  return played != nullptr ? played->Escape(function) : __real___imp_EscapeCommFunction(handle, function);
}

decltype(&CreateFileW) __wrap___imp_CreateFileW = PlayedCreateFile;
decltype(&CloseHandle) __wrap___imp_CloseHandle = PlayedCloseHandle;
decltype(&GetCommState) __wrap___imp_GetCommState = PlayedGetCommState;
decltype(&SetCommState) __wrap___imp_SetCommState = PlayedSetCommState;
decltype(&SetCommTimeouts) __wrap___imp_SetCommTimeouts = PlayedSetCommTimeouts;
decltype(&PurgeComm) __wrap___imp_PurgeComm = PlayedPurgeComm;
decltype(&ClearCommError) __wrap___imp_ClearCommError = PlayedClearCommError;
decltype(&ReadFile) __wrap___imp_ReadFile = PlayedReadFile;
decltype(&WriteFile) __wrap___imp_WriteFile = PlayedWriteFile;
decltype(&CancelIoEx) __wrap___imp_CancelIoEx = PlayedCancelIoEx;
decltype(&EscapeCommFunction) __wrap___imp_EscapeCommFunction = PlayedEscapeCommFunction;
// NOLINTEND

}  // extern "C"
