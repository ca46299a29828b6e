#pragma once

#include <QByteArray>
#include <QString>
#include <optional>
#include <vector>

/// What quarn-send asks of the system: one file per system implements this.
namespace quarn::send {

/// One argument of the program.
struct Argument {
  /// As a name. nullopt if it is not valid in the encoding of file names.
  std::optional<QString> text;
  /// As a command: the bytes to send. nullopt if one of its characters is not in the system's 8-bit encoding.
  std::optional<QByteArray> bytes;
};
using Arguments = std::vector<Argument>;

/// The arguments of the process, without the program's name.
Arguments ArgumentsOf(int argc, char** argv);

/// Until the program ends, consoles show output in the system's encoding, whatever encoding they have. Does
/// nothing if both are the same.
void SpeakToConsoleInSystemEncoding();

/// From now on standard output passes every byte unchanged: no line end is translated. Does nothing on
/// systems that never translate.
void PassBytesAsTheyAre();
/// The same for standard input, which also does not end at a byte 1A.
void TakeBytesAsTheyAre();

}  // namespace quarn::send
