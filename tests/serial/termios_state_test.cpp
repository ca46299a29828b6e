#include "serial/termios_state_linux.h"

#include <tuple>

#include "serial/line_test_support.h"

namespace quarn {
namespace {

/// A line in the state of a login: echo, signals, mapped line ends, and everything else that changes bytes.
termios2 CookedState() {
  termios2 state{};
  state.c_iflag = BRKINT | ICRNL | IXON | IXANY | IUCLC | ISTRIP | INPCK | PARMRK;
  state.c_oflag = OPOST | ONLCR;
  state.c_cflag = B9600 | CS7 | PARENB | CSTOPB | CRTSCTS | HUPCL;
  state.c_lflag = ISIG | ICANON | ECHO | ECHOE | IEXTEN | TOSTOP;
  state.c_cc[VMIN] = 0;
  state.c_cc[VTIME] = 7;
  state.c_ispeed = 9600;
  state.c_ospeed = 9600;
  return state;
}

TEST(TermiosState, RawLetsEveryByteThrough) {
  termios2 state = CookedState();
  MakeRaw(state);
  EXPECT_EQ(state.c_iflag, 0U);
  EXPECT_EQ(state.c_oflag & OPOST, 0U);
  EXPECT_EQ(state.c_lflag & (ISIG | ICANON | ECHO | ECHOE | IEXTEN), 0U);
  EXPECT_EQ(state.c_cflag & (CREAD | CLOCAL), tcflag_t{CREAD | CLOCAL});
  EXPECT_EQ(state.c_cc[VMIN], 1);
  EXPECT_EQ(state.c_cc[VTIME], 0);
}

TEST(TermiosState, RawLeavesTheLineParametersAndTheFlowControlAlone) {
  termios2 state = CookedState();
  MakeRaw(state);
  constexpr tcflag_t kKept = CBAUD | CSIZE | PARENB | CSTOPB | CRTSCTS | HUPCL;
  EXPECT_EQ(state.c_cflag & kKept, CookedState().c_cflag & kKept);
  EXPECT_EQ(state.c_ospeed, 9600U);
  EXPECT_EQ(state.c_lflag & TOSTOP, tcflag_t{TOSTOP});
}

using Combination = std::tuple<int, StopBits, Parity>;

class EveryCombination : public testing::TestWithParam<Combination> {};

TEST_P(EveryCombination, ComesBackAsItWasPutIn) {
  const auto [dataBits, stopBits, parity] = GetParam();
  const bool exists = stopBits == StopBits::One || (stopBits == StopBits::OnePointFive) == (dataBits == 5);
  const LineState wanted{.baudRate = 14400,
                         .byteSize = static_cast<std::uint8_t>(dataBits),
                         .stopBits = stopBits,
                         .parity = parity};
  termios2 state = CookedState();
  ASSERT_EQ(ApplyLineState(wanted, state), exists);
  if (exists) {
    EXPECT_EQ(LineStateOf(state), wanted);
    EXPECT_EQ(state.c_cflag & CRTSCTS, CRTSCTS);
    return;
  }
  const termios2 untouched = CookedState();
  EXPECT_EQ(state.c_cflag, untouched.c_cflag);
  EXPECT_EQ(state.c_ispeed, untouched.c_ispeed);
  EXPECT_EQ(state.c_ospeed, untouched.c_ospeed);
}

INSTANTIATE_TEST_SUITE_P(TermiosState, EveryCombination,
                         testing::Combine(testing::Values(5, 6, 7, 8),
                                          testing::Values(StopBits::One, StopBits::OnePointFive,
                                                          StopBits::Two),
                                          testing::Values(Parity::None, Parity::Odd, Parity::Even)));

TEST(TermiosState, NoUartHasFewerThanFiveOrMoreThanEightDataBits) {
  termios2 state = CookedState();
  EXPECT_FALSE(ApplyLineState({.byteSize = 4}, state));
  EXPECT_FALSE(ApplyLineState({.byteSize = 9}, state));
  EXPECT_FALSE(ApplyLineState({.byteSize = 0}, state));
}

TEST(TermiosState, AnyRateIsAskedForByItsNumberInBothDirections) {
  for (const std::uint32_t rate : {110U, 14400U, 56000U, 128000U, 256000U}) {
    termios2 state = CookedState();
    ASSERT_TRUE(ApplyLineState({.baudRate = rate}, state));
    EXPECT_EQ(state.c_cflag & CBAUD, tcflag_t{BOTHER});
    EXPECT_EQ(state.c_cflag & CIBAUD, tcflag_t{BOTHER} << IBSHIFT);
    EXPECT_EQ(state.c_ispeed, rate);
    EXPECT_EQ(state.c_ospeed, rate);
  }
}

TEST(TermiosState, FormerParityDoesNotShineThrough) {
  termios2 state = CookedState();
  state.c_cflag |= PARODD | CMSPAR;
  ASSERT_TRUE(ApplyLineState({.parity = Parity::Even}, state));
  EXPECT_EQ(state.c_cflag & (PARENB | PARODD | CMSPAR), tcflag_t{PARENB});
}

TEST(TermiosState, ARateWithinTwoPerCentCountsAsTaken) {
  const LineState wanted{.baudRate = 10000};
  const auto taken = [&](std::uint32_t rate) { return WasTaken(wanted, {.baudRate = rate}, false); };
  EXPECT_TRUE(taken(10000));
  EXPECT_TRUE(taken(9800));
  EXPECT_TRUE(taken(10200));
  EXPECT_FALSE(taken(9799));
  EXPECT_FALSE(taken(10201));
  EXPECT_FALSE(taken(0));
}

TEST(TermiosState, ADifferenceInAnyParameterIsARefusal) {
  const LineState wanted{.byteSize = 7, .stopBits = StopBits::One, .parity = Parity::Odd};
  EXPECT_TRUE(WasTaken(wanted, wanted, false));
  for (LineState other : {LineState{.byteSize = 8, .parity = Parity::Odd},
                          LineState{.byteSize = 7, .stopBits = StopBits::Two, .parity = Parity::Odd},
                          LineState{.byteSize = 7, .parity = Parity::Even}}) {
    EXPECT_FALSE(WasTaken(wanted, other, false));
    // A pseudo-terminal reports eight data bits without parity whatever was asked for.
    EXPECT_TRUE(WasTaken(wanted, other, true));
  }
}

TEST(TermiosState, ThePseudoTerminalsExemptionLeavesTheRateOut) {
  EXPECT_FALSE(WasTaken({.baudRate = 9600}, {.baudRate = 19200}, true));
}

}  // namespace
}  // namespace quarn
