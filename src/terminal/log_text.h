#pragma once

#include <QByteArray>

#include "settings/settings_record.h"
#include "terminal/transaction.h"

namespace quarn {

/// The text that one transaction adds to the log: the command in square brackets, as it was rendered before,
/// then the response, rendered and wrapped, or an error line and an empty line. Lines end in CR; two or more
/// CRs at the end of a response are cut to one. LogFull, where no command was sent, gives a bare line end.
QByteArray LogTextOf(const TransactionOutcome& outcome, const QByteArray& command,
                     const SettingsRecord& settings);

}  // namespace quarn
