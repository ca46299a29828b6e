#pragma once

#include <QByteArray>
#include <QByteArrayList>
#include <QString>
#include <functional>
#include <optional>
#include <vector>

#include "send/send_options.h"

namespace quarn::send {

/// The commands of a file, one per line. A line ends in LF or CRLF. Empty lines are left out, and so is a
/// byte-order mark of UTF-8 at the start; no other byte is changed.
QByteArrayList CommandsOfLines(QByteArray text);

/// The bytes that a text with escapes stands for: \r \n \t \0 \e \\ and \xHH. nullopt with the wrong escape
/// in `wrong`.
std::optional<QByteArray> Unescaped(const QByteArray& text, QByteArray& wrong);

/// What a file holds, or why it cannot be read.
struct FileContent {
  QByteArray bytes{};
  QString failure{};
};
/// Reads a file of at most 16 MiB; without a name standard input.
using ReadFile = std::function<FileContent(const std::optional<QString>& name)>;
FileContent ReadCommandFile(const std::optional<QString>& name);

struct Commands {
  QByteArrayList list;  ///< the bytes to send, without their framing
  QString failure;      ///< not empty: a file cannot be read
  QString error;        ///< not empty: a file has no commands, or an escape is wrong
};
/// All commands, in their order. They are all read before one is sent.
Commands CollectCommands(const Options& options, const ReadFile& read);

}  // namespace quarn::send
