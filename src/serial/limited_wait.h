#pragma once

#include <chrono>
#include <functional>
#include <optional>

#include "serial/serial_line.h"

namespace quarn {

/// Does the work in a thread of its own, and waits for it at most so long. Nothing is returned if it takes
/// longer: the thread then goes on alone, so the work must own all that it uses. Where the system has no
/// thread or memory for this, the work is done here and may take its time.
std::optional<LineResult> DoWithin(std::chrono::milliseconds longest,
                                   const std::function<LineResult()>& work);

}  // namespace quarn
