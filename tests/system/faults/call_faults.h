#pragma once

#include <functional>
#include <map>
#include <set>
#include <string>
#include <thread>

namespace quarn::test {

class DiskJournal;

/// Which system call fails, and how the others behave.
struct FaultPlan {
  int failing = 0;           ///< the number of the call that fails, counted from 1; 0: none
  int error = 0;             ///< its error
  int interruptions = 0;     ///< how often each call that can wait is interrupted before it succeeds
  bool byteByByte = false;   ///< a read or write moves a single byte
  bool byHalves = false;     ///< a write moves half of its bytes
  int pauseMs = 0;           ///< how long each write and each flush takes
  bool everyThread = false;  ///< also the calls of threads that the operation waits for
  /// Called right before the call `failing`, which is then made normally.
  std::function<void()> event;
};

/// While it exists, system calls of its thread fail as planned: calls on paths that begin with `place`, on
/// descriptors opened there, before or since, and on event descriptors. One at a time. Calls of the libraries
/// count too. A flush is only counted: no test needs the data on the disk.
class CallFaults {
 public:
  CallFaults(std::string place, FaultPlan plan);
  ~CallFaults();
  CallFaults(const CallFaults&) = delete;
  CallFaults& operator=(const CallFaults&) = delete;

  /// Whether the failing call was reached.
  [[nodiscard]] bool Struck() const { return m_plan.failing > 0 && m_calls >= m_plan.failing; }
  /// How many of the calls so far were writes and flushes.
  [[nodiscard]] int Writes() const;
  /// How many files were created in a way that follows a link or uses an existing file.
  [[nodiscard]] int MadeOverAnything() const { return m_madeOverAnything; }
  /// Its name, as "write".
  [[nodiscard]] const std::string& Failed() const { return m_failed; }
  /// All calls so far: how many of each name.
  [[nodiscard]] const std::map<std::string, int>& Seen() const { return m_seen; }

  /// From now on the calls that succeed are noted there.
  void NoteIn(DiskJournal& journal) { m_journal = &journal; }

  // For the calls themselves.

  [[nodiscard]] DiskJournal* Journal() const { return m_journal; }

  /// The object that handles this thread's calls, if any.
  static CallFaults* Current();
  [[nodiscard]] bool Concerns(const char* path) const;
  [[nodiscard]] bool Concerns(int descriptor) const { return m_descriptors.contains(descriptor); }
  /// Counts a call. Returns the error with which it fails, or 0.
  int Error(const char* name);
  /// The same for a call that can wait, and may be interrupted.
  int ErrorOrInterruption(const char* name);
  void Opened(int descriptor) { m_descriptors.insert(descriptor); }
  void NoteFlags(int flags);
  void Closed(int descriptor) { m_descriptors.erase(descriptor); }
  /// The time that a write or a flush takes.
  void TakeTime() const;
  [[nodiscard]] std::size_t ReadSize(std::size_t size) const;
  [[nodiscard]] std::size_t WriteSize(std::size_t size) const;

 private:
  const std::string m_place;
  const FaultPlan m_plan;
  const std::thread::id m_thread = std::this_thread::get_id();
  std::set<int> m_descriptors;
  std::map<std::string, int> m_seen;
  std::string m_failed;
  DiskJournal* m_journal = nullptr;
  int m_calls = 0;
  int m_madeOverAnything = 0;
  bool m_eventUnderWay = false;                ///< its own calls do not count
  std::map<std::string, int> m_interruptions;  ///< of the current call
};

}  // namespace quarn::test
