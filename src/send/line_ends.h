#pragma once

namespace quarn::send {

/// From here on standard output passes every byte on as it is: no line end is translated. Where the system
/// never does so this does nothing.
void PassBytesAsTheyAre();

}  // namespace quarn::send
