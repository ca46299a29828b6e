// Cases that ask the system itself, by the line's own handle.

#include <windows.h>

#include "serial/line_test_support.h"
#include "serial/serial_line_win32.h"
#include "support/served_instrument.h"

namespace quarn {
namespace {

class Win32LineCases : public testing::Test {
 protected:
  void SetUp() override { ASSERT_NE(m_handle, INVALID_HANDLE_VALUE); }

  const test::ServedInstrument m_instrument{""};
  const HANDLE m_handle =
      CreateFileW(m_instrument.NodePath().toStdWString().c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr,
                  OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
  Win32SerialLine m_line{m_handle, m_instrument.NodePath()};
};

TEST_F(Win32LineCases, TheFiveTimeoutsAreReadBack) {
  for (const LineTimeouts& wanted : {LineTimeouts{1, 2, 3, 4, 5}, LineTimeouts{135, 15, 75, 15, 75},
                                     LineTimeouts{0xFFFFFFFFU, 0, 0, 0, 0}, LineTimeouts{}}) {
    ASSERT_TRUE(m_line.SetTimeouts(wanted));
    COMMTIMEOUTS record{};
    ASSERT_NE(GetCommTimeouts(m_handle, &record), FALSE);
    EXPECT_EQ(record.ReadIntervalTimeout, wanted.readInterval);
    EXPECT_EQ(record.ReadTotalTimeoutMultiplier, wanted.readTotalMultiplier);
    EXPECT_EQ(record.ReadTotalTimeoutConstant, wanted.readTotalConstant);
    EXPECT_EQ(record.WriteTotalTimeoutMultiplier, wanted.writeTotalMultiplier);
    EXPECT_EQ(record.WriteTotalTimeoutConstant, wanted.writeTotalConstant);
  }
}

TEST_F(Win32LineCases, AByteSizeOf255LeavesNoErrorPending) {
  EXPECT_FALSE(m_line.SetState({.byteSize = 255}));
  DWORD errors = 0xFFFFFFFFU;
  COMSTAT status{};
  ASSERT_NE(ClearCommError(m_handle, &errors, &status), FALSE);
  EXPECT_EQ(errors, 0U);
  EXPECT_EQ(status.cbInQue, 0U);
}

}  // namespace
}  // namespace quarn
