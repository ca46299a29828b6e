#pragma once

#include <QByteArray>
#include <QString>
#include <string>
#include <string_view>

#include "line_requests.h"
#include "serial/serial_line_win32.h"

namespace quarn::test {

/// A simulated instrument behind a COM port, served by quarn-line-server for as long as this object lives.
class ServedInstrument {
 public:
  explicit ServedInstrument(std::string_view rules)
      : m_request(QStringLiteral("COM3"), QByteArray(rules.data(), static_cast<qsizetype>(rules.size()))) {}

  /// The device to open.
  [[nodiscard]] QString NodePath() const { return m_request.Port(); }
  /// Every byte that has come over the wire.
  [[nodiscard]] std::string Received() const { return m_request.Contents("received").toStdString(); }
  /// How many answers have been sent to their last byte.
  [[nodiscard]] int Answers() const { return m_request.Contents("answers").toInt(); }

 private:
  LineRequest m_request;
};

/// Opens its port.
inline OpenResult OpenServedLine(const ServedInstrument& instrument) {
  return Win32LineOpener().Open(instrument.NodePath());
}

/// The time-outs for a line that a test reads from.
inline LineResult SetServedTimeouts(SerialLine& line, const LineTimeouts& timeouts) {
  return line.SetTimeouts(timeouts);
}

}  // namespace quarn::test
