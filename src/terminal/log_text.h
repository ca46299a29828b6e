#pragma once

#include <QByteArray>

#include "serial/port_connection.h"
#include "settings/settings_record.h"
#include "terminal/transaction.h"

namespace quarn {

/// The text that one transaction adds to the log: the command, already rendered, in square brackets, then the
/// response, rendered and wrapped, or an error line and an empty line. Lines end in CR; two or more CRs at
/// the end of a response are reduced to one. LogFull, when no command was sent, gives only a line end.
QByteArray LogTextOf(TransactionResult result, const QByteArray& command, const PortConnection& connection,
                     const SettingsRecord& settings);

}  // namespace quarn
