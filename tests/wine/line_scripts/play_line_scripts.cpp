// Runs line scripts on a port whose instrument answers by the same file, and prints the results, one line per
// script. The results for a file must be the same on every system.
//
//   quarn-line-scripts FILE PORT PORTS-FOLDER [NAME...]
//
// FILE has the instrument's rules. The settings of a script are in a comment above its rule:
//
//   #! 9600 HIGH CR 1K respond     COM_BPS, PORT_SPEED, DELIMITER, COM_BUF; then one transaction
//   #! 9600 HIGH CR 1K timeout     the same with R_TIMEOUT=ON
//   #! 9600 HIGH CR 1K read 16 8191   the command, then one read of each size
//   "name" -> "an" 40 "swer"
//
// What is printed:
//
//   name|opened|0 7 6a09e667|123   result, bytes and their checksum, for each read or transaction; then
//                                  the milliseconds from before the command to the end of the last

#include <QCoreApplication>
#include <QCryptographicHash>
#include <QElapsedTimer>
#include <QFile>
#include <QStringList>
#include <array>
#include <cstdio>
#include <memory>
#include <optional>

#include "serial/open_port.h"
#include "serial/platform_serial.h"
#include "support/counted_indicator.h"
#include "support/recorded_messages.h"
#include "support/transaction_hosts.h"
#include "terminal/framing.h"
#include "terminal/transaction.h"

namespace quarn {
namespace {

struct LineScript {
  QString name;
  SettingsRecord settings;
  std::vector<std::size_t> reads;  ///< empty: a transaction
};

std::optional<LineScript> ParseScript(const QString& head, const QString& rule) {
  const QStringList words = head.split(u' ', Qt::SkipEmptyParts);
  const QStringList quoted = rule.split(u'"');
  if (words.size() < 5 || quoted.size() < 3) return std::nullopt;
  LineScript script;
  script.name = quoted.at(1);
  SettingsRecord& settings = script.settings;
  settings.comBps = words.at(0);
  settings.portSpeed = words.at(1);
  settings.delimiter = words.at(2);
  settings.comBuf = words.at(3);
  settings.comBits = QStringLiteral("8");
  settings.comParity = QStringLiteral("None");
  settings.comStop = QStringLiteral("1");
  settings.rTimeout = words.at(4) == u"timeout" ? QStringLiteral("ON") : QStringLiteral("OFF");
  for (const QString& size : words.mid(5)) script.reads.push_back(size.toUInt());
  const bool reads = words.at(4) == u"read";
  if (reads == script.reads.empty()) return std::nullopt;
  return script;
}

std::optional<std::vector<LineScript>> ParseScripts(const QString& text) {
  constexpr QLatin1String kHead("#! ");
  std::vector<LineScript> scripts;
  const QStringList lines = text.split(u'\n');
  for (qsizetype i = 0; i + 1 < lines.size(); ++i) {
    if (!lines.at(i).startsWith(kHead)) continue;
    const auto script = ParseScript(lines.at(i).sliced(kHead.size()), lines.at(i + 1));
    if (!script) {
      std::fprintf(stderr, "line %d is no script\n", static_cast<int>(i + 1));
      return std::nullopt;
    }
    scripts.push_back(*script);
  }
  return scripts;
}

QString Outcome(int result, const QByteArray& bytes) {
  const QByteArray sum = QCryptographicHash::hash(bytes, QCryptographicHash::Sha256).toHex().left(8);
  return QStringLiteral("%1 %2 %3").arg(result).arg(bytes.size()).arg(QString::fromLatin1(sum));
}

/// The outcome of each read: whether it succeeded, and its bytes.
QStringList Read(const LineScript& script, SerialLine& line) {
  QStringList outcomes;
  line.Purge();
  if (!SendFramed(line, FrameCommand(script.settings.delimiter, script.name.toLatin1())))
    return {QStringLiteral("unsent")};
  for (const std::size_t size : script.reads) {
    QByteArray bytes(static_cast<qsizetype>(size), '\0');
    const IoResult read = line.Read(bytes.data(), size);
    bytes.truncate(static_cast<qsizetype>(read.bytes));
    outcomes.append(Outcome(read.ok ? 0 : 1, bytes));
  }
  return outcomes;
}

QStringList Transact(const LineScript& script, const PortConnection& connection) {
  TransactionEngine engine(connection);
  ScriptedHost host;
  const TransactionOutcome outcome = engine.RunTransaction(script.settings, host, script.name.toLatin1());
  return {Outcome(static_cast<int>(outcome.result), outcome.response),
          QStringLiteral("count %1 raw %2 %3")
              .arg(outcome.byteCount)
              .arg(outcome.raw.size())
              .arg(outcome.lineFailed ? QStringLiteral("failed") : QStringLiteral("ended"))};
}

/// Reads until the line is silent: the rest of a response must not reach the next command.
void LetFallSilent(SerialLine& line) {
  std::array<char, 30> rest{};
  for (IoResult read = line.Read(rest.data(), rest.size()); read.ok && read.bytes > 0;) {
    read = line.Read(rest.data(), rest.size());
  }
}

void Play(const LineScript& script, const QString& port, SerialLineOpener& opener) {
  test::RecordedMessages messages;
  test::CountedIndicator indicator;
  PortConnection connection;
  SettingsRecord settings = script.settings;
  settings.comPort = port;
  const bool opened = OpenPort(settings, connection, {opener, messages, indicator});
  QStringList outcomes;
  qint64 end = 0;
  if (connection.handle.IsOpen()) {
    QElapsedTimer clock;
    clock.start();
    outcomes = script.reads.empty() ? Transact(script, connection) : Read(script, *connection.handle.Line());
    end = clock.elapsed();
    LetFallSilent(*connection.handle.Line());
  }
  ClosePort(connection);
  std::printf("%s|%s|%s|%lld\n", script.name.toUtf8().constData(), opened ? "opened" : "not opened",
              outcomes.join(QStringLiteral(", ")).toUtf8().constData(), static_cast<long long>(end));
  std::fflush(stdout);
}

}  // namespace
}  // namespace quarn

int main(int argc, char** argv) {
  const QCoreApplication application(argc, argv);
  const QStringList arguments = QCoreApplication::arguments();
  if (arguments.size() < 4) {
    std::fputs("usage: quarn-line-scripts FILE PORT PORTS-FOLDER [NAME...]\n", stderr);
    return EXIT_FAILURE;
  }
  QFile file(arguments.at(1));
  if (!file.open(QIODevice::ReadOnly | QIODevice::Text)) {
    std::fprintf(stderr, "%s cannot be read\n", qPrintable(file.fileName()));
    return EXIT_FAILURE;
  }
  const auto scripts = quarn::ParseScripts(QString::fromUtf8(file.readAll()));
  if (!scripts) return EXIT_FAILURE;
  const std::unique_ptr<quarn::SerialLineOpener> opener = quarn::CreateLineOpener(arguments.at(3));
  const QStringList names = arguments.mid(4);
  for (const quarn::LineScript& script : *scripts) {
    if (names.isEmpty() || names.contains(script.name)) quarn::Play(script, arguments.at(2), *opener);
  }
  return EXIT_SUCCESS;
}
