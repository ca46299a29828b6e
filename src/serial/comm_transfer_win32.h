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
  /// Closes it now. Only for the last owner. False, with the system's last error, when that fails.
  bool Close();

 private:
  void* m_handle;
};

/// Where the threads of one line meet. What changes under the mutex is told through the condition.
struct CommMeeting {
  std::mutex mutex;
  std::condition_variable changed;
};

/// One ReadFile or WriteFile on a thread of its own. The thread owns all that the call works on, so whoever
/// waits for it may leave: a driver need not end a call that is cancelled, and what the call holds goes when
/// it ends.
class CommTransfer {
 public:
  /// Start the call. Null when the system has no thread to give.
  static std::shared_ptr<CommTransfer> Read(std::shared_ptr<CommHandle> handle,
                                            std::shared_ptr<CommMeeting> meeting, std::size_t size);
  static std::shared_ptr<CommTransfer> Write(std::shared_ptr<CommHandle> handle,
                                             std::shared_ptr<CommMeeting> meeting, std::string bytes);

  /// Under the meeting's mutex.
  [[nodiscard]] bool HasEnded() const { return m_ended; }
  /// Asks the driver to end the call. It may come before the call has reached the driver, and do nothing.
  void Cancel();

  // Once it has ended:

  /// How many bytes have moved.
  [[nodiscard]] std::size_t Moved() const { return m_moved; }
  /// What has been read, from the first byte on.
  [[nodiscard]] const std::string& Bytes() const { return m_bytes; }
  /// The system's error code; none after a success.
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
