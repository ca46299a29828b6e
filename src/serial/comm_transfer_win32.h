#pragma once

#include <condition_variable>
#include <cstddef>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

namespace quarn {

/// An open comm handle (a HANDLE; its type is kept out of this header), closed with its last owner.
class CommHandle {
 public:
  explicit CommHandle(void* handle) : m_handle(handle) {}
  ~CommHandle();
  CommHandle(const CommHandle&) = delete;
  CommHandle& operator=(const CommHandle&) = delete;

  [[nodiscard]] void* Get() const { return m_handle; }
  /// Closes it now. Only for the last owner. Returns false if that fails, with the system's last error.
  bool Close();

 private:
  void* m_handle;
};

/// The synchronisation of one line's threads. Changes under the mutex are signalled by the condition.
struct CommMeeting {
  std::mutex mutex;
  std::condition_variable changed;
};

/// One ReadFile or WriteFile on a thread of its own. The thread owns all data of the call, so the waiting
/// thread may leave: a driver need not end a cancelled call, and the data is released when the call ends.
class CommTransfer {
 public:
  /// Start the call. Null if the system cannot create a thread.
  static std::shared_ptr<CommTransfer> Read(std::shared_ptr<CommHandle> handle,
                                            std::shared_ptr<CommMeeting> meeting, std::size_t size);
  static std::shared_ptr<CommTransfer> Write(std::shared_ptr<CommHandle> handle,
                                             std::shared_ptr<CommMeeting> meeting, std::string bytes);

  /// Call with the mutex of the CommMeeting locked.
  [[nodiscard]] bool HasEnded() const { return m_ended; }
  /// Asks the driver to end the call. Has no effect if the call has not reached the driver yet.
  void Cancel();

  // Valid once it has ended:

  /// The number of bytes transferred.
  [[nodiscard]] std::size_t Moved() const { return m_moved; }
  /// The bytes read, from the first one.
  [[nodiscard]] const std::string& Bytes() const { return m_bytes; }
  /// The system's error code; nullopt after a success.
  [[nodiscard]] std::optional<unsigned long> Error() const { return m_error; }

 private:
  enum class Kind { Read, Write };
  CommTransfer(Kind kind, std::shared_ptr<CommHandle> handle, std::shared_ptr<CommMeeting> meeting,
               std::string bytes);
  static std::shared_ptr<CommTransfer> Start(std::shared_ptr<CommTransfer> transfer);
  void Run();

  const Kind m_kind;
  const std::shared_ptr<CommHandle> m_handle;
  const std::shared_ptr<CommMeeting> m_meeting;
  std::string m_bytes;
  std::size_t m_moved = 0;
  std::optional<unsigned long> m_error;
  bool m_ended = false;
};

}  // namespace quarn
