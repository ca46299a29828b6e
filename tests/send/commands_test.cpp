#include "send/commands.h"

#include <map>

#include "serial/line_test_support.h"

namespace quarn::send {
namespace {

TEST(CommandsOfLines, EndInLfOrCrLf) {
  const QByteArrayList commands{"id", "meas?"};
  EXPECT_EQ(CommandsOfLines("id\nmeas?\n"), commands);
  EXPECT_EQ(CommandsOfLines("id\r\nmeas?\r\n"), commands);
  EXPECT_EQ(CommandsOfLines("id\r\nmeas?"), commands);
  EXPECT_EQ(CommandsOfLines("\xEF\xBB\xBFid\nmeas?"), commands) << "a byte-order mark is no command";
}

TEST(CommandsOfLines, EmptyLinesAreLeftOut) {
  EXPECT_EQ(CommandsOfLines("\n\r\nid\n\n"), QByteArrayList{"id"});
  EXPECT_EQ(CommandsOfLines(""), QByteArrayList{});
}

TEST(CommandsOfLines, NoOtherByteIsChanged) {
  EXPECT_EQ(CommandsOfLines(" a\tb \r\n"), QByteArrayList{" a\tb "});
  EXPECT_EQ(CommandsOfLines("a\r\r\n"), QByteArrayList{"a\r"});
  EXPECT_EQ(CommandsOfLines("a\r"), QByteArrayList{"a\r"});
  const QByteArray all("\0\xff\x1a#;", 5);
  EXPECT_EQ(CommandsOfLines(all + '\n'), QByteArrayList{all});
}

TEST(Unescaped, NamesBytes) {
  QByteArray wrong;
  EXPECT_EQ(Unescaped("a\\r\\n\\t\\e\\\\b", wrong), QByteArray("a\r\n\t\x1b\\b"));
  EXPECT_EQ(Unescaped("\\x02A\\xfF\\x00\\0", wrong), QByteArray("\x02"
                                                                "A\xff\0\0",
                                                                5));
  EXPECT_EQ(Unescaped("\\\\x02", wrong), QByteArray("\\x02"));
  EXPECT_EQ(Unescaped("", wrong), QByteArray());
}

TEST(Unescaped, RefusesWhatIsNoEscape) {
  for (const auto& [text, escape] : {std::pair{"a\\q", "\\q"},
                                     {"a\\", "\\"},
                                     {"\\x", "\\x"},
                                     {"\\x2", "\\x2"},
                                     {"\\xg0", "\\xg0"},
                                     {"\\x+1", "\\x+1"},
                                     {"\\X02", "\\X"}}) {
    QByteArray wrong;
    EXPECT_EQ(Unescaped(text, wrong), std::nullopt) << text;
    EXPECT_EQ(wrong, escape) << text;
  }
}

/// What the files hold. An empty name is standard input.
FileContent Read(const std::optional<QString>& name) {
  static const std::map<QString, QByteArray> files{{QString(), "in-1\nin-2\n"},
                                                   {QStringLiteral("a"), "a-1\r\na-2\r\n"},
                                                   {QStringLiteral("empty"), "\n"},
                                                   {QStringLiteral("wide"), QByteArray("\xff\xfei\0d\0", 6)},
                                                   {QStringLiteral("escaped"), "\\x41\n\\q\n"}};
  const auto found = files.find(name.value_or(QString()));
  if (found == files.end()) return {.failure = QStringLiteral("No such file")};
  return {.bytes = found->second};
}

Commands Collect(std::vector<CommandSource> sources, bool escapes = false) {
  Options options;
  options.commands = std::move(sources);
  options.escapes = escapes;
  return CollectCommands(options, Read);
}

CommandSource File(const char* name) {
  return {.kind = CommandSource::Kind::File, .file = QString::fromLatin1(name)};
}

TEST(CollectCommands, KeepsTheOrder) {
  const Commands all =
      Collect({{.bytes = "first"}, File("a"), {.kind = CommandSource::Kind::StandardInput}, {.bytes = ""}});
  EXPECT_EQ(all.list, (QByteArrayList{"first", "a-1", "a-2", "in-1", "in-2", ""}));
  EXPECT_EQ(all.failure + all.error, QString());
}

TEST(CollectCommands, EscapesCountOnlyWhenTheyAreWanted) {
  EXPECT_EQ(Collect({{.bytes = "\\r"}}).list, QByteArrayList{"\\r"});
  EXPECT_EQ(Collect({{.bytes = "\\r"}}, true).list, QByteArrayList{"\r"});
  EXPECT_EQ(Collect({File("escaped")}, true).error,
            QStringLiteral("\"\\q\": \"\\q\" is no escape (\\r \\n \\t \\0 \\e \\\\ and \\x02 are)"));
}

TEST(CollectCommands, SaysWhatIsWrongWithAFile) {
  EXPECT_EQ(Collect({File("none")}).failure, QStringLiteral("none: No such file"));
  EXPECT_EQ(Collect({File("empty")}).error, QStringLiteral("empty: there is no command in it"));
  EXPECT_EQ(Collect({File("wide")}).error,
            QStringLiteral("wide: the text is UTF-16; save it as UTF-8 or ANSI"));
}

}  // namespace
}  // namespace quarn::send
