#include "send/standard_output.h"

namespace quarn::send {

void PassBytesAsTheyAre() {}

}  // namespace quarn::send
