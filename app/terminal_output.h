#pragma once

#include <QString>

namespace quarn {

/// Writes the text where whoever started the program sees it: on standard output. False when that fails.
bool WriteOnTerminal(const QString& text);

}  // namespace quarn
