#include "terminal/execute_command.h"

#include "terminal/log_text.h"

namespace quarn {

TransactionResult ExecuteCommand(const ExecuteContext& context, TransactionHost& host,
                                 const QString& command) {
  context.commandLine.SetLastCommand(command);
  if (!context.log.BeginTransaction()) return TransactionResult::LogFull;
  if (!context.engine.IsBusy()) context.connection.command = command;
  // The record may change while the wait lets windows paint; one transaction has one set of settings.
  const SettingsRecord settings = context.settings;
  const TransactionResult result = context.engine.RunTransaction(settings, host);
  if (result == TransactionResult::AlreadyRunning) context.engine.EndWorker(host);
  context.log.AppendLogText(LogTextOf(result, command, context.connection, settings));
  return result;
}

}  // namespace quarn
