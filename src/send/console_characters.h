#pragma once

namespace quarn::send {

/// Until the program ends, consoles show output in the system's encoding, whatever encoding they have. Does
/// nothing if both are the same.
void SpeakToConsoleInSystemEncoding();

}  // namespace quarn::send
