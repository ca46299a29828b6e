#pragma once

#include <QString>
#include <chrono>
#include <memory>
#include <mutex>
#include <optional>

#include "serial/comm_transfer_win32.h"
#include "serial/serial_line.h"

namespace quarn {

/// An open COM port. All input and output is synchronous, and a call to the driver lasts as long as the
/// driver likes: it need not heed a cancellation. Therefore
///  - a read is begun when there is something to read, and not before: nothing blocks on a silent line. The
///    driver counts the total time of a read from there once more;
///  - a read or write that does not end when it is cancelled is left to the thread that it runs on. Until it
///    ends nobody knows what it takes from the line. So a purge, with which every transaction begins, waits
///    for its end, or until it is cancelled itself; whatever else is asked of the line waits a moment and
///    then fails. Afterwards the line is as good as before. The port is closed when it ends, too.
class Win32SerialLine final : public SerialLine {
 public:
  /// Takes over `handle`, an open comm handle (a HANDLE; its type is kept out of this header).
  Win32SerialLine(void* handle, QString device);
  ~Win32SerialLine() override;
  Win32SerialLine(const Win32SerialLine&) = delete;
  Win32SerialLine& operator=(const Win32SerialLine&) = delete;

  LineResult GetState(LineState& state) override;
  LineResult SetState(const LineState& state) override;
  LineResult SetTimeouts(const LineTimeouts& timeouts) override;
  LineResult Purge() override;
  LineResult ClearError() override;
  /// A driver whose device is gone gives no state, also when the device is there again: the handle is its.
  bool IsLost() override;
  IoResult Read(char* buffer, std::size_t size) override;
  IoResult Write(const char* data, std::size_t size) override;
  /// Returns when the other thread is out of Read or Write, which takes half a second at most.
  void CancelIo() override;
  void AllowIo() override;
  /// The system itself puts the driver's state back; closing the handle is all there is to do. Fails when a
  /// call that the driver does not end still has it.
  LineResult Close() override;

 private:
  using Lock = std::unique_lock<std::mutex>;
  using Clock = std::chrono::steady_clock;
  /// The handle for one call to the driver; null, with the reason, when there is none to be used.
  struct Usable {
    std::shared_ptr<CommHandle> handle;
    LineFailure failure;
  };
  /// Without a failure bytes have come, or the time is up.
  struct Arrival {
    bool timedOut = false;
    std::optional<LineFailure> failure{};
  };
  class IoScope;

  Usable UsableHandle();
  Usable UsableHandle(Lock& lock);
  void WaitForLeftBehind(Lock& lock, std::optional<std::chrono::milliseconds> longest);
  Usable BeginIo();
  void EndIo();
  Arrival WaitForBytes(const CommHandle& handle, std::size_t size);
  IoResult Await(const std::shared_ptr<CommTransfer>& transfer);
  bool IsStopped() const { return m_cancelled || m_closing; }
  /// Under the meeting's mutex, as the next one.
  [[nodiscard]] LineFailure Stopped() const;
  [[nodiscard]] LineFailure LeftBehind() const;
  /// With the calling thread's last system error when a call was not `done`.
  LineResult Conclude(bool done);
  LineFailure FailWith(unsigned long code);

  const QString m_device;
  const std::shared_ptr<CommMeeting> m_meeting = std::make_shared<CommMeeting>();
  // Under the meeting's mutex.
  std::shared_ptr<CommHandle> m_handle;        ///< null once closed
  std::shared_ptr<CommTransfer> m_leftBehind;  ///< what was cancelled and had not ended
  LineTimeouts m_timeouts;
  bool m_cancelled = false;
  bool m_closing = false;  ///< never false again
  bool m_inIo = false;
  bool m_lost = false;  ///< the driver has said that its device is gone
};

/// Opens COM ports.
class Win32LineOpener final : public SerialLineOpener {
 public:
  OpenResult Open(const QString& devicePath) override;
};

}  // namespace quarn
