#include <dlfcn.h>
#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <sys/types.h>

#include <cerrno>
#include <cstdarg>
#include <cstddef>
#include <ctime>

#include "system/faults/call_faults.h"
#include "system/faults/disk_journal.h"

// The system's functions under their own names. The program's dynamic symbols come before those of every
// library, so that calls in libraries come here, too. In C++ they have other names, because of the
// declarations and inline functions in the system's headers.
#define QUARN_SYSTEM_CALL(result, name, ...)                                                          \
  extern "C" __attribute__((visibility("default"))) result Faulty_##name(__VA_ARGS__) __asm__(#name); \
  result Faulty_##name(__VA_ARGS__)

namespace {

using quarn::test::CallFaults;

template <class Function>
Function* Next(const char* name) {
  return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

int Failure(int error) {
  errno = error;
  return -1;
}

/// The error for a call on a path.
int ErrorOn(const char* path, const char* name) {
  CallFaults* faults = CallFaults::Current();
  return faults != nullptr && faults->Concerns(path) ? faults->Error(name) : 0;
}

/// The error for a call on a descriptor; `waits` says whether it can be interrupted.
int ErrorOn(int descriptor, const char* name, bool waits = false) {
  CallFaults* faults = CallFaults::Current();
  if (faults == nullptr || !faults->Concerns(descriptor)) return 0;
  return waits ? faults->ErrorOrInterruption(name) : faults->Error(name);
}

bool IsFaulty(int descriptor) {
  const CallFaults* faults = CallFaults::Current();
  return faults != nullptr && faults->Concerns(descriptor);
}

/// Notes a call in the journal, if there is one and the call has succeeded.
template <class Note>
auto Noted(auto result, const char* path, const Note& note) {
  CallFaults* faults = CallFaults::Current();
  if (result >= 0 && faults != nullptr && faults->Journal() != nullptr && faults->Concerns(path)) {
    note(*faults->Journal());
  }
  return result;
}

template <class Note>
auto Noted(auto result, int descriptor, const Note& note) {
  if (result >= 0 && IsFaulty(descriptor) && CallFaults::Current()->Journal() != nullptr) {
    note(*CallFaults::Current()->Journal());
  }
  return result;
}

/// A flush is only counted, and takes its time.
template <class Flush>
int Flushed(int descriptor, const char* name, const Flush& flush) {
  if (!IsFaulty(descriptor)) return flush(descriptor);
  if (const int error = ErrorOn(descriptor, name, true)) return Failure(error);
  CallFaults::Current()->TakeTime();
  return Noted(0, descriptor, [&](auto& journal) { journal.Flushed(descriptor); });
}

template <class Open>
int OpenedBy(const char* path, int flags, const Open& open) {
  CallFaults* faults = CallFaults::Current();
  if (faults == nullptr || !faults->Concerns(path)) return open();
  faults->NoteFlags(flags);
  if (const int error = faults->ErrorOrInterruption("open")) return Failure(error);
  const int descriptor = open();
  if (descriptor >= 0) faults->Opened(descriptor);
  return Noted(descriptor, path, [&](auto& journal) { journal.Opened(descriptor, path, flags); });
}

/// The third argument of an open, where there is one.
mode_t ModeOf(int flags, va_list rest) {
  return (flags & (O_CREAT | O_TMPFILE)) != 0 ? va_arg(rest, mode_t) : 0;
}

}  // namespace

QUARN_SYSTEM_CALL(int, open, const char* path, int flags, ...) {
  va_list rest;
  va_start(rest, flags);
  const mode_t mode = ModeOf(flags, rest);
  va_end(rest);
  static auto* const next = Next<int(const char*, int, ...)>("open");
  return OpenedBy(path, flags, [&] { return next(path, flags, mode); });
}

QUARN_SYSTEM_CALL(int, open64, const char* path, int flags, ...) {
  va_list rest;
  va_start(rest, flags);
  const mode_t mode = ModeOf(flags, rest);
  va_end(rest);
  static auto* const next = Next<int(const char*, int, ...)>("open64");
  return OpenedBy(path, flags, [&] { return next(path, flags, mode); });
}

QUARN_SYSTEM_CALL(int, close, int descriptor) {
  static auto* const next = Next<int(int)>("close");
  const int error = ErrorOn(descriptor, "close");
  if (IsFaulty(descriptor)) CallFaults::Current()->Closed(descriptor);
  // The system releases the descriptor, whatever it returns.
  const int result = next(descriptor);
  return error != 0 ? Failure(error) : result;
}

QUARN_SYSTEM_CALL(ssize_t, read, int descriptor, void* buffer, std::size_t size) {
  static auto* const next = Next<ssize_t(int, void*, std::size_t)>("read");
  if (const int error = ErrorOn(descriptor, "read", true)) return Failure(error);
  return next(descriptor, buffer, IsFaulty(descriptor) ? CallFaults::Current()->ReadSize(size) : size);
}

QUARN_SYSTEM_CALL(ssize_t, write, int descriptor, const void* buffer, std::size_t size) {
  static auto* const next = Next<ssize_t(int, const void*, std::size_t)>("write");
  if (const int error = ErrorOn(descriptor, "write", true)) return Failure(error);
  if (!IsFaulty(descriptor)) return next(descriptor, buffer, size);
  CallFaults::Current()->TakeTime();
  const ssize_t written = next(descriptor, buffer, CallFaults::Current()->WriteSize(size));
  return Noted(written, descriptor, [&](auto& journal) {
    journal.Wrote(descriptor, static_cast<const char*>(buffer), static_cast<std::size_t>(written));
  });
}

QUARN_SYSTEM_CALL(int, fsync, int descriptor) {
  static auto* const next = Next<int(int)>("fsync");
  return Flushed(descriptor, "fsync", next);
}

QUARN_SYSTEM_CALL(int, fdatasync, int descriptor) {
  static auto* const next = Next<int(int)>("fdatasync");
  return Flushed(descriptor, "fdatasync", next);
}

QUARN_SYSTEM_CALL(int, fchmod, int descriptor, mode_t mode) {
  static auto* const next = Next<int(int, mode_t)>("fchmod");
  if (const int error = ErrorOn(descriptor, "fchmod")) return Failure(error);
  return next(descriptor, mode);
}

QUARN_SYSTEM_CALL(int, ftruncate64, int descriptor, off64_t size) {
  static auto* const next = Next<int(int, off64_t)>("ftruncate64");
  if (const int error = ErrorOn(descriptor, "ftruncate")) return Failure(error);
  return Noted(next(descriptor, size), descriptor,
               [&](auto& journal) { journal.Truncated(descriptor, static_cast<std::size_t>(size)); });
}

QUARN_SYSTEM_CALL(off64_t, lseek64, int descriptor, off64_t offset, int from) {
  static auto* const next = Next<off64_t(int, off64_t, int)>("lseek64");
  if (const int error = ErrorOn(descriptor, "lseek")) return Failure(error);
  return next(descriptor, offset, from);
}

QUARN_SYSTEM_CALL(int, flock, int descriptor, int operation) {
  static auto* const next = Next<int(int, int)>("flock");
  if (const int error = ErrorOn(descriptor, "flock", true)) return Failure(error);
  return next(descriptor, operation);
}

QUARN_SYSTEM_CALL(int, ioctl, int descriptor, unsigned long request, ...) {
  va_list rest;
  va_start(rest, request);
  void* argument = va_arg(rest, void*);
  va_end(rest);
  static auto* const next = Next<int(int, unsigned long, ...)>("ioctl");
  if (const int error = ErrorOn(descriptor, "ioctl", true)) return Failure(error);
  return next(descriptor, request, argument);
}

QUARN_SYSTEM_CALL(int, ppoll, pollfd* polled, nfds_t count, const timespec* left, const sigset_t* mask) {
  static auto* const next = Next<int(pollfd*, nfds_t, const timespec*, const sigset_t*)>("ppoll");
  if (count > 0) {
    if (const int error = ErrorOn(polled[0].fd, "ppoll", true)) return Failure(error);
  }
  return next(polled, count, left, mask);
}

QUARN_SYSTEM_CALL(int, eventfd, unsigned int value, int flags) {
  static auto* const next = Next<int(unsigned int, int)>("eventfd");
  CallFaults* faults = CallFaults::Current();
  if (faults != nullptr) {
    if (const int error = faults->Error("eventfd")) return Failure(error);
  }
  const int descriptor = next(value, flags);
  if (faults != nullptr && descriptor >= 0) faults->Opened(descriptor);
  return descriptor;
}

QUARN_SYSTEM_CALL(int, stat, const char* path, struct stat* info) {
  static auto* const next = Next<int(const char*, struct stat*)>("stat");
  if (const int error = ErrorOn(path, "stat")) return Failure(error);
  return next(path, info);
}

QUARN_SYSTEM_CALL(int, stat64, const char* path, struct stat64* info) {
  static auto* const next = Next<int(const char*, struct stat64*)>("stat64");
  if (const int error = ErrorOn(path, "stat")) return Failure(error);
  return next(path, info);
}

QUARN_SYSTEM_CALL(int, lstat, const char* path, struct stat* info) {
  static auto* const next = Next<int(const char*, struct stat*)>("lstat");
  if (const int error = ErrorOn(path, "lstat")) return Failure(error);
  return next(path, info);
}

QUARN_SYSTEM_CALL(int, lstat64, const char* path, struct stat64* info) {
  static auto* const next = Next<int(const char*, struct stat64*)>("lstat64");
  if (const int error = ErrorOn(path, "lstat")) return Failure(error);
  return next(path, info);
}

QUARN_SYSTEM_CALL(int, fstat64, int descriptor, struct stat64* info) {
  static auto* const next = Next<int(int, struct stat64*)>("fstat64");
  if (const int error = ErrorOn(descriptor, "fstat")) return Failure(error);
  return next(descriptor, info);
}

QUARN_SYSTEM_CALL(int, statx, int folder, const char* path, int flags, unsigned int mask,
                  struct statx* info) {
  static auto* const next = Next<int(int, const char*, int, unsigned int, struct statx*)>("statx");
  const bool own = path != nullptr && *path == '\0';
  const char* const name = (flags & AT_SYMLINK_NOFOLLOW) != 0 ? "lstat" : "stat";
  if (const int error = own ? ErrorOn(folder, "fstat") : ErrorOn(path, name)) return Failure(error);
  return next(folder, path, flags, mask, info);
}

QUARN_SYSTEM_CALL(int, access, const char* path, int mode) {
  static auto* const next = Next<int(const char*, int)>("access");
  if (const int error = ErrorOn(path, "access")) return Failure(error);
  return next(path, mode);
}

QUARN_SYSTEM_CALL(ssize_t, readlink, const char* path, char* text, std::size_t size) {
  static auto* const next = Next<ssize_t(const char*, char*, std::size_t)>("readlink");
  if (const int error = ErrorOn(path, "readlink")) return Failure(error);
  return next(path, text, size);
}

QUARN_SYSTEM_CALL(char*, realpath, const char* path, char* resolved) {
  static auto* const next = Next<char*(const char*, char*)>("realpath");
  if (const int error = ErrorOn(path, "realpath")) {
    errno = error;
    return nullptr;
  }
  return next(path, resolved);
}

QUARN_SYSTEM_CALL(int, rename, const char* from, const char* to) {
  static auto* const next = Next<int(const char*, const char*)>("rename");
  if (const int error = ErrorOn(to, "rename")) return Failure(error);
  return Noted(next(from, to), to, [&](auto& journal) { journal.Renamed(from, to); });
}

QUARN_SYSTEM_CALL(int, renameat2, int fromFolder, const char* from, int toFolder, const char* to,
                  unsigned int flags) {
  static auto* const next = Next<int(int, const char*, int, const char*, unsigned int)>("renameat2");
  if (const int error = ErrorOn(to, "rename")) return Failure(error);
  return Noted(next(fromFolder, from, toFolder, to, flags), to,
               [&](auto& journal) { journal.Renamed(from, to); });
}

QUARN_SYSTEM_CALL(int, linkat, int fromFolder, const char* from, int toFolder, const char* to, int flags) {
  static auto* const next = Next<int(int, const char*, int, const char*, int)>("linkat");
  if (const int error = ErrorOn(to, "link")) return Failure(error);
  return Noted(next(fromFolder, from, toFolder, to, flags), to,
               [&](auto& journal) { journal.Linked(from, to); });
}

QUARN_SYSTEM_CALL(int, unlink, const char* path) {
  static auto* const next = Next<int(const char*)>("unlink");
  if (const int error = ErrorOn(path, "unlink")) return Failure(error);
  return Noted(next(path), path, [&](auto& journal) { journal.Removed(path); });
}

QUARN_SYSTEM_CALL(int, mkdir, const char* path, mode_t mode) {
  static auto* const next = Next<int(const char*, mode_t)>("mkdir");
  if (const int error = ErrorOn(path, "mkdir")) return Failure(error);
  return next(path, mode);
}
