#pragma once

#include <QByteArray>
#include <QString>
#include <optional>
#include <vector>

namespace quarn::send {

/// One word of the command line.
struct Argument {
  /// As a name. Nothing when it is no text in the encoding of file names.
  std::optional<QString> text;
  /// As a command: the bytes to send. Nothing when the system's 8-bit encoding lacks one of its characters.
  std::optional<QByteArray> bytes;
};
using Arguments = std::vector<Argument>;

/// What the process was started with, without the program's name.
Arguments ArgumentsOf(int argc, char** argv);

}  // namespace quarn::send
