#pragma once

#include <QString>

#include "terminal/command_line.h"
#include "terminal/operation_log.h"
#include "terminal/transaction.h"

namespace quarn {

/// The objects that a command uses.
struct ExecuteContext {
  TransactionEngine& engine;
  const SettingsRecord& settings;
  OperationLog& log;
  CommandLine& commandLine;
};

/// Runs one transaction and writes its outcome into the log. With a full log nothing is sent and the log
/// stays as it is: the result is LogFull, which the caller reports. A command with a character that the
/// system's 8-bit encoding lacks is not sent either: NotSendable, and the log says so. User-interface thread.
TransactionOutcome ExecuteCommand(const ExecuteContext& context, TransactionHost& host,
                                  const QString& command);

}  // namespace quarn
