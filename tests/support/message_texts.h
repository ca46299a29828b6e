#pragma once

#include <QString>

namespace quarn::test {

// Messages that more than one group of tests waits for, as RecordedMessages writes them down.

inline const QString kFileNotFound =
    QStringLiteral("error/: Error//Config file not found./Click \"OK\" to quit loading.");
inline const QString kNotLoaded =
    QStringLiteral("error/: Error//Invalid file format./Could not load file contents.");
inline const QString kOpened = QStringLiteral("transient/QRN file was opened successfully.");
inline const QString kTooLong = QStringLiteral(
    "information/: Warning//The settings are too long and were not saved./Shorten the texts of the Function "
    "Key "
    "Table.");
inline const QString kUndefined =
    QStringLiteral("information/: Information//COM port is undefined./Sellect a COM port to connect.");

inline QString Connected(const char* port) {
  return QStringLiteral("transient/Successfully Connected to \"%1\".").arg(QLatin1String(port));
}
inline QString NotAvailable(const char* port) {
  return QStringLiteral("error/: Error//  \"%1\" is not available./Check \"Detailed COM Port List\".")
      .arg(QLatin1String(port));
}

}  // namespace quarn::test
