#include "send/console_characters.h"

namespace quarn::send {

void SpeakToConsoleInSystemEncoding() {}

}  // namespace quarn::send
