#pragma once

#include <QString>
#include <QStringList>
#include <QStringView>
#include <optional>

namespace quarn {

/// The configuration file that the program was asked to open at its start, or empty. `arguments` are the
/// process's own, the program first; where the system gives the command line as one text, that counts. A
/// name of 259 or more characters ends the program: it does not fit the 260 that a path may take with its
/// end.
QString ReadCommandLineFile(const QStringList& arguments);

/// What stands behind the quoted program path and one separator; without its own quotes, if it has them.
QString FileOfCommandLine(QStringView commandLine);

/// The name, after the check of its length.
QString WithinPathLimit(QString name);

/// The answer to --help or --version, which need no window; empty without either.
QString AnswerOnTerminal(const QStringList& arguments);

/// The word before the file that begins with "-" and is no option, neither of the program nor of Qt; empty
/// without one. A file whose name begins so is given with its folder.
QString WrongOption(const QStringList& arguments);

/// Answers what needs no window, on the terminal, and gives the exit status; nothing when there is a window
/// to show.
std::optional<int> AnswerAtOnce(const QStringList& arguments);

}  // namespace quarn
