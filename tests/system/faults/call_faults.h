#pragma once

#include <functional>
#include <map>
#include <set>
#include <string>
#include <thread>

namespace quarn::test {

/// What a fault-free call does besides its work, and which call fails.
struct FaultPlan {
  int failing = 0;          ///< the number of the call that fails, counted from 1; 0: none
  int error = 0;            ///< and what it says
  int interruptions = 0;    ///< how often each call that can wait is interrupted before it does its work
  bool byteByByte = false;  ///< a read or write moves a single byte
  bool byHalves = false;    ///< a write moves half of what it is given
  int pauseMs = 0;          ///< how long each write and each flush takes
  /// What happens right before the call `failing`, which then is made as if nothing were the matter.
  std::function<void()> event;
};

/// While one lives, system calls of the thread that made it fail as planned: those on paths that begin with
/// `place` and on descriptors that were opened there, before or since, and those with an event
/// descriptor. One at a time. Calls count in the program's own code and in the libraries that it uses. A
/// flush is only counted: no test needs the disk to settle.
class CallFaults {
 public:
  CallFaults(std::string place, FaultPlan plan);
  ~CallFaults();
  CallFaults(const CallFaults&) = delete;
  CallFaults& operator=(const CallFaults&) = delete;

  /// Whether the call that was to fail came.
  [[nodiscard]] bool Struck() const { return m_plan.failing > 0 && m_calls >= m_plan.failing; }
  /// How many of the calls so far were writes and flushes.
  [[nodiscard]] int Writes() const;
  /// How many files were made in a way that would have followed a link, or taken what stood there.
  [[nodiscard]] int MadeOverAnything() const { return m_madeOverAnything; }
  /// Its name, as "write".
  [[nodiscard]] const std::string& Failed() const { return m_failed; }
  /// All calls so far: how many of each name.
  [[nodiscard]] const std::map<std::string, int>& Seen() const { return m_seen; }

  // For the calls themselves.

  /// The layer that looks at this thread's calls, if any.
  static CallFaults* Current();
  [[nodiscard]] bool Concerns(const char* path) const;
  [[nodiscard]] bool Concerns(int descriptor) const { return m_descriptors.contains(descriptor); }
  /// Counts a call. The error that it ends with instead of doing its work; 0 for none.
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
  int m_calls = 0;
  int m_madeOverAnything = 0;
  bool m_eventUnderWay = false;                ///< whose calls are its own affair
  std::map<std::string, int> m_interruptions;  ///< of the call that is under way
};

}  // namespace quarn::test
