#include "terminal/standard_streams.h"

namespace quarn {

/// On Windows a closed stream's number is not reused by files, and a pipe without a reader is an ordinary
/// error.
void OccupyStandardStreams() {}

}  // namespace quarn
