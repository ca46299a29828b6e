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
/// `command` is already in the system's 8-bit encoding.
FramedCommand FrameCommand(const QString& delimiter, const QByteArray& command);

/// Which part of a command SendFramed would send.
enum class Transmission {
  Whole,
  CutShort,  ///< the command contains the terminator, and bytes after it
  Nothing,   ///< more than 1023 bytes with framing
};
Transmission TransmissionOf(const QString& delimiter, const QByteArray& command);

/// Sends the bytes from the start up to and including the first terminator: a command that contains the
/// terminator is cut after it. At most 1023 bytes are sent; if there is no terminator among them, nothing is
/// sent and the result is false.
bool SendFramed(SerialLine& line, const FramedCommand& framed);

/// Whether a response is empty without its framing: no bytes at all, only STX and ETX, or only the line feeds
/// of CRLF. A bare line end is a response, an empty line.
bool HoldsOnlyFraming(const QString& delimiter, const QByteArray& response);

/// The response without its framing, by DELIMITER: every line end becomes one CR, every STX is removed. This
/// applies to all occurrences, not only those at the ends.
QByteArray NormaliseResponse(const QString& delimiter, QByteArray response);

}  // namespace quarn
