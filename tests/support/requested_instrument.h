#pragma once

#include <QByteArray>
#include <QString>
#include <string>
#include <string_view>
#include <utility>

#include "support/line_requests.h"

namespace quarn::test {

/// A simulated instrument behind a port that another process serves for as long as this object lives: under
/// Wine quarn-line-server, on the kernel's own drivers tests/system/drivers/cases.py.
class RequestedInstrument {
 public:
  RequestedInstrument(std::string_view rules, QString node)
      : m_node(std::move(node)),
        m_request(QStringLiteral("COM3"), QByteArray(rules.data(), static_cast<qsizetype>(rules.size()))) {}

  /// The device to open.
  [[nodiscard]] const QString& NodePath() const { return m_node; }
  /// Every byte that has come over the wire.
  [[nodiscard]] std::string Received() const { return m_request.Contents("received").toStdString(); }
  /// How many answers have been sent to their last byte.
  [[nodiscard]] int Answers() const { return m_request.Contents("answers").toInt(); }

 private:
  const QString m_node;
  LineRequest m_request;
};

}  // namespace quarn::test
