#include "serial/comm_transfer_win32.h"

#include <windows.h>

#include <algorithm>
#include <limits>
#include <system_error>
#include <thread>
#include <utility>

namespace quarn {
namespace {

DWORD ClampToDword(std::size_t size) {
  return static_cast<DWORD>(std::min<std::size_t>(size, std::numeric_limits<DWORD>::max()));
}

}  // namespace

CommHandle::~CommHandle() {
  // To the system that value is a handle too: this process.
  if (m_handle != INVALID_HANDLE_VALUE) CloseHandle(m_handle);
}

bool CommHandle::Close() { return CloseHandle(std::exchange(m_handle, INVALID_HANDLE_VALUE)) != FALSE; }

CommTransfer::CommTransfer(Kind kind, std::shared_ptr<CommHandle> handle,
                           std::shared_ptr<CommMeeting> meeting, std::string bytes)
    : m_kind(kind), m_handle(std::move(handle)), m_meeting(std::move(meeting)), m_bytes(std::move(bytes)) {}

std::shared_ptr<CommTransfer> CommTransfer::Read(std::shared_ptr<CommHandle> handle,
                                                 std::shared_ptr<CommMeeting> meeting, std::size_t size) {
  return Start(std::shared_ptr<CommTransfer>(
      new CommTransfer(Kind::Read, std::move(handle), std::move(meeting), std::string(size, '\0'))));
}

std::shared_ptr<CommTransfer> CommTransfer::Write(std::shared_ptr<CommHandle> handle,
                                                  std::shared_ptr<CommMeeting> meeting, std::string bytes) {
  return Start(std::shared_ptr<CommTransfer>(
      new CommTransfer(Kind::Write, std::move(handle), std::move(meeting), std::move(bytes))));
}

std::shared_ptr<CommTransfer> CommTransfer::Start(std::shared_ptr<CommTransfer> transfer) {
  try {
    std::thread([transfer] { transfer->Run(); }).detach();
  } catch (const std::system_error&) {
    return nullptr;
  }
  return transfer;
}

void CommTransfer::Run() {
  DWORD moved = 0;
  const DWORD size = ClampToDword(m_bytes.size());
  const BOOL done = m_kind == Kind::Read ? ReadFile(m_handle->Get(), m_bytes.data(), size, &moved, nullptr)
                                         : WriteFile(m_handle->Get(), m_bytes.data(), size, &moved, nullptr);
  const unsigned long code = done != FALSE ? ERROR_SUCCESS : GetLastError();
  {
    const std::lock_guard lock(m_meeting->mutex);
    m_moved = moved;
    if (done == FALSE) m_error = code;
    m_ended = true;
  }
  m_meeting->changed.notify_all();
}

void CommTransfer::Cancel() { CancelIoEx(m_handle->Get(), nullptr); }

}  // namespace quarn
