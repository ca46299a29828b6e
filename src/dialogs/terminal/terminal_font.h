#pragma once

#include <QFont>

namespace quarn {

/// The log's font: Consolas if present, otherwise the system's monospace font, at the largest size whose line
/// fits the row height and whose widest row fits the window.
QFont TerminalFont();

}  // namespace quarn
