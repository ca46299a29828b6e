#include "send/commands.h"

#include <QFile>
#include <array>
#include <cerrno>
#include <cstdio>
#include <system_error>

#include "send/option_words.h"

namespace quarn::send {
namespace {

/// The byte of an escape of one letter.
std::optional<char> ByteOf(char letter) {
  switch (letter) {
    case 'r':
      return '\r';
    case 'n':
      return '\n';
    case 't':
      return '\t';
    case '0':
      return '\0';
    case 'e':
      return '\x1b';
    case '\\':
      return '\\';
    default:
      return std::nullopt;
  }
}

std::optional<char> ByteOfHex(const QByteArray& digits) {
  constexpr int kHex = 16;
  bool isNumber = digits.size() == 2 && digits[0] != '+' && digits[0] != '-';
  const uint number = isNumber ? digits.toUInt(&isNumber, kHex) : 0;
  return isNumber ? std::optional(static_cast<char>(number)) : std::nullopt;
}

/// Text of two bytes per character, as some editors and shells of Windows write it.
bool IsUtf16(const QByteArray& text) { return text.startsWith("\xFF\xFE") || text.startsWith("\xFE\xFF"); }

/// Commands of many days; /dev/zero would fill the memory.
constexpr qint64 kMostBytes = 16 << 20;

FileContent Limited(FileContent content) {
  if (content.bytes.size() <= kMostBytes) return content;
  return {.failure = QStringLiteral("more than 16 MiB")};
}

FileContent ReadStandardInput() {
  TakeBytesAsTheyAre();
  constexpr std::size_t kPiece = 4096;
  FileContent content;
  std::array<char, kPiece> piece{};
  std::size_t count = 0;
  while (content.bytes.size() <= kMostBytes &&
         (count = std::fread(piece.data(), 1, piece.size(), stdin)) > 0) {
    content.bytes.append(piece.data(), static_cast<qsizetype>(count));
  }
  if (std::ferror(stdin) != 0) {
    content.failure = QString::fromStdString(std::generic_category().message(errno));
  }
  return content;
}

class Collector {
 public:
  Collector(const Options& options, const ReadFile& read) : m_options(options), m_read(read) {}

  Commands Collect() {
    for (const CommandSource& each : m_options.commands) {
      if (!Take(each)) break;
    }
    return m_commands;
  }

 private:
  bool Take(const CommandSource& source) {
    switch (source.kind) {
      case CommandSource::Kind::Word:
        return Add(source.bytes);
      case CommandSource::Kind::File:
        return AddLines(source.file, m_read(source.file));
      case CommandSource::Kind::StandardInput:
        return AddLines(QStringLiteral("standard input"), m_read(std::nullopt));
    }
    return false;
  }

  bool AddLines(const QString& name, const FileContent& content) {
    if (!content.failure.isEmpty()) {
      m_commands.failure = name + QStringLiteral(": ") + content.failure;
      return false;
    }
    if (IsUtf16(content.bytes)) {
      m_commands.error = name + QStringLiteral(": the text is UTF-16; save it as UTF-8 or ANSI");
      return false;
    }
    const QByteArrayList lines = CommandsOfLines(content.bytes);
    if (lines.isEmpty()) m_commands.error = name + QStringLiteral(": there is no command in it");
    for (const QByteArray& each : lines) {
      if (!Add(each)) return false;
    }
    return !lines.isEmpty();
  }

  bool Add(const QByteArray& command) {
    QByteArray wrong;
    const std::optional<QByteArray> bytes = m_options.escapes ? Unescaped(command, wrong) : command;
    if (bytes) {
      m_commands.list.append(*bytes);
    } else {
      m_commands.error =
          QStringLiteral("\"%1\": \"%2\" is no escape (\\r \\n \\t \\0 \\e \\\\ and \\x02 are)")
              .arg(Spelled(command), Spelled(wrong));
    }
    return bytes.has_value();
  }

  const Options& m_options;
  const ReadFile& m_read;
  Commands m_commands;
};

}  // namespace

QByteArrayList CommandsOfLines(QByteArray text) {
  if (text.startsWith("\xEF\xBB\xBF")) text.remove(0, 3);
  QByteArrayList lines = text.split('\n');
  // What follows the last line feed has no line end to lose.
  for (qsizetype i = 0; i + 1 < lines.size(); ++i) {
    if (lines[i].endsWith('\r')) lines[i].chop(1);
  }
  lines.removeAll(QByteArray());
  return lines;
}

std::optional<QByteArray> Unescaped(const QByteArray& text, QByteArray& wrong) {
  QByteArray bytes;
  for (qsizetype i = 0; i < text.size(); ++i) {
    if (text[i] != '\\') {
      bytes += text[i];
      continue;
    }
    const bool isHex = i + 1 < text.size() && text[i + 1] == 'x';
    const qsizetype length = isHex ? 4 : 2;
    const QByteArray escape = text.mid(i, length);
    std::optional<char> byte;
    if (escape.size() == length) byte = isHex ? ByteOfHex(escape.mid(2)) : ByteOf(escape[1]);
    if (!byte) {
      wrong = escape;
      return std::nullopt;
    }
    bytes += *byte;
    i += length - 1;
  }
  return bytes;
}

FileContent ReadCommandFile(const std::optional<QString>& name) {
  if (!name) return Limited(ReadStandardInput());
  QFile file(*name);
  if (!file.open(QIODevice::ReadOnly)) return {.failure = file.errorString()};
  FileContent content{.bytes = file.read(kMostBytes + 1)};
  if (file.error() != QFileDevice::NoError) content.failure = file.errorString();
  return Limited(std::move(content));
}

Commands CollectCommands(const Options& options, const ReadFile& read) {
  return Collector(options, read).Collect();
}

}  // namespace quarn::send
