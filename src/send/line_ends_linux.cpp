#include "send/line_ends.h"

namespace quarn::send {

void PassBytesAsTheyAre() {}

}  // namespace quarn::send
