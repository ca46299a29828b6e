#pragma once

namespace quarn {

/// A standard stream that was closed when the program started is not the next file's: what goes there would
/// reach a settings file or the line. It is taken by nothing, and writing to it fails as it does to a closed
/// one. So does writing to a pipe that nobody reads any more, instead of ending the program. Before anything
/// is opened.
void OccupyStandardStreams();

}  // namespace quarn
