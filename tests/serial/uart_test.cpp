#include <gtest/gtest.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <functional>
#include <memory>
#include <vector>

#include "device/pseudo_terminal.h"
#include "serial/calm_machine.h"
#include "serial/fake_uart.h"
#include "serial/holder.h"
#include "serial/line_failure_linux.h"
#include "serial/line_test_support.h"
#include "serial/open_port.h"
#include "serial/open_terminal_linux.h"
#include "serial/port_use_linux.h"
#include "support/counted_indicator.h"
#include "support/recorded_messages.h"
#include "support/scripted_line.h"

namespace quarn {
namespace {

using Calls = std::vector<std::string>;

/// For a line that echoed: the flag is restored last.
const Calls kGivenBack{"latency normal", "unmark", "set state", "flush input", "set state", "close"};

/// Whatever the driver does. In milliseconds.
constexpr std::int64_t kLongestClose = 1000;

/// Flow control holds the line: nothing is sent.
int Stuck() { return 5; }

/// A driver that accepts only 9600 bps.
void OnlyKnows9600(termios2& state) {
  state.c_ispeed = 9600;
  state.c_ospeed = 9600;
}

void KnowsNoParity(termios2& state) { state.c_cflag &= ~tcflag_t{PARENB | PARODD}; }

bool SameState(const termios2& a, const termios2& b) {
  return a.c_iflag == b.c_iflag && a.c_oflag == b.c_oflag && a.c_cflag == b.c_cflag &&
         a.c_lflag == b.c_lflag && a.c_ispeed == b.c_ispeed && a.c_ospeed == b.c_ospeed &&
         std::memcmp(a.c_cc, b.c_cc, sizeof a.c_cc) == 0;
}

class UartTest : public testing::Test {
 protected:
  [[nodiscard]] QString Node() const { return QString::fromStdString(m_far.NodePath()); }
  [[nodiscard]] OpenResult Open() const { return OpenTerminalDeviceAs(Node(), TerminalKind::Uart); }
  [[nodiscard]] std::shared_ptr<SerialLine> Line() const {
    const OpenResult opened = Open();
    EXPECT_TRUE(opened.line) << opened.failure.reason.toStdString();
    return opened.line;
  }
  /// Closes the line and returns the calls to the driver.
  Calls CallsOfClose(SerialLine& line) const {
    const std::size_t before = m_uart.Calls().size();
    EXPECT_TRUE(line.Close());
    const Calls calls = m_uart.Calls();
    return {calls.begin() + static_cast<std::ptrdiff_t>(before), calls.end()};
  }

  /// How long closing a new line takes, after `prepare`, unless the machine is late.
  std::int64_t MillisecondsOfClose(
      std::int64_t limit, Calls& calls,
      const std::function<void(SerialLine&)>& prepare = [](SerialLine&) {}) const {
    return MillisecondsWithin(limit, std::chrono::milliseconds(60), [&] {
      const auto line = Line();
      prepare(*line);
      return MillisecondsOf([&] { calls = CallsOfClose(*line); });
    });
  }

  device::PseudoTerminal m_far;
  FakeUart m_uart;
  const termios2 m_former = m_uart.State();
};

TEST_F(UartTest, ModemLinesAreSetAsAskedAndNoOthers) {
  const auto line = Line();
  const auto callsFor = [&](const ModemLines& lines) {
    const std::size_t before = m_uart.Calls().size();
    EXPECT_TRUE(line->SetModemLines(lines));
    const Calls calls = m_uart.Calls();
    return Calls(calls.begin() + static_cast<std::ptrdiff_t>(before), calls.end());
  };
  EXPECT_EQ(callsFor({}), Calls());
  EXPECT_EQ(callsFor({.dtr = true}), Calls{"DTR up"});
  EXPECT_EQ(callsFor({.rts = false}), Calls{"RTS down"});
  EXPECT_EQ(callsFor({.dtr = false, .rts = true}), (Calls{"DTR down", "RTS up"}));
}

TEST_F(UartTest, ADriverWithoutModemLinesIsNamedWithItsReason) {
  const auto line = Line();
  for (const int error : {ENOTTY, EINVAL, EIO}) {
    m_uart.failingModemLines = error;
    const LineFailure dtr = line->SetModemLines({.dtr = true}).Failure();
    EXPECT_EQ(dtr.kind, LineError::Refused);
    EXPECT_EQ(dtr.reason, Node() + QStringLiteral(": DTR cannot be set: ") + SystemText(error));
    const LineFailure rts = line->SetModemLines({.rts = true}).Failure();
    EXPECT_TRUE(rts.reason.contains(QStringLiteral(": RTS cannot be set: "))) << rts.reason.toStdString();
  }
}

TEST_F(UartTest, ModemLinesOfALineThatIsGoneOrClosedAreNoMatterOfTheDriver) {
  const auto gone = Line();
  m_uart.failing = [](int) { return EIO; };
  EXPECT_EQ(gone->SetModemLines({.dtr = true}).Failure().kind, LineError::Disconnected);
  m_uart.failing = [](int) { return 0; };
  gone->Close();
  EXPECT_EQ(gone->SetModemLines({.dtr = true}).Failure().kind, LineError::Disconnected);
  EXPECT_EQ(gone->SetModemLines({}).Failure().kind, LineError::Disconnected);
}

TEST_F(UartTest, OpenMarksTheLineAndCloseGivesEverythingBack) {
  const auto line = Line();
  EXPECT_EQ(m_uart.Calls(), (Calls{"set state", "flush", "mark", "latency low"}));
  EXPECT_EQ(m_uart.State().c_lflag & (ICANON | ECHO), 0U);
  EXPECT_EQ(CallsOfClose(*line), kGivenBack);
  EXPECT_TRUE(SameState(m_uart.State(), m_former));
  EXPECT_FALSE(m_uart.marked);
}

TEST_F(UartTest, ALineThatAnotherProgramHasMarkedIsInUse) {
  m_uart.marked = true;
  const OpenResult opened = Open();
  EXPECT_FALSE(opened.line);
  EXPECT_EQ(opened.failure.kind, LineError::InUse);
  EXPECT_EQ(m_uart.Calls(), Calls{}) << "the mark is the other program's, and so is the line's state";
}

TEST_F(UartTest, AProgramThatOpensTheDeviceMeanwhileHasIt) {
  std::unique_ptr<Holder> visitor;
  // After the check who uses it, and before the exclusive mark.
  m_uart.take = [&](termios2&) {
    if (visitor) return;
    visitor = std::make_unique<Holder>(Node(), QStringList{QStringLiteral("--plain")});
    EXPECT_EQ(visitor->Outcome(), QStringLiteral("open"));
  };
  const OpenResult opened = Open();
  ASSERT_TRUE(visitor);
  EXPECT_FALSE(opened.line);
  EXPECT_EQ(opened.failure.kind, LineError::InUse);
  EXPECT_EQ(opened.failure.reason, Node() + QStringLiteral(": ") + visitor->Use());
  EXPECT_TRUE(SameState(m_uart.State(), m_former));
  EXPECT_FALSE(m_uart.marked);
}

TEST_F(UartTest, AFailedOpenTakesTheMarkOffAgain) {
  m_uart.failingSetState = EIO;
  EXPECT_EQ(Open().failure.kind, LineError::Disconnected);
  EXPECT_FALSE(m_uart.marked);
  m_uart.failingSetState = 0;
  m_uart.failingMark = EIO;
  EXPECT_EQ(Open().failure.kind, LineError::Disconnected);
  EXPECT_TRUE(SameState(m_uart.State(), m_former)) << "the line is not as it was";
  m_uart.failingMark = 0;
  m_uart.noEventDescriptors = true;
  EXPECT_EQ(Open().failure.kind, LineError::Other);
  EXPECT_FALSE(m_uart.marked);
  m_uart.noEventDescriptors = false;
  EXPECT_TRUE(Open().line);
}

TEST_F(UartTest, ARefusedRateIsNamedTogetherWithTheOneOnOffer) {
  const auto line = Line();
  ASSERT_TRUE(line->SetState({.baudRate = 4800, .byteSize = 7, .parity = Parity::Even}));
  const termios2 earlier = m_uart.State();
  m_uart.take = [asked = 0](termios2& state) mutable {
    if (asked++ == 0) OnlyKnows9600(state);
  };
  const LineFailure failure = line->SetState({.baudRate = 128000}).Failure();
  EXPECT_EQ(failure.kind, LineError::Refused);
  EXPECT_EQ(failure.reason,
            Node() + QStringLiteral(": the driver does not take 128000 bps, 8 data bits, no parity, 1 stop "
                                    "bit; it offers 9600 bps, 8 data bits, no parity, 1 stop bit"));
  EXPECT_TRUE(SameState(m_uart.State(), earlier)) << "the line is no longer as it was";
}

TEST_F(UartTest, ARefusedParityIsNamed) {
  const auto line = Line();
  m_uart.take = KnowsNoParity;
  const LineFailure failure = line->SetState({.parity = Parity::Odd}).Failure();
  EXPECT_EQ(failure.kind, LineError::Refused);
  EXPECT_TRUE(failure.reason.contains(QStringLiteral("odd parity")));
  EXPECT_TRUE(failure.reason.endsWith(QStringLiteral("no parity, 1 stop bit")));
  EXPECT_TRUE(line->SetState({}));
}

TEST_F(UartTest, ADriverThatSaysNoAtOnceRefuses) {
  const auto line = Line();
  m_uart.failingSetState = EINVAL;
  const LineResult set = line->SetState({.baudRate = 256000});
  EXPECT_FALSE(set);
  EXPECT_EQ(set.Failure().kind, LineError::Refused);
}

TEST_F(UartTest, ALineThatHoldsNothingBackAlreadyStaysSo) {
  m_uart.lowLatency = true;
  const auto line = Line();
  EXPECT_FALSE(m_uart.WasCalled("latency low"));
  line->Close();
  EXPECT_TRUE(m_uart.lowLatency);
}

TEST_F(UartTest, ADriverWithoutLowLatencyOpensAllTheSame) {
  m_uart.knowsLatency = false;
  EXPECT_TRUE(Line()->Close());
  m_uart.knowsLatency = true;
  m_uart.takesLatency = false;
  const auto line = Line();
  // A flag that could not be set is not restored.
  EXPECT_EQ(CallsOfClose(*line), (Calls{"unmark", "set state", "flush input", "set state", "close"}));
}

TEST_F(UartTest, CloseDropsWhatDoesNotGoOutInTime) {
  constexpr std::int64_t kLongest = 300;
  m_uart.queued = Stuck;
  Calls calls;
  const std::int64_t taken = MillisecondsOfClose(kLongest, calls, [](SerialLine& line) {
    ASSERT_TRUE(line.SetTimeouts({.writeTotalMultiplier = 10, .writeTotalConstant = 50}));
  });
  EXPECT_EQ(calls.front(), "flush output");
  calls.erase(calls.begin());
  EXPECT_EQ(calls, kGivenBack);
  EXPECT_GE(taken, 100) << "the time that a write of the five bytes would have";
  EXPECT_LE(taken, kLongest) << "and not much more than that";
}

TEST_F(UartTest, CloseWaitsNoLongerThanASecondWhateverTheTimeouts) {
  m_uart.queued = Stuck;
  Calls calls;
  const std::int64_t forEver = MillisecondsOfClose(kLongestClose, calls);
  EXPECT_GE(forEver, 600);
  EXPECT_LE(forEver, kLongestClose);
  const std::int64_t patient = MillisecondsOfClose(kLongestClose, calls, [](SerialLine& line) {
    ASSERT_TRUE(line.SetTimeouts({.writeTotalConstant = 40'000}));
  });
  EXPECT_GE(patient, 600);
  EXPECT_LE(patient, kLongestClose);
  EXPECT_EQ(calls.front(), "flush output");
}

TEST_F(UartTest, CloseLetsQueuedBytesGoOut) {
  const auto line = Line();
  ASSERT_TRUE(line->SetTimeouts({.writeTotalConstant = 900}));
  int left = 4;
  m_uart.queued = [&left] { return left > 0 ? left-- : 0; };
  EXPECT_EQ(CallsOfClose(*line), kGivenBack);
  EXPECT_EQ(left, 0);
}

TEST_F(UartTest, CloseDoesNotWaitForADriverThatWaitsForTheLine) {
  m_uart.queued = Stuck;
  m_uart.holdsClose = true;
  Calls calls;
  EXPECT_LE(MillisecondsOfClose(kLongestClose, calls), kLongestClose);
  EXPECT_EQ(calls.back(), "interrupted") << "the driver was left to wait for half a minute";
  // Bytes in the chip are not counted as queued.
  m_uart.queued = [] { return 0; };
  EXPECT_LE(MillisecondsOfClose(kLongestClose, calls), kLongestClose);
  EXPECT_EQ(calls.back(), "interrupted");
}

TEST_F(UartTest, CloseDoesNotWaitForADriverThatNoSignalReaches) {
  std::promise<void> answered;
  m_uart.stuckUntil = answered.get_future().share();
  const auto line = Line();
  LineResult closed;
  EXPECT_LE(MillisecondsOf([&] { closed = line->Close(); }), 2 * kLongestClose);
  EXPECT_FALSE(closed) << "it is not closed yet";
  EXPECT_EQ(line->Purge().Failure().kind, LineError::Disconnected);
  answered.set_value();
  EXPECT_TRUE(Eventually([this] { return m_uart.WasCalled("closed"); }));
}

TEST_F(UartTest, CloseLeavesTheChipTheTimeForTheLastBytes) {
  const auto line = Line();
  ASSERT_TRUE(line->SetState({.baudRate = 300}));
  ASSERT_TRUE(line->SetTimeouts({.writeTotalConstant = 5000}));
  // Ten characters of twelve bits at most: 400 ms.
  const std::int64_t taken = MillisecondsOf([&] {
    EXPECT_EQ(line->Write("0123456789", 10).bytes, 10U);
    line->Close();
  });
  EXPECT_GE(taken, 400);
}

TEST_F(UartTest, CloseLeavesASlowChipNoLongerThanASecond) {
  Calls calls;
  const std::int64_t slow = MillisecondsOfClose(kLongestClose, calls, [this](SerialLine& line) {
    ASSERT_TRUE(line.SetState({.baudRate = 110}));
    ASSERT_TRUE(line.SetTimeouts({.writeTotalConstant = 5000}));
    const std::string bytes(1000, 'x');
    EXPECT_EQ(line.Write(bytes.data(), bytes.size()).bytes, bytes.size());
    // The next try finds room for as many.
    std::string got(bytes.size(), '\0');
    for (std::size_t count = 0; count < bytes.size();) {
      const ssize_t taken = ::read(m_far.Descriptor(), got.data(), got.size());
      ASSERT_GT(taken, 0);
      count += static_cast<std::size_t>(taken);
    }
  });
  EXPECT_GE(slow, 600);
  EXPECT_LE(slow, kLongestClose) << "109 s at this rate";
}

TEST_F(UartTest, ALineEchoesOnlyUntilItIsRawAndNotBeforeItIsClosed) {
  const auto line = Line();
  // Checks the mark, reads the state, sets the raw state.
  EXPECT_EQ(m_uart.CallsWhileEchoing(), 3);
  line->Close();
  EXPECT_EQ(m_uart.CallsWhileEchoing(), 3) << "something was asked of it while it echoed";
  EXPECT_TRUE(SameState(m_uart.State(), m_former));
  EXPECT_EQ(m_uart.Calls().back(), "close");
}

TEST_F(UartTest, ALineThatDidNotEchoIsGivenBackAtOnce) {
  termios2 silent = m_former;
  silent.c_lflag &= ~tcflag_t{ECHO};
  m_uart.Preset(silent);
  const auto line = Line();
  EXPECT_EQ(CallsOfClose(*line), (Calls{"latency normal", "unmark", "set state", "close"}));
  EXPECT_TRUE(SameState(m_uart.State(), silent));
}

TEST_F(UartTest, LettingGoOfTheLineGivesEverythingBackToo) {
  { ASSERT_TRUE(Line()); }
  EXPECT_FALSE(m_uart.marked);
  EXPECT_FALSE(m_uart.lowLatency);
  EXPECT_TRUE(SameState(m_uart.State(), m_former));
}

TEST_F(UartTest, APseudoTerminalIsLeftWithoutMarkAndFlags) {
  const OpenResult opened = OpenTerminalDeviceAs(Node(), TerminalKind::PseudoTerminal);
  ASSERT_TRUE(opened.line);
  // Nobody reads at the far end. Closing must not wait for that.
  m_uart.queued = Stuck;
  EXPECT_TRUE(opened.line->Close());
  EXPECT_EQ(m_uart.Calls(), (Calls{"set state", "set state", "close"}));
}

TEST_F(UartTest, OpenPortTellsOfARefusalAndKeepsTheLine) {
  Journal journal;
  test::RecordedMessages messages;
  test::CountedIndicator indicator;
  ScriptedOpener opener(journal);
  opener.open = [this](const QString& /*path*/) { return OpenTerminalDeviceAs(Node(), TerminalKind::Uart); };
  const PortEnvironment environment{opener, messages, indicator};
  SettingsRecord settings;
  settings.comPort = QStringLiteral("COM3");
  settings.comBps = QStringLiteral("128000");
  settings.comBits = QStringLiteral("8");
  settings.comStop = QStringLiteral("1");
  PortConnection connection;
  m_uart.take = OnlyKnows9600;

  EXPECT_FALSE(OpenPort(settings, connection, environment));
  EXPECT_EQ(messages.shown, QStringList{"plain/Failed to set serial port state"});
  ASSERT_TRUE(connection.handle.IsOpen());
  EXPECT_TRUE(m_uart.marked) << "the line stays open";
  EXPECT_EQ(connection.lastFailure.kind, LineError::Refused);
  EXPECT_TRUE(connection.lastFailure.reason.contains(QStringLiteral("128000 bps")));

  // The next reset, with a supported rate, closes the line and opens it again.
  settings.comBps = QStringLiteral("9600");
  connection.portNames = {settings.comPort};
  EXPECT_TRUE(ResetPort(settings, connection, environment));
  EXPECT_EQ(connection.lastFailure.kind, LineError::None);
}

TEST(GroupName, ReadsGroupsWithManyMembers) {
  const std::string name = GroupName(0);
  EXPECT_FALSE(name.empty());
  EXPECT_NE(name, "0");
  g_smallestGroupBuffer = 200'000;
  EXPECT_EQ(GroupName(0), name);
  // As for a group larger than any real one.
  g_smallestGroupBuffer = static_cast<std::size_t>(-1);
  EXPECT_EQ(GroupName(0), "0");
  g_smallestGroupBuffer = 0;
}

}  // namespace
}  // namespace quarn
