#pragma once

namespace quarn::send {

/// From here to the program's end a console shows what is written on it in the system's encoding, whatever
/// encoding it has itself. Where these are one this does nothing.
void SpeakToConsoleInSystemEncoding();

}  // namespace quarn::send
