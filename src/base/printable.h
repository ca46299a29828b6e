#pragma once

#include <QString>

namespace quarn {

/// The text as a terminal and a label show it, on one line and in its order: control characters and those
/// that turn the direction of text are replaced by question marks.
QString Printable(QString text);

}  // namespace quarn
