#pragma once

#include <QByteArray>
#include <QString>
#include <optional>
#include <vector>

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

}  // namespace quarn::send
