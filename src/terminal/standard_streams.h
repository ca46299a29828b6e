#pragma once

namespace quarn {

/// Opens a null device for each standard stream that was closed at the start. Otherwise the next file opened
/// would take its place, and output would reach a settings file or the line. Writing to such a stream fails,
/// as for a closed one. Writing to a pipe without a reader also fails, instead of ending the program. Call
/// before anything is opened. Does nothing on Windows, where this cannot happen.
void OccupyStandardStreams();

}  // namespace quarn
