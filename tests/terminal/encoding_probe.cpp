// encoding_probe COMMAND...: runs each command, given in UTF-8, over a scripted line, and prints the sent
// bytes and the log in hexadecimal digits.

#include <cstdio>

#include "support/scripted_line.h"
#include "support/transaction_hosts.h"
#include "terminal/execute_command.h"

int main(int argc, char** argv) {
  using namespace quarn;
  Journal journal;
  for (int i = 1; i < argc; ++i) {
    auto line = std::make_shared<ScriptedLine>(journal);
    PortConnection connection;
    connection.handle = PortHandle(line);
    TransactionEngine engine(connection);
    OperationLog log;
    CommandLine commandLine;
    ScriptedHost host;
    ExecuteCommand({engine, SettingsRecord(), log, commandLine}, host, QString::fromUtf8(argv[i]));
    std::printf("%s %s %s\n", line->written.toHex().constData(), log.Line(0).toHex().constData(),
                log.RowText(0, QStringLiteral("OFF")).toUtf8().toHex().constData());
    std::printf("%s\n", log.RowText(1, QStringLiteral("OFF")).trimmed().toLatin1().constData());
  }
}
