#pragma once

#include <QString>

namespace quarn {

enum class TerminalStream { Output, Error };

/// Writes the text to standard output or standard error, visible to the user who started the program. Returns
/// false if that fails; for standard output the reason is then printed on standard error.
bool WriteOnTerminal(const QString& text, TerminalStream stream);

}  // namespace quarn
