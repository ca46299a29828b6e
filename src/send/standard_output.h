#pragma once

#include <QByteArray>
#include <QString>

namespace quarn::send {

/// Writes the bytes on standard output, all of them and now. False, and told on standard error, when that
/// fails.
bool Print(const QByteArray& bytes);

/// The last write: some systems find out only when the file is closed. Nothing can be printed afterwards.
/// False as for Print.
bool EndOutput();

/// One line on standard error. Whatever the text brings along, from a file, a device or the command line, it
/// steers no terminal and begins no second line.
void Complain(const QString& text);

/// Qt's own warnings, and those of the program's other rooms, go through Complain; notes for developers are
/// dropped.
void ComplainOfWarnings();

}  // namespace quarn::send
