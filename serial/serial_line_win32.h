#pragma once

#include <QString>
#include <atomic>
#include <condition_variable>
#include <mutex>

#include "serial/serial_line.h"

namespace quarn {

/// An open COM port. All input and output is synchronous; a blocked call is ended by cancelling it from
/// the other thread.
class Win32SerialLine final : public SerialLine {
 public:
  /// Takes over `handle`, an open comm handle (a HANDLE; its type is kept out of this header).
  Win32SerialLine(void* handle, QString device);
  ~Win32SerialLine() override;
  Win32SerialLine(const Win32SerialLine&) = delete;
  Win32SerialLine& operator=(const Win32SerialLine&) = delete;

  bool GetState(LineState& state) override;
  bool SetState(const LineState& state) override;
  bool SetTimeouts(const LineTimeouts& timeouts) override;
  bool Purge() override;
  bool ClearError() override;
  IoResult Read(char* buffer, std::size_t size) override;
  IoResult Write(const char* data, std::size_t size) override;
  /// Returns when the blocked call has ended.
  void CancelIo() override;
  void AllowIo() override;
  /// The system itself puts the driver's state back; closing the handle is all there is to do.
  bool Close() override;
  [[nodiscard]] LineFailure LastFailure() const override;

 private:
  bool BeginIo();
  void EndIo();
  void WakeAndWait(std::unique_lock<std::mutex>& lock);
  /// Notes the calling thread's last system error when `done` is false; returns `done`.
  bool Conclude(bool done);
  bool FailWith(LineFailure failure);
  [[nodiscard]] void* Handle() const;

  mutable std::mutex m_mutex;
  std::condition_variable m_left;
  void* m_handle;
  QString m_device;
  std::atomic<bool> m_cancelled = false;
  bool m_inIo = false;
  LineFailure m_failure;
};

/// Opens COM ports.
class Win32LineOpener final : public SerialLineOpener {
 public:
  OpenResult Open(const QString& devicePath) override;
};

/// A system error code of a comm call (GetLastError) with the system's words for it.
LineFailure FailureOfSystemError(unsigned long code, const QString& device);

}  // namespace quarn
