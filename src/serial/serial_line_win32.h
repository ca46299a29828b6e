#pragma once

#include <QString>
#include <chrono>
#include <memory>
#include <mutex>
#include <optional>

#include "serial/comm_transfer_win32.h"
#include "serial/serial_line.h"

namespace quarn {

/// An open COM port. All input and output is synchronous, and the driver decides how long a call lasts: it
/// may ignore a cancellation. Therefore
///  - a read starts only when there is something to read, so nothing blocks on a silent line. The driver gets
///    what that wait has left of the read's total time, because it counts from its own call;
///  - a read or write that does not end after its cancellation is left behind on its own thread. Until the
///    end it may still take bytes from the line. So a purge, with which every transaction starts, waits for
///    its end or for its own cancellation. Other operations wait a moment and then fail. Afterwards the line
///    works as before. If the port was closed meanwhile, it is free when the call ends.
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
  LineResult SetModemLines(const ModemLines& lines) override;
  LineResult Purge() override;
  LineResult ClearError() override;
  /// A driver whose device is gone gives no state, even after the device is back: the handle is the old one.
  bool IsLost() override;
  IoResult Read(char* buffer, std::size_t size) override;
  IoResult Write(const char* data, std::size_t size) override;
  /// Returns when the other thread has left Read or Write, after half a second at most.
  void CancelIo() override;
  void AllowIo() override;
  /// Only closes the handle: the system restores the driver's state. Fails if a call that the driver does not
  /// end still has the handle.
  LineResult Close() override;

 private:
  using Lock = std::unique_lock<std::mutex>;
  using Clock = std::chrono::steady_clock;
  /// The handle for one call to the driver. If it cannot be used: null, with the reason.
  struct Usable {
    std::shared_ptr<CommHandle> handle;
    LineFailure failure;
  };
  /// Without a failure, bytes have been received or the time is up.
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
  Arrival WaitForBytes(const CommHandle& handle, std::optional<Clock::time_point> deadline);
  IoResult ReadReceived(const std::shared_ptr<CommHandle>& handle, char* buffer, std::size_t size);
  IoResult Await(const std::shared_ptr<CommTransfer>& transfer);
  LineTimeouts Timeouts() const;
  /// Whether a call was, even if it has ended since.
  bool IsLeftBehind() const;
  bool IsStopped() const { return m_cancelled || m_closing; }
  /// Under the meeting's mutex, as the next one.
  [[nodiscard]] LineFailure Stopped() const;
  [[nodiscard]] LineFailure LeftBehind() const;
  /// With the calling thread's last system error if a call was not `done`.
  LineResult Conclude(bool done);
  LineFailure FailWith(unsigned long code);

  const QString m_device;
  const std::shared_ptr<CommMeeting> m_meeting = std::make_shared<CommMeeting>();
  // Under the meeting's mutex.
  std::shared_ptr<CommHandle> m_handle;        ///< null once closed
  std::shared_ptr<CommTransfer> m_leftBehind;  ///< a cancelled call that had not ended
  LineTimeouts m_timeouts;
  bool m_cancelled = false;
  bool m_closing = false;  ///< once true, stays true
  bool m_inIo = false;
  bool m_lost = false;  ///< the driver has reported that its device is gone
};

/// Opens COM ports.
class Win32LineOpener final : public SerialLineOpener {
 public:
  OpenResult Open(const QString& devicePath) override;
};

}  // namespace quarn
