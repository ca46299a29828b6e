#pragma once

#include <QByteArray>
#include <QRegularExpression>
#include <QString>
#include <QStringList>
#include <chrono>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "send/option_words.h"
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

enum class Output { Log, Raw, Json, Csv };

struct Options {
  QString settingsFile;   ///< empty: the working settings file
  bool defaults = false;  ///< no settings file, but the built-in defaults
  QString port;           ///< empty: the one in the settings
  LineOptions line;
  bool list = false;  ///< the ports, instead of sending anything
  bool help = false;
  bool version = false;
  bool escapes = false;  ///< \r, \x02 and so on in commands stand for bytes
  std::optional<std::chrono::milliseconds> timeout;
  std::chrono::milliseconds wait{0};  ///< for a port that is in use
  std::optional<bool> dtr;            ///< nullopt: the line is left as it is
  std::optional<bool> rts;
  Output output = Output::Log;
  bool timestamps = false;                     ///< in the log; other forms have them anyway
  std::optional<QRegularExpression> expected;  ///< what a response must contain
  bool stopOnError = false;
  std::uint32_t retries = 0;
  std::optional<std::chrono::milliseconds> every;  ///< from the begin of one round of commands to the next
  std::optional<std::uint32_t> count;              ///< of rounds
  bool listen = false;                             ///< after the commands, if there are any
  std::optional<std::chrono::milliseconds> listenFor;
  std::vector<CommandSource> commands;  ///< in the order in which they are sent
  QString error;                        ///< not empty: wrong usage
};

/// A word that begins with "-" is an option, or an error; after "--" everything is a command. The word "-" is
/// standard input. Commands of files come before those of words.
Options ParseArguments(const Arguments& arguments);

/// The names that ParseArguments knows.
std::span<const OptionName> KnownOptions();

/// The help: every option, in lines of at most 80 characters.
extern const char kUsage[];

}  // namespace quarn::send
