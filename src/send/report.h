#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QString>
#include <chrono>

#include "send/send_options.h"
#include "settings/settings_record.h"
#include "terminal/transaction.h"

namespace quarn::send {

/// How a command ended. The numbers are exit statuses.
enum class Verdict : int {
  Received = 0,
  Timeout = 1,
  Empty = 2,
  Truncated = 3,
  Aborted = 4,
  LineFailed = 5,
  Unexpected = 6,  ///< a response came, but --expect does not match it
};

/// The verdict's name in results for machines: "received".
QString NameOf(Verdict verdict);

/// One transaction and its surroundings.
struct Report {
  QDateTime time{};  ///< UTC, when the command was sent
  QByteArray command{};
  TransactionOutcome outcome{};
  Verdict verdict = Verdict::Received;
  std::chrono::microseconds duration{};
  int attempts = 1;
};

/// The response as lines of ASCII, without framing and without the last line end; every other byte is spelled
/// out, so it cannot control a terminal. Empty unless bytes came that count as a response.
QByteArray ResponseText(const Report& report);

/// Puts reports into the form that the options choose. Lines end in LF.
class ReportWriter {
 public:
  /// Both must outlive the writer.
  ReportWriter(const Options& options, const SettingsRecord& settings)
      : m_options(options), m_settings(settings) {}

  /// What is printed before everything else: the names of the columns, or nothing.
  [[nodiscard]] QByteArray Heading() const;
  [[nodiscard]] QByteArray TextOf(const Report& report) const;
  /// Of what came without a command: in the log each line has the time of its first byte.
  [[nodiscard]] QByteArray ListenedTextOf(const Report& report) const;

 private:
  [[nodiscard]] QByteArray JsonOf(const Report& report) const;
  [[nodiscard]] QByteArray CsvOf(const Report& report) const;
  [[nodiscard]] QByteArray LogOf(const Report& report) const;

  const Options& m_options;
  const SettingsRecord& m_settings;
};

/// "2026-01-15T08:30:00.250Z".
QString TimeText(const QDateTime& time);

/// Values as one line of CSV, with its line end. A value is put into quotes when it has to be.
QByteArray CsvLine(const QByteArrayList& values);

}  // namespace quarn::send
