#pragma once

#include <QFont>

namespace quarn {

/// The log's font: Consolas where present, else the system's monospace face, at the largest size whose
/// line fits the rows' pitch and whose widest row fits the window.
QFont TerminalFont();

}  // namespace quarn
