#include "serial/line_parameters.h"

#include "settings/setting_values.h"

namespace quarn {
namespace {

constexpr std::uint32_t kDefaultRate = values::k9600.number;

/// Above this rate the silence no longer follows the line speed.
constexpr std::uint32_t kFastLine = 38400;
constexpr std::uint32_t kSilenceDividend = 720000;  // ms x bits per second
constexpr std::uint32_t kFastLineSilenceMs = 10;
constexpr std::uint32_t kSilenceMarginNumerator = 6;  // 1.2
constexpr std::uint32_t kSilenceMarginDenominator = 5;
constexpr double kLowSpeedFactor = 1.5;
constexpr double kTotalMultiplierMs = 10.0;  // per byte
constexpr double kTotalConstantMs = 50.0;

std::uint32_t Truncate(double value) { return static_cast<std::uint32_t>(value); }

}  // namespace

std::uint32_t BaudRateOf(const QString& comBps) {
  const SettingValue* const found = FindValue(values::kBitRates, comBps);
  return found == nullptr ? kDefaultRate : static_cast<std::uint32_t>(found->number);
}

std::uint8_t ByteSizeOf(const QString& comBits) {
  const SettingValue* const found = FindValue(values::kDataBits, comBits);
  return static_cast<std::uint8_t>((found == nullptr ? values::k8DataBits : *found).number);
}

StopBits StopBitsOf(const QString& comStop) {
  if (comStop == values::k1And5StopBits.text) return StopBits::OnePointFive;
  if (comStop == values::k2StopBits.text) return StopBits::Two;
  return StopBits::One;
}

Parity ParityOf(const QString& comParity) {
  if (comParity == values::kOddParity.text) return Parity::Odd;
  if (comParity == values::kEvenParity.text) return Parity::Even;
  return Parity::None;
}

QString DescribeLineState(const LineState& state) {
  QString parity = QStringLiteral("no parity");
  if (state.parity == Parity::Odd) parity = QStringLiteral("odd parity");
  if (state.parity == Parity::Even) parity = QStringLiteral("even parity");
  QString stopBits = QStringLiteral("1 stop bit");
  if (state.stopBits == StopBits::OnePointFive) stopBits = QStringLiteral("1.5 stop bits");
  if (state.stopBits == StopBits::Two) stopBits = QStringLiteral("2 stop bits");
  return QStringLiteral("%1 bps, %2 data bits, %3, %4")
      .arg(state.baudRate)
      .arg(state.byteSize)
      .arg(parity, stopBits);
}

std::uint32_t NominalRateOf(const QString& comBps) {
  // A negative number counts as a very large one: the comparison with kFastLine is unsigned.
  const auto rate = static_cast<std::uint32_t>(ToInteger(comBps));
  return rate == 0 ? kDefaultRate : rate;
}

LineTimeouts TimeoutsOf(const QString& comBps, const QString& portSpeed) {
  const std::uint32_t rate = NominalRateOf(comBps);
  const std::uint32_t silence = rate > kFastLine ? kFastLineSilenceMs : kSilenceDividend / rate;
  // In whole numbers: 75 x 1.2 must be 90 on every processor.
  const std::uint32_t gap = silence * kSilenceMarginNumerator / kSilenceMarginDenominator;
  const double factor = portSpeed == values::kLowSpeed.text ? kLowSpeedFactor : 1.0;
  const std::uint32_t multiplier = Truncate(factor * kTotalMultiplierMs);
  const std::uint32_t constant = Truncate(factor * kTotalConstantMs);
  return {.readInterval = Truncate(gap * factor),
          .readTotalMultiplier = multiplier,
          .readTotalConstant = constant,
          .writeTotalMultiplier = multiplier,
          .writeTotalConstant = constant};
}

}  // namespace quarn
