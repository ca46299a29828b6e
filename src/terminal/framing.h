#pragma once

#include <QByteArray>
#include <QString>

#include "serial/serial_line.h"

namespace quarn {

struct FramedCommand {
  QByteArray bytes;
  char terminator;  ///< the byte that ends the transmission
};

/// The bytes to send for a command, by DELIMITER ("CR", "LF", "CRLF", "STX_ETX"; anything else as "CR").
/// `command` is in the system's 8-bit encoding already.
FramedCommand FrameCommand(const QString& delimiter, const QByteArray& command);

/// What of a command SendFramed would send.
enum class Transmission {
  Whole,
  CutShort,  ///< the command holds the terminator, and something behind it
  Nothing,   ///< more than 1023 bytes with its framing
};
Transmission TransmissionOf(const QString& delimiter, const QByteArray& command);

/// Sends the bytes from the start up to and including the first terminator: a command that itself holds
/// the terminator is cut after it. At most 1023 bytes go out; without a terminator among them nothing is
/// sent and the result is false.
bool SendFramed(SerialLine& line, const FramedCommand& framed);

/// Whether nothing is left of a response without its framing: no bytes at all, STX and ETX alone, or the
/// line feeds of CRLF alone. A bare line end is a response, an empty line.
bool HoldsOnlyFraming(const QString& delimiter, const QByteArray& response);

/// The response cleaned of its framing, by DELIMITER: every line end becomes one CR, every STX goes. All
/// occurrences count, not only those at the ends.
QByteArray NormaliseResponse(const QString& delimiter, QByteArray response);

}  // namespace quarn
