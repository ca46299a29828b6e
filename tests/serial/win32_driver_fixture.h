#pragma once

#include <gtest/gtest.h>

#include <future>
#include <memory>
#include <string>

#include "serial/line_test_support.h"
#include "serial/played_driver_win32.h"
#include "serial/serial_line_win32.h"

namespace quarn::test {

/// A line with a simulated driver, for behaviour that real drivers show rarely.
class Win32Driver : public testing::Test {
 protected:
  void Open() {
    const OpenResult opened = Win32LineOpener().Open(QStringLiteral("COM3"));
    ASSERT_TRUE(opened.line) << opened.failure.reason.toStdString();
    m_line = opened.line;
    // A read lasts until it is cancelled.
    ASSERT_TRUE(m_line->SetTimeouts({}));
  }
  /// Opens the line and starts a read, which does not end.
  void OpenAndRead(bool heedsCancelling) {
    Open();
    m_driver.Hold(heedsCancelling);
    m_driver.Receive("old");
    m_reading = InThread([this] { return Read(); });
    ASSERT_TRUE(Eventually([this] { return m_driver.Reads() == 1; }));
  }
  /// The outcome of a read: its bytes, or why it failed.
  std::string Read() const {
    std::string bytes(100, '\0');
    const IoResult result = m_line->Read(bytes.data(), bytes.size());
    bytes.resize(result.bytes);
    if (result.ok) return bytes;
    switch (result.failure.kind) {
      case LineError::Cancelled:
        return "cancelled";
      case LineError::Disconnected:
        return "disconnected";
      default:
        return "failed";
    }
  }
  bool Write(const std::string& bytes) const { return m_line->Write(bytes.data(), bytes.size()).ok; }
  [[nodiscard]] static std::string Reason(const LineResult& result) {
    return result.Failure().reason.toStdString();
  }

  PlayedDriver m_driver;
  std::shared_ptr<SerialLine> m_line;
  std::future<std::string> m_reading;
};

}  // namespace quarn::test
