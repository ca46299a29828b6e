#include "terminal/standard_streams.h"

namespace quarn {

/// Streams are no file numbers that others could get, and a pipe without a reader is an error like others.
void OccupyStandardStreams() {}

}  // namespace quarn
