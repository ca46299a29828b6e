#pragma once

#include <QString>
#include <QStringView>
#include <algorithm>
#include <array>
#include <limits>
#include <span>

namespace quarn {

// The values of the settings that have a fixed set of them, as the file spells them: each is spelled here and
// nowhere else. Defaults, decisions and dialogs use these.

inline constexpr QStringView kOn{u"ON", 2};
inline constexpr QStringView kOff{u"OFF", 3};
/// Exact and case-sensitive: anything else is off.
inline bool IsOn(const QString& value) { return value == kOn; }

/// COM_PORT, and the current port's name, when there is no port.
inline constexpr QStringView kNoPort{u"NONE", 4};
inline QString NoPort() { return kNoPort.toString(); }

/// A value, and the number that it stands for, if it stands for one.
struct SettingValue {
  QStringView text;
  int number = 0;
};

/// The value with exactly this text, or nullptr.
inline const SettingValue* FindValue(std::span<const SettingValue> values, QStringView text) {
  const auto found = std::ranges::find(values, text, &SettingValue::text);
  return found == values.end() ? nullptr : &*found;
}

namespace values {

// DELIMITER.
inline constexpr SettingValue kCr{u"CR"};
inline constexpr SettingValue kLf{u"LF"};
inline constexpr SettingValue kCrLf{u"CRLF"};
inline constexpr SettingValue kStxEtx{u"STX_ETX"};
inline constexpr std::array kDelimiters{kCr, kLf, kCrLf, kStxEtx};

// COM_BUF: bytes.
inline constexpr SettingValue kBuffer1K{u"1K", 1024};
inline constexpr SettingValue kBuffer2K{u"2K", 2048};
inline constexpr SettingValue kBuffer6K{u"6K", 6144};
inline constexpr std::array kBufferSizes{kBuffer1K, kBuffer2K, kBuffer6K};

// COM_BPS: bits per second.
inline constexpr SettingValue k9600{u"9600", 9600};
inline constexpr std::array kBitRates{SettingValue{u"110", 110},
                                      SettingValue{u"300", 300},
                                      SettingValue{u"600", 600},
                                      SettingValue{u"1200", 1200},
                                      SettingValue{u"2400", 2400},
                                      SettingValue{u"4800", 4800},
                                      k9600,
                                      SettingValue{u"14400", 14400},
                                      SettingValue{u"19200", 19200},
                                      SettingValue{u"38400", 38400},
                                      SettingValue{u"56000", 56000},
                                      SettingValue{u"57600", 57600},
                                      SettingValue{u"115200", 115200},
                                      SettingValue{u"128000", 128000},
                                      SettingValue{u"256000", 256000}};

// COM_BITS.
inline constexpr SettingValue k8DataBits{u"8", 8};
inline constexpr std::array kDataBits{SettingValue{u"5", 5}, SettingValue{u"6", 6}, SettingValue{u"7", 7},
                                      k8DataBits};

// COM_PARITY.
inline constexpr SettingValue kOddParity{u"Odd"};
inline constexpr SettingValue kEvenParity{u"Even"};
inline constexpr SettingValue kNoParity{u"None"};
inline constexpr std::array kParities{kOddParity, kEvenParity, kNoParity};

// COM_STOP.
inline constexpr SettingValue k1StopBit{u"1"};
inline constexpr SettingValue k1And5StopBits{u"1.5"};
inline constexpr SettingValue k2StopBits{u"2"};
inline constexpr std::array kStopBits{k1StopBit, k1And5StopBits, k2StopBits};

// PORT_SPEED.
inline constexpr SettingValue kHighSpeed{u"HIGH"};
inline constexpr SettingValue kLowSpeed{u"LOW"};
inline constexpr std::array kSpeeds{kHighSpeed, kLowSpeed};

// INPUT_MAX: characters of a command, and of a line of a response in the log.
inline constexpr SettingValue kNarrow{u"N", 48};
inline constexpr SettingValue kMedium{u"M", 56};
inline constexpr SettingValue kWide{u"W", 64};

// BK_COLOR.
inline constexpr SettingValue kNavy{u"NAVY"};
inline constexpr SettingValue kBlack{u"BLACK"};
inline constexpr SettingValue kSystemColours{u"SYSTEM"};

// MAIN_POS.
inline constexpr SettingValue kTopLeft{u"TL"};
inline constexpr SettingValue kTopRight{u"TR"};

}  // namespace values

/// The integer at the start of a text, as the C runtime's _wtoi reads it: blanks (space, tab, line feed,
/// vertical tab, form feed, carriage return), an optional sign, then decimal digits up to the first other
/// character. 0 if there is no digit. A number out of range gives the nearest int.
constexpr int ToInteger(QStringView text) {
  qsizetype at = 0;
  const auto unit = [&] { return at < text.size() ? text[at].unicode() : char16_t{0}; };
  while (unit() == u' ' || (unit() >= u'\t' && unit() <= u'\r')) ++at;
  const bool negative = unit() == u'-';
  if (negative || unit() == u'+') ++at;
  // One more than the largest magnitude: the sum stops growing there, whatever the text's length.
  constexpr long long kBeyond = static_cast<long long>(std::numeric_limits<int>::max()) + 1;
  long long magnitude = 0;
  for (; unit() >= u'0' && unit() <= u'9'; ++at) {
    magnitude = magnitude * 10 + (unit() - u'0');
    if (magnitude > kBeyond) magnitude = kBeyond;
  }
  if (negative) return static_cast<int>(-magnitude);
  return magnitude == kBeyond ? std::numeric_limits<int>::max() : static_cast<int>(magnitude);
}

}  // namespace quarn
