#pragma once

#include <chrono>
#include <functional>

#include "send/report.h"
#include "serial/serial_line.h"

namespace quarn::send {

/// What ends listening, and where its results go.
struct ListenHost {
  /// Whether to end now. Asked at least ten times a second.
  std::function<bool()> isOver;
  /// Takes what came between two silences. Returns false if it could not be printed.
  std::function<bool(const Report&)> take;
};

enum class ListenEnd { Over, LineFailed, NotPrinted };

/// Takes what arrives on the line, in pieces that end when nothing has come for `silence` or at 64 KiB. Bytes
/// of an unfinished piece are taken at the end. The line's time-outs are changed. A failed line's reason goes
/// into `failure`.
ListenEnd ListenTo(SerialLine& line, std::chrono::milliseconds silence, const QString& delimiter,
                   const ListenHost& host, LineFailure& failure);

/// Prints what arrives until it is interrupted or the time of the options is over. Returns the exit status.
int Listen(const Options& options, const SettingsRecord& settings, SerialLine& line);

}  // namespace quarn::send
