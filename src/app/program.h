#pragma once

#include <QRect>
#include <QString>
#include <memory>

#include "base/message_operations.h"
#include "base/wait_indicator.h"
#include "dialogs/dialog_context.h"
#include "dialogs/shared_state.h"
#include "serial/open_port.h"
#include "serial/port_connection.h"
#include "serial/port_source.h"
#include "settings/settings_record.h"
#include "terminal/command_line.h"
#include "terminal/operation_log.h"
#include "terminal/transaction.h"

namespace quarn {

/// All objects that live as long as the process; one instance. It is passed to the code that needs it; there
/// is no global access.
struct Program {
  Program(QString folder, std::unique_ptr<SerialLineOpener> lineOpener, std::unique_ptr<PortSource> source,
          std::unique_ptr<MessageOperations> messageOperations, std::unique_ptr<WaitIndicator> indicator);

  [[nodiscard]] PortEnvironment Environment() const { return {*opener, *messages, *waitIndicator}; }
  /// What dialogs work on.
  [[nodiscard]] DialogContext Context(Pause pause);

  const QString dataFolder;  ///< ends with a separator
  const QString workingSettingsFile;
  /// The open configuration file of the user; empty in the internal configuration state.
  QString userFile;
  bool fileLoaded = false;  ///< a user file has been loaded by Open or by a drop

  SettingsRecord settings;
  PortConnection connection;
  SharedState state;
  OperationLog log;
  CommandLine commandLine;
  QRect savedTerminalRect;
  QRect savedFunctionTableRect;

  const std::unique_ptr<SerialLineOpener> opener;
  const std::unique_ptr<PortSource> portSource;
  const std::unique_ptr<MessageOperations> messages;
  const std::unique_ptr<WaitIndicator> waitIndicator;
  TransactionEngine engine;  ///< last, because its worker must end before anything that it uses
};

}  // namespace quarn
