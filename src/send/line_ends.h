#pragma once

namespace quarn::send {

/// From now on standard output passes every byte unchanged: no line end is translated. Does nothing on
/// systems that never translate.
void PassBytesAsTheyAre();

}  // namespace quarn::send
