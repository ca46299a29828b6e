#include "serial/comm_transfer_win32.h"

#include <windows.h>

#include <algorithm>
#include <limits>
#include <utility>

namespace quarn {
namespace {

DWORD ClampToDword(std::size_t size) {
  return static_cast<DWORD>(std::min<std::size_t>(size, std::numeric_limits<DWORD>::max()));
}

}  // namespace

CommHandle::~CommHandle() {
  // For the system this value is also a handle: this process.
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
  // A thread of the system, not of the library: a detached thread of the library was seen to vanish before it
  // had run.
  auto own = std::make_unique<std::shared_ptr<CommTransfer>>(transfer);
  const auto run = [](void* parameter) -> DWORD {
    const std::unique_ptr<std::shared_ptr<CommTransfer>> held(
        static_cast<std::shared_ptr<CommTransfer>*>(parameter));
    (*held)->Run();
    return 0;
  };
  const HANDLE thread = CreateThread(nullptr, 0, run, own.get(), 0, nullptr);
  if (thread == nullptr) return nullptr;
  (void)own.release();  // NOLINT(bugprone-unused-return-value): the thread's now
  CloseHandle(thread);
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
