#include "serial/termios_state_linux.h"

#include <cstdlib>

namespace quarn {
namespace {

constexpr tcflag_t kInputMapping =
    IGNBRK | BRKINT | IGNPAR | PARMRK | INPCK | ISTRIP | INLCR | IGNCR | ICRNL | IUCLC | IXON | IXOFF | IXANY;
constexpr tcflag_t kLocalModes = ISIG | ICANON | ECHO | ECHOE | ECHOK | ECHONL | ECHOCTL | ECHOKE | IEXTEN;
constexpr std::uint8_t kFewestDataBits = 5;
constexpr std::uint8_t kMostDataBits = 8;
constexpr tcflag_t kInputRateShift = IBSHIFT;

tcflag_t SizeFlag(std::uint8_t byteSize) {
  switch (byteSize) {
    case kFewestDataBits:
      return CS5;
    case 6:
      return CS6;
    case 7:
      return CS7;
    default:
      return CS8;
  }
}

bool StopBitsFit(StopBits stopBits, std::uint8_t byteSize) {
  // With five data bits a UART sends one and a half stop bits for "two".
  if (stopBits == StopBits::OnePointFive) return byteSize == kFewestDataBits;
  if (stopBits == StopBits::Two) return byteSize != kFewestDataBits;
  return true;
}

}  // namespace

void MakeRaw(termios2& state) {
  state.c_iflag &= ~kInputMapping;
  state.c_oflag &= ~tcflag_t{OPOST};
  state.c_lflag &= ~kLocalModes;
  state.c_cflag |= CREAD | CLOCAL;
  state.c_cc[VMIN] = 1;
  state.c_cc[VTIME] = 0;
}

bool MakeQuiet(termios2& state) {
  constexpr tcflag_t kEcho = ECHO | ECHONL;
  const bool echoed = (state.c_lflag & kEcho) != 0;
  state.c_lflag &= ~kEcho;
  return echoed;
}

bool ApplyLineState(const LineState& wanted, termios2& state) {
  if (wanted.byteSize < kFewestDataBits || wanted.byteSize > kMostDataBits) return false;
  if (!StopBitsFit(wanted.stopBits, wanted.byteSize)) return false;
  state.c_cflag &= ~tcflag_t{CSIZE | CSTOPB | PARENB | PARODD | CMSPAR | CBAUD | (CBAUD << kInputRateShift)};
  state.c_cflag |= SizeFlag(wanted.byteSize);
  state.c_cflag |= BOTHER | (BOTHER << kInputRateShift);
  if (wanted.stopBits != StopBits::One) state.c_cflag |= CSTOPB;
  if (wanted.parity != Parity::None) state.c_cflag |= PARENB;
  if (wanted.parity == Parity::Odd) state.c_cflag |= PARODD;
  state.c_ispeed = wanted.baudRate;
  state.c_ospeed = wanted.baudRate;
  return true;
}

LineState LineStateOf(const termios2& state) {
  LineState result;
  result.baudRate = state.c_ospeed;
  switch (state.c_cflag & CSIZE) {
    case CS5:
      result.byteSize = kFewestDataBits;
      break;
    case CS6:
      result.byteSize = 6;
      break;
    case CS7:
      result.byteSize = 7;
      break;
    default:
      result.byteSize = kMostDataBits;
      break;
  }
  if ((state.c_cflag & CSTOPB) != 0) {
    result.stopBits = result.byteSize == kFewestDataBits ? StopBits::OnePointFive : StopBits::Two;
  }
  if ((state.c_cflag & PARENB) != 0) {
    result.parity = (state.c_cflag & PARODD) != 0 ? Parity::Odd : Parity::Even;
  }
  return result;
}

bool WasTaken(const LineState& wanted, const LineState& reported, bool pseudoTerminal) {
  constexpr std::int64_t kRateTolerance = 50;  // one part in 50
  const auto distance = std::abs(std::int64_t{wanted.baudRate} - std::int64_t{reported.baudRate});
  if (distance * kRateTolerance > std::int64_t{wanted.baudRate}) return false;
  if (pseudoTerminal) return true;
  return wanted.byteSize == reported.byteSize && wanted.parity == reported.parity &&
         wanted.stopBits == reported.stopBits;
}

}  // namespace quarn
