#pragma once

#include <condition_variable>
#include <cstddef>
#include <memory>
#include <mutex>
#include <utility>

#include "serial/serial_line.h"

namespace quarn::test {

/// A real line. While a test holds it, no read begins: what the instrument says stays in the driver, as if it
/// came later. So a wait lasts until the test is done, however busy the computer is.
class HeldLine final : public SerialLine {
 public:
  explicit HeldLine(std::shared_ptr<SerialLine> line) : m_line(std::move(line)) {}

  void Hold() { Set(m_held, true); }
  void Release() { Set(m_held, false); }

  LineResult GetState(LineState& state) override { return m_line->GetState(state); }
  LineResult SetState(const LineState& state) override { return m_line->SetState(state); }
  LineResult SetTimeouts(const LineTimeouts& timeouts) override { return m_line->SetTimeouts(timeouts); }
  LineResult SetModemLines(const ModemLines& lines) override { return m_line->SetModemLines(lines); }
  LineResult Purge() override { return m_line->Purge(); }
  LineResult ClearError() override { return m_line->ClearError(); }
  IoResult Read(char* buffer, std::size_t size) override {
    {
      std::unique_lock guard(m_mutex);
      m_changed.wait(guard, [this] { return !m_held || m_cancelled || m_closed; });
    }
    return m_line->Read(buffer, size);
  }
  IoResult Write(const char* data, std::size_t size) override { return m_line->Write(data, size); }
  void CancelIo() override {
    m_line->CancelIo();
    Set(m_cancelled, true);
  }
  void AllowIo() override {
    Set(m_cancelled, false);
    m_line->AllowIo();
  }
  LineResult Close() override {
    Set(m_closed, true);
    return m_line->Close();
  }
  bool IsLost() override { return m_line->IsLost(); }

 private:
  void Set(bool& which, bool to) {
    {
      const std::lock_guard guard(m_mutex);
      which = to;
    }
    m_changed.notify_all();
  }

  const std::shared_ptr<SerialLine> m_line;
  std::mutex m_mutex;
  std::condition_variable m_changed;
  bool m_held = false;
  bool m_cancelled = false;
  bool m_closed = false;
};

}  // namespace quarn::test
