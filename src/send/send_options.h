#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <chrono>
#include <cstdint>
#include <optional>
#include <vector>

#include "send/platform.h"

namespace quarn::send {

/// What the options say about the line and its framing, as the settings spell it; nullopt: the settings
/// decide.
struct LineOptions {
  std::optional<std::uint32_t> rate;  ///< any number, also one that the settings do not offer
  std::optional<QString> dataBits;
  std::optional<QString> parity;
  std::optional<QString> stopBits;
  std::optional<QString> delimiter;
  std::optional<QString> buffer;
  std::optional<QString> speed;
};

/// Where commands come from.
struct CommandSource {
  enum class Kind {
    Word,           ///< `bytes` is the command
    File,           ///< one command per line of `file`
    StandardInput,  ///< one command per line
  };
  Kind kind = Kind::Word;
  QByteArray bytes{};
  QString file{};
};

struct Options {
  QString settingsFile;   ///< empty: the working settings file
  bool defaults = false;  ///< no settings file, but the built-in defaults
  QString port;           ///< empty: the one in the settings
  LineOptions line;
  bool raw = false;  ///< print the response's bytes unchanged
  bool help = false;
  bool version = false;
  bool escapes = false;  ///< \r, \x02 and so on in commands stand for bytes
  std::optional<std::chrono::milliseconds> timeout;
  std::vector<CommandSource> commands;  ///< in the order in which they are sent
  QString error;                        ///< not empty: wrong usage
};

/// A word that begins with "-" is an option, or an error; after "--" everything is a command. The word "-" is
/// standard input. Commands of files come before those of words.
Options ParseArguments(const Arguments& arguments);

extern const char kUsage[];

}  // namespace quarn::send
