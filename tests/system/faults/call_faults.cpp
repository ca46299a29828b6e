#include "system/faults/call_faults.h"

#include <fcntl.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <filesystem>
#include <utility>

namespace quarn::test {
namespace {

std::atomic<CallFaults*> g_faults = nullptr;

}  // namespace

CallFaults::CallFaults(std::string place, FaultPlan plan)
    : m_place(std::move(place)), m_plan(std::move(plan)) {
  for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
    std::error_code gone;  // the descriptor that this is read with
    const std::string target = std::filesystem::read_symlink(entry, gone).string();
    if (Concerns(target.c_str()) || target == "anon_inode:[eventfd]") {
      Opened(std::stoi(entry.path().filename().string()));
    }
  }
  g_faults = this;
}

CallFaults::~CallFaults() { g_faults = nullptr; }

CallFaults* CallFaults::Current() {
  CallFaults* faults = g_faults;
  const bool looks =
      faults != nullptr && (faults->m_plan.everyThread || faults->m_thread == std::this_thread::get_id());
  return looks && !faults->m_eventUnderWay ? faults : nullptr;
}

bool CallFaults::Concerns(const char* path) const {
  return path != nullptr && std::string_view(path).starts_with(m_place);
}

int CallFaults::Error(const char* name) {
  ++m_seen[name];
  if (++m_calls != m_plan.failing) return 0;
  m_failed = name;
  if (!m_plan.event) return m_plan.error;
  m_eventUnderWay = true;
  m_plan.event();
  m_eventUnderWay = false;
  return 0;
}

void CallFaults::NoteFlags(int flags) {
  if ((flags & (O_CREAT | O_EXCL)) == O_CREAT) ++m_madeOverAnything;
}

int CallFaults::Writes() const {
  int count = 0;
  for (const auto& [name, calls] : m_seen) {
    if (name == "write" || name == "fsync" || name == "fdatasync") count += calls;
  }
  return count;
}

void CallFaults::TakeTime() const {
  if (m_plan.pauseMs > 0) std::this_thread::sleep_for(std::chrono::milliseconds(m_plan.pauseMs));
}

int CallFaults::ErrorOrInterruption(const char* name) {
  int& interruptions = m_interruptions[name];
  if (interruptions < m_plan.interruptions) {
    ++interruptions;
    return EINTR;
  }
  interruptions = 0;
  return Error(name);
}

std::size_t CallFaults::ReadSize(std::size_t size) const {
  return m_plan.byteByByte ? std::min<std::size_t>(size, 1) : size;
}

std::size_t CallFaults::WriteSize(std::size_t size) const {
  if (m_plan.byHalves && size > 1) return size / 2;
  return ReadSize(size);
}

}  // namespace quarn::test
