#include "terminal/execute_command.h"

#include "terminal/log_text.h"
#include "terminal/render.h"
#include "terminal/system_encoding.h"

namespace quarn {
namespace {

TransactionResult Transact(const ExecuteContext& context, const SettingsRecord& settings,
                           TransactionHost& host, const QString& command) {
  const std::optional<QByteArray> bytes = ToSystemEncoding(command);
  if (!bytes) return TransactionResult::NotSendable;
  if (!context.engine.IsBusy()) context.connection.command = *bytes;
  return context.engine.RunTransaction(settings, host);
}

}  // namespace

TransactionResult ExecuteCommand(const ExecuteContext& context, TransactionHost& host,
                                 const QString& command) {
  context.commandLine.SetLastCommand(command);
  if (!context.log.BeginTransaction()) return TransactionResult::LogFull;
  // The record may change while the wait lets windows paint; one transaction has one set of settings.
  const SettingsRecord settings = context.settings;
  const TransactionResult result = Transact(context, settings, host, command);
  if (result == TransactionResult::AlreadyRunning) context.engine.EndWorker(host);
  context.log.AppendLogText(LogTextOf(result, RenderCommandForLog(command), context.connection, settings));
  return result;
}

}  // namespace quarn
