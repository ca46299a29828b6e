#pragma once

#include <unistd.h>

#include <utility>

namespace quarn {

/// Owns one POSIX file descriptor; -1 is none.
class FileDescriptor {
 public:
  FileDescriptor() = default;
  explicit FileDescriptor(int descriptor) : m_descriptor(descriptor) {}
  FileDescriptor(FileDescriptor&& other) noexcept : m_descriptor(std::exchange(other.m_descriptor, -1)) {}
  FileDescriptor& operator=(FileDescriptor&& other) noexcept {
    std::swap(m_descriptor, other.m_descriptor);
    return *this;
  }
  FileDescriptor(const FileDescriptor&) = delete;
  FileDescriptor& operator=(const FileDescriptor&) = delete;
  ~FileDescriptor() { Close(); }

  [[nodiscard]] int Get() const { return m_descriptor; }
  /// True if there was nothing to close or the system reports success.
  bool Close() { return m_descriptor < 0 || ::close(std::exchange(m_descriptor, -1)) == 0; }
  [[nodiscard]] bool IsValid() const { return m_descriptor >= 0; }

 private:
  int m_descriptor = -1;
};

}  // namespace quarn
