#include "terminal/execute_command.h"

#include "terminal/log_text.h"
#include "terminal/render.h"
#include "terminal/system_encoding.h"

namespace quarn {
namespace {

TransactionOutcome Transact(const ExecuteContext& context, const SettingsRecord& settings,
                            TransactionHost& host, const QString& command) {
  const std::optional<QByteArray> bytes = ToSystemEncoding(command);
  if (!bytes) return {.result = TransactionResult::NotSendable};
  return context.engine.RunTransaction(settings, host, *bytes);
}

}  // namespace

TransactionOutcome ExecuteCommand(const ExecuteContext& context, TransactionHost& host,
                                  const QString& command) {
  context.commandLine.SetLastCommand(command);
  if (!context.log.BeginTransaction()) return {.result = TransactionResult::LogFull};
  // The settings may change while windows paint during the wait. A transaction uses one set of them.
  const SettingsRecord settings = context.settings;
  TransactionOutcome outcome = Transact(context, settings, host, command);
  if (outcome.result == TransactionResult::AlreadyRunning) context.engine.EndWorker(host);
  context.log.AppendLogText(LogTextOf(outcome, RenderCommandForLog(command), settings));
  return outcome;
}

}  // namespace quarn
