#include "send/sender.h"

#include "send/commands.h"
#include "send/connect.h"
#include "send/failure_text.h"
#include "send/interruption.h"
#include "send/listen.h"
#include "send/platform.h"
#include "send/port_listing.h"
#include "send/report.h"
#include "send/runner.h"
#include "send/settings_choice.h"
#include "send/standard_output.h"
#include "serial/open_port.h"
#include "settings/data_folder.h"
#include "terminal/framing.h"

namespace quarn::send {
namespace {

/// Refuses all commands if one of them could be sent only in part: a part could be a different command.
bool AllCanBeSent(const QByteArrayList& commands, const QString& delimiter) {
  for (const QByteArray& command : commands) {
    switch (TransmissionOf(delimiter, command)) {
      case Transmission::Whole:
        continue;
      case Transmission::CutShort:
        Complain(QStringLiteral("%1 holds the byte that ends a command, and would be cut off behind it")
                     .arg(Quoted(command)));
        return false;
      case Transmission::Nothing:
        Complain(QStringLiteral("%1 is too long: with its framing a command has at most 1023 bytes")
                     .arg(Quoted(command)));
        return false;
    }
  }
  return true;
}

/// First the commands, then what comes unasked. Returns the exit status.
int Work(const Options& options, const QByteArrayList& commands, const SettingsRecord& settings,
         const PortConnection& connection) {
  const ReportWriter writer(options, settings);
  if (const QByteArray heading = writer.Heading(); !heading.isEmpty() && !Print(heading)) return kNotPrinted;
  int status = 0;
  if (!commands.isEmpty()) {
    // A read left behind ends with its runner.
    Runner runner(options, settings, connection);
    status = runner.Run(commands);
    if (!options.listen || !runner.MayGoOn()) return status;
  }
  const int listened = options.listen ? Listen(options, settings, *connection.handle.Line()) : status;
  return listened == 0 ? status : listened;
}

}  // namespace

int Send(const Options& options) {
  const QString dataFolder = DataFolder();
  if (options.list) {
    if (!dataFolder.isEmpty()) return PrintPorts(options, PortsFolder(dataFolder));
    Complain(WhyNoDataFolder());
    return kFailed;
  }
  SettingsRecord settings;
  PortConnection connection;
  if (!LoadChosenSettings(options, dataFolder, settings)) return kFailed;
  const Commands commands = CollectCommands(options, ReadCommandFile);
  if (!commands.failure.isEmpty()) {
    Complain(commands.failure);
    return kFailed;
  }
  if (!commands.error.isEmpty()) {
    Complain(commands.error);
    return kWrongUsage;
  }
  if (!AllCanBeSent(commands.list, settings.delimiter)) return kWrongUsage;
  // A number is a link there.
  if (dataFolder.isEmpty() && !settings.comPort.contains(u'/')) {
    Complain(WhyNoDataFolder());
    return kFailed;
  }
  NoticeInterruption();
  if (const int failed = Connect(options, settings, PortsFolder(dataFolder), connection); failed != 0) {
    return failed;
  }
  if (options.output == Output::Raw) PassBytesAsTheyAre();
  const int status = Work(options, commands.list, settings, connection);
  ClosePort(connection);
  return status;
}

}  // namespace quarn::send
