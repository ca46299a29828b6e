#pragma once

#include <windows.h>

#include <condition_variable>
#include <mutex>
#include <string>
#include <vector>

namespace quarn::test {

/// Simulates the driver of a COM port. Comm calls with its handle, and every opening of a path that begins
/// with "COM", come here instead of to the system. One at a time. Any thread.
class PlayedDriver {
 public:
  PlayedDriver();
  ~PlayedDriver();
  PlayedDriver(const PlayedDriver&) = delete;
  PlayedDriver& operator=(const PlayedDriver&) = delete;

  /// What the port was opened with.
  struct Opening {
    std::wstring path;
    DWORD access;
    DWORD shareMode;
    bool hasSecurity;
    DWORD disposition;
    DWORD flags;
    bool hasTemplate;
  };
  [[nodiscard]] std::vector<Opening> Openings() const;
  /// Whether the handle is still open.
  [[nodiscard]] bool IsOpen() const;

  // Its current state.
  void Have(const DCB& state);
  [[nodiscard]] DCB State() const;
  [[nodiscard]] COMMTIMEOUTS Timeouts() const;
  /// The flags of each purge.
  [[nodiscard]] std::vector<DWORD> Purges() const;
  /// What was asked of the modem lines: SETDTR and the like.
  [[nodiscard]] std::vector<DWORD> Escapes() const;
  /// These calls fail from now on, with this error.
  void FailGetState();
  void FailSetTimeouts();
  void FailWith(DWORD error);

  // The line.
  void Receive(const std::string& bytes);
  [[nodiscard]] std::string Sent() const;
  /// How many reads have been begun.
  [[nodiscard]] int Reads() const;
  /// The time-outs with which each of them was begun.
  [[nodiscard]] std::vector<COMMTIMEOUTS> TimeoutsOfReads() const;
  /// How often it was asked for received bytes.
  [[nodiscard]] int Looks() const;
  /// From now on a read or write lasts until Release, or until its cancellation, if the driver heeds that.
  void Hold(bool heedsCancelling);
  void Release();

  /// From now on it closes its handle only after Release.
  void HoldClose();

  // Called by the comm calls.
  HANDLE Open(const Opening& opening);
  void NoteClosed();
  [[nodiscard]] bool Owns(HANDLE handle) const;
  BOOL GetState(DCB* state);
  BOOL SetState(const DCB& state);
  BOOL SetTimeouts(const COMMTIMEOUTS& timeouts);
  BOOL Purge(DWORD flags);
  BOOL Escape(DWORD function);
  BOOL ClearError(COMSTAT* status);
  BOOL Read(char* buffer, DWORD size, DWORD* moved);
  BOOL Write(const char* data, DWORD size, DWORD* moved);
  BOOL Cancel();

 private:
  using Lock = std::unique_lock<std::mutex>;
  /// False when it was cancelled.
  bool WaitWhileHeld(Lock& lock);
  BOOL Outcome() const;

  mutable std::mutex m_mutex;
  std::condition_variable m_changed;
  HANDLE m_handle = INVALID_HANDLE_VALUE;
  std::vector<Opening> m_openings;
  DCB m_state{};
  COMMTIMEOUTS m_timeouts{};
  std::vector<DWORD> m_purges;
  std::vector<DWORD> m_escapes;
  DWORD m_error = ERROR_SUCCESS;
  bool m_getStateFails = false;
  bool m_setTimeoutsFails = false;
  std::string m_received;
  std::string m_sent;
  std::vector<COMMTIMEOUTS> m_reads;  ///< the time-outs of each
  int m_looks = 0;
  int m_inCall = 0;
  bool m_held = false;
  bool m_closeHeld = false;
  bool m_heedsCancelling = true;
  bool m_cancelled = false;
};

}  // namespace quarn::test
