#pragma once

#include <QString>
#include <QStringList>
#include <QStringView>
#include <optional>

namespace quarn {

/// The file that a command line in one text names: the text after the quoted program path and one
/// separator, without its own quotes, if any.
QString FileOfCommandLine(QStringView commandLine);

/// Returns the name after checking its length.
QString WithinPathLimit(QString name);

/// The output of --help or --version, which need no window; empty without either.
QString AnswerOnTerminal(const QStringList& arguments);

/// Whether the program shows itself with the simulated instrument and settings of its own.
bool IsDemo(const QStringList& arguments);

/// As in start_options.h.
QString WrongOption(const QStringList& arguments);

/// Handles options that need no window, on the terminal, and returns the exit status; nullopt if a window
/// must be shown.
std::optional<int> AnswerAtOnce(const QStringList& arguments);

}  // namespace quarn
