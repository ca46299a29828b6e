// <asm/termbits.h> knows the rates that <termios.h> does not, and the two cannot be included together.
#include <asm/ioctls.h>
#include <asm/termbits.h>
#include <fcntl.h>
#include <sys/ioctl.h>

#include <cstring>

#include "device/pseudo_terminal.h"
#include "serial/file_descriptor.h"
#include "serial/line_test_support.h"
#include "serial/open_line_linux.h"

namespace quarn {
namespace {

class LinuxLineState : public testing::Test {
 protected:
  [[nodiscard]] std::shared_ptr<SerialLine> Open() const {
    return OpenTerminalDevice(QString::fromStdString(m_far.NodePath())).line;
  }
  /// The line's state as the system sees it, by a descriptor of our own.
  [[nodiscard]] termios2 SystemState() const {
    termios2 state{};
    EXPECT_EQ(::ioctl(m_near.Get(), TCGETS2, &state), 0);
    return state;
  }
  void SetSystemState(const termios2& state) const { ASSERT_EQ(::ioctl(m_near.Get(), TCSETS2, &state), 0); }

  device::PseudoTerminal m_far;
  FileDescriptor m_near{::open(m_far.NodePath().c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC)};
};

TEST_F(LinuxLineState, RatesWithoutANameOfTheirOwnAreReallySet) {
  const auto line = Open();
  ASSERT_TRUE(line);
  for (const std::uint32_t rate : {110U, 9600U, 14400U, 56000U, 115200U, 128000U, 256000U}) {
    const LineResult set = line->SetState({.baudRate = rate});
    ASSERT_TRUE(set) << set.Failure().reason.toStdString();
    EXPECT_EQ(SystemState().c_ospeed, rate);
    EXPECT_EQ(SystemState().c_ispeed, rate);
    LineState state;
    ASSERT_TRUE(line->GetState(state));
    EXPECT_EQ(state.baudRate, rate);
  }
}

TEST_F(LinuxLineState, StopBitsReachTheDriver) {
  const auto line = Open();
  ASSERT_TRUE(line);
  ASSERT_TRUE(line->SetState({.stopBits = StopBits::Two}));
  EXPECT_NE(SystemState().c_cflag & CSTOPB, 0U);
  ASSERT_TRUE(line->SetState({.stopBits = StopBits::One}));
  EXPECT_EQ(SystemState().c_cflag & CSTOPB, 0U);
}

TEST_F(LinuxLineState, ACombinationThatNoUartHasIsRefusedWithAReason) {
  const auto line = Open();
  ASSERT_TRUE(line);
  const termios2 before = SystemState();
  for (const LineState& state : {LineState{.byteSize = 8, .stopBits = StopBits::OnePointFive},
                                 LineState{.byteSize = 5, .stopBits = StopBits::Two}}) {
    const LineResult set = line->SetState(state);
    EXPECT_FALSE(set);
    EXPECT_EQ(set.Failure().kind, LineError::Refused);
    EXPECT_TRUE(set.Failure().reason.contains(QStringLiteral("data and stop bits")));
  }
  EXPECT_EQ(SystemState().c_cflag, before.c_cflag);
}

TEST_F(LinuxLineState, TheLineIsRawWhileOpenAndAsBeforeAfterClose) {
  termios2 former = SystemState();
  former.c_iflag |= ICRNL | IXON;
  former.c_oflag |= OPOST | ONLCR;
  former.c_lflag |= ICANON | ECHO | ISIG;
  former.c_cc[VMIN] = 3;
  former.c_cflag = (former.c_cflag & ~tcflag_t{CBAUD}) | BOTHER;
  former.c_ispeed = 7200;
  former.c_ospeed = 7200;
  SetSystemState(former);
  former = SystemState();
  ASSERT_EQ(former.c_ospeed, 7200U);

  const auto line = Open();
  ASSERT_TRUE(line);
  ASSERT_TRUE(line->SetState({.baudRate = 256000, .stopBits = StopBits::Two}));
  EXPECT_EQ(SystemState().c_lflag & (ICANON | ECHO | ISIG), 0U);
  EXPECT_EQ(SystemState().c_iflag & (ICRNL | IXON), 0U);
  EXPECT_EQ(SystemState().c_oflag & OPOST, 0U);
  EXPECT_TRUE(line->Close());

  const termios2 after = SystemState();
  EXPECT_EQ(after.c_iflag, former.c_iflag);
  EXPECT_EQ(after.c_oflag, former.c_oflag);
  EXPECT_EQ(after.c_cflag, former.c_cflag);
  EXPECT_EQ(after.c_lflag, former.c_lflag);
  EXPECT_EQ(std::memcmp(after.c_cc, former.c_cc, sizeof former.c_cc), 0);
  EXPECT_EQ(after.c_ispeed, former.c_ispeed);
  EXPECT_EQ(after.c_ospeed, former.c_ospeed);
}

TEST_F(LinuxLineState, LettingGoOfTheLineClosesIt) {
  termios2 former = SystemState();
  former.c_lflag |= ECHO;
  SetSystemState(former);
  { ASSERT_TRUE(Open()); }
  EXPECT_NE(SystemState().c_lflag & ECHO, 0U);
  EXPECT_TRUE(Open()) << "the line was not released";
}

TEST_F(LinuxLineState, AfterAHangUpTheStateCannotBeRead) {
  const auto line = Open();
  ASSERT_TRUE(line);
  EXPECT_TRUE(line->ClearError());
  m_far.HangUp();
  LineState state;
  for (const LineResult& result :
       {line->GetState(state), line->SetState({}), line->SetTimeouts({}), line->ClearError()}) {
    EXPECT_FALSE(result);
    EXPECT_EQ(result.Failure().kind, LineError::Disconnected);
  }
  EXPECT_TRUE(line->Close());
}

}  // namespace
}  // namespace quarn
