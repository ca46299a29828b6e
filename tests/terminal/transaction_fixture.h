#pragma once

#include <memory>
#include <optional>
#include <string>

#include "serial/line_parameters.h"
#include "serial/line_test_support.h"
#include "serial/open_port.h"
#include "support/served_instrument.h"
#include "support/transaction_hosts.h"

namespace quarn {

using test::ServedInstrument;
using test::SetServedTimeouts;

/// With these settings a response ends after 180 ms of silence, and only silence or ESC ends the wait. So no
/// test depends on the speed of the computer.
inline SettingsRecord PatientSettings() {
  SettingsRecord settings;
  settings.delimiter = QStringLiteral("CR");
  settings.comBps = QStringLiteral("4800");
  settings.comBuf = QStringLiteral("1K");
  settings.portSpeed = QStringLiteral("HIGH");
  settings.rTimeout = QStringLiteral("OFF");
  settings.inputMax = QStringLiteral("N");
  return settings;
}

/// Transactions over a real pseudo-terminal with a simulated instrument at its far end.
class TransactionTest : public testing::Test {
 protected:
  /// Before what a test scripted for the line goes.
  void TearDown() override { m_engine.reset(); }

  /// Sets the time-outs of the settings on the line. Change the settings before.
  void Serve(const std::string& rules) {
    m_instrument.emplace(rules);
    const OpenResult opened = OpenServedLine(*m_instrument);
    ASSERT_TRUE(opened.line) << opened.failure.reason.toStdString();
    ASSERT_TRUE(SetServedTimeouts(*opened.line, TimeoutsOf(m_settings.comBps, m_settings.portSpeed)));
    m_connection.handle = PortHandle(opened.line);
  }

  /// A response ends after 1440 ms of silence. For one that comes in several pieces: a busy computer may put
  /// a pause between them. Call it before `Serve`.
  void BearLongPauses() { m_settings.comBps = QStringLiteral("600"); }

  /// The shortest response time-out there is: 50 polls.
  void SetShortestTimeout() {
    m_settings.comBps = QStringLiteral("115200");
    m_settings.comBuf = QStringLiteral("6K");
    m_settings.rTimeout = QStringLiteral("ON");
  }

  /// A read ends 180 ms after its last byte, or half a second after the call.
  static LineTimeouts ShortTotal() {
    return {.readInterval = 180,
            .readTotalMultiplier = 0,
            .readTotalConstant = 500,
            .writeTotalMultiplier = 10,
            .writeTotalConstant = 500};
  }

  TransactionResult Run(const char* command) {
    m_outcome = m_engine->RunTransaction(m_settings, m_host, command);
    return m_outcome.result;
  }
  [[nodiscard]] const QByteArray& Response() const { return m_outcome.response; }

  SettingsRecord m_settings = PatientSettings();
  std::optional<ServedInstrument> m_instrument;
  PortConnection m_connection;
  TransactionOutcome m_outcome;  ///< of the last Run
  ScriptedHost m_host;
  std::unique_ptr<TransactionEngine> m_engine = std::make_unique<TransactionEngine>(m_connection);
};

}  // namespace quarn
