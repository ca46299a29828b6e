#pragma once

#include <QByteArray>
#include <QString>

namespace quarn::send {

/// Writes all bytes to standard output immediately. If that fails, returns false and prints the reason on
/// standard error.
bool Print(const QByteArray& bytes);

/// The last write: some systems report an error only when the file is closed. Nothing can be printed
/// afterwards. False as for Print.
bool EndOutput();

/// Prints one line on standard error. Text from a file, a device or the arguments cannot control the
/// terminal or begin a second line.
void Complain(const QString& text);

/// Passes warnings of Qt and of the program's other rooms to Complain; debug messages are dropped.
void ComplainOfWarnings();

}  // namespace quarn::send
