#include "system/faults/memory_fault.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>

// The C library's own, under the names that nobody replaces.
extern "C" {
// NOLINTBEGIN(bugprone-reserved-identifier): the library's names
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* memory, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);
// NOLINTEND(bugprone-reserved-identifier)
}

namespace quarn::test {
namespace {

std::atomic<int> g_failing = 0;
std::atomic<int> g_allocations = 0;

/// Counts an allocation; true if it is the one that fails.
bool Fails() {
  const int failing = g_failing;
  if (failing == 0 || ++g_allocations != failing) return false;
  errno = ENOMEM;
  return true;
}

/// As at the end of a program that catches nothing.
int Finally(const std::function<int()>& work) noexcept { return work(); }

[[noreturn]] void RunAsCopy(const std::function<int()>& work) {
  const rlimit none{};
  ::setrlimit(RLIMIT_CORE, &none);
  const int status = Finally(work);
  std::fflush(stdout);
  ::_exit(status);
}

}  // namespace

MemoryFault::MemoryFault(int failing) {
  g_allocations = 0;
  g_failing = failing;
}

MemoryFault::~MemoryFault() { g_failing = 0; }

bool MemoryFault::Struck() const { return g_allocations >= g_failing; }

ProcessEnd InCopyOfThisProcess(const std::function<int()>& work) {
  std::array<int, 2> ends{};
  if (::pipe(ends.data()) != 0) return {.text = std::strerror(errno)};
  std::fflush(stdout);
  const pid_t child = ::fork();
  if (child == 0) {
    ::dup2(ends[1], STDERR_FILENO);
    for (const int each : ends) ::close(each);
    RunAsCopy(work);
  }
  ::close(ends[1]);
  ProcessEnd end;
  std::array<char, 4096> said{};
  for (ssize_t count = 0; (count = ::read(ends[0], said.data(), said.size())) > 0;)
    end.text.append(said.data(), static_cast<std::size_t>(count));
  ::close(ends[0]);
  int status = 0;
  ::waitpid(child, &status, 0);
  end.itself = WIFEXITED(status);
  end.status = WIFEXITED(status) ? WEXITSTATUS(status) : 0;
  end.said = WIFSIGNALED(status) && WTERMSIG(status) == SIGABRT &&
             end.text.find("std::bad_alloc") != std::string::npos;
  if (WIFSIGNALED(status)) end.text = std::string(::strsignal(WTERMSIG(status))) + "; " + end.text;
  return end;
}

}  // namespace quarn::test

namespace {
using quarn::test::Fails;
}  // namespace

// In place of the library's for the whole process: calls from libraries come here too.
#define QUARN_ALLOCATION(result, name, ...)                                                           \
  extern "C" __attribute__((visibility("default"))) result Faulty_##name(__VA_ARGS__) __asm__(#name); \
  result Faulty_##name(__VA_ARGS__)

QUARN_ALLOCATION(void*, malloc, std::size_t size) { return Fails() ? nullptr : __libc_malloc(size); }

QUARN_ALLOCATION(void*, calloc, std::size_t count, std::size_t size) {
  return Fails() ? nullptr : __libc_calloc(count, size);
}

QUARN_ALLOCATION(void*, realloc, void* memory, std::size_t size) {
  return Fails() ? nullptr : __libc_realloc(memory, size);
}

QUARN_ALLOCATION(void*, aligned_alloc, std::size_t alignment, std::size_t size) {
  return Fails() ? nullptr : __libc_memalign(alignment, size);
}

QUARN_ALLOCATION(void*, memalign, std::size_t alignment, std::size_t size) {
  return Fails() ? nullptr : __libc_memalign(alignment, size);
}

QUARN_ALLOCATION(int, posix_memalign, void** memory, std::size_t alignment, std::size_t size) {
  if (Fails()) return ENOMEM;
  *memory = __libc_memalign(alignment, size);
  return *memory == nullptr ? ENOMEM : 0;
}
