#pragma once

#include <QString>
#include <cstdint>

#include "serial/serial_line.h"

namespace quarn {

// Converts settings text to line parameters. Text is compared exactly and case-sensitively; unknown text
// gives the stated default.

/// COM_BPS to bits per second; unknown text gives 9600.
std::uint32_t BaudRateOf(const QString& comBps);
/// COM_BITS to data bits: "5", "6", "7"; everything else gives 8.
std::uint8_t ByteSizeOf(const QString& comBits);
/// COM_STOP to stop bits: "1.5", "2"; everything else gives one.
StopBits StopBitsOf(const QString& comStop);
/// COM_PARITY to parity: "Odd", "Even"; everything else, "None" included, gives none.
Parity ParityOf(const QString& comParity);

/// Display text: "9600 bps, 8 data bits, no parity, 1 stop bit".
QString DescribeLineState(const LineState& state);

/// The number from which the time-outs are computed: the integer value of the COM_BPS text, whether or not
/// the line supports it. A value of 0 (no number) counts as 9600.
std::uint32_t NominalRateOf(const QString& comBps);

/// The five time-outs for a line speed. `portSpeed` "LOW" multiplies each by 1.5.
///
/// The silence that ends a response is 1.2 x 720000 / rate ms up to 38400 bps, which is the time of
/// about 86 characters of ten bits, and 12 ms on faster lines, where an operating system's own delays
/// are longer than a character.
LineTimeouts TimeoutsOf(const QString& comBps, const QString& portSpeed);

}  // namespace quarn
