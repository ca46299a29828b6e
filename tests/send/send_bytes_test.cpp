// The bytes sent and the bytes printed.

#include <algorithm>

#include "send/send_process.h"
#include "support/made_locale_linux.h"

namespace quarn {
namespace {

class SendBytes : public SendProcess {
 protected:
  /// Only lines of printable ASCII.
  static void ExpectPlain(const QByteArray& text) {
    EXPECT_TRUE(std::ranges::all_of(text, [](char each) {
      return each == '\n' || (each >= ' ' && each <= '~');
    })) << text.toHex(' ').constData();
  }
  static void ExpectPlain(const Outcome& sent) {
    ExpectPlain(sent.out);
    ExpectPlain(sent.err);
  }
};

TEST_F(SendBytes, BytesThatAreGivenAreBytesThatAreSent) {
  const Outcome sent = Shell(R"sh(exec "$0" "$(printf '\377\376')" "$(printf '\303\202\265')")sh");
  EXPECT_EQ(m_instrument.Received(), "\xff\xfe\r\n\xc3\x82\xb5\r\n");
  EXPECT_EQ(sent.out, "[<0xff><0xfe>]\nERR\n[<0xc3><0x82><0xb5>]\nERR\n");
  EXPECT_EQ(sent.exitCode, 0);
}

TEST_F(SendBytes, AnEightBitLocaleChangesNoneOfThem) {
  const test::MadeLocale latin("ISO-8859-1");
  latin.PutInto(environment);
  const Outcome sent = Shell(R"sh(exec "$0" "$(printf '\265V')")sh");
  EXPECT_EQ(m_instrument.Received(), "\xb5V\r\n");
  EXPECT_EQ(sent.out, "[<0xb5>V]\nERR\n");
  EXPECT_EQ(sent.err, "");
}

TEST_F(SendBytes, ACommandForgesNoLineAndSteersNoTerminal) {
  const Outcome sent = Shell(R"sh(exec "$0" "$(printf 'a]\r[id]\rSIM-9\033[1m\302\233')")sh");
  EXPECT_EQ(sent.out, "[a]<CR>[id]<CR>SIM-9<ESC>[1m<0xc2><0x9b>]\nERR\nERR\nERR\n");
  ExpectPlain(sent);
}

TEST_F(SendBytes, WhatAFileOrTheCommandLineBringsSteersNoTerminal) {
  UseSettings({{"COM_PORT=", "COM9\x1b[31m\xc2\x9b\x7f"}});
  EXPECT_EQ(Send("id").err,
            "quarn-send: COM9<ESC>[31m<0xc2><0x9b><DEL> is not present; quarn-send --list shows the ports "
            "that are\n");
  for (const char* line : {R"sh(exec "$0" --port "$(printf 'COM9\033[2J\nx')" id)sh",
                           R"sh(exec "$0" --settings "$(printf '/\033[2J\r\303\266')" id)sh",
                           R"sh(exec "$0" --settings "$(printf '/\377\033')" id)sh",
                           R"sh(exec "$0" "$(printf '%s\033[2J' -)")sh"}) {
    const Outcome sent = Shell(line);
    EXPECT_NE(sent.exitCode, 0) << line;
    EXPECT_TRUE(sent.err.contains("<ESC>")) << sent.err.constData();
    ExpectPlain(sent);
  }
  EXPECT_EQ(m_instrument.Received(), "");
}

TEST_F(SendBytes, OutputThatCannotBeWrittenIs74WithTheReason) {
  for (const char* arguments : {"id", "--raw id", "--help", "--version"}) {
    for (const auto& [where, reason] :
         {std::pair{">/dev/full", "No space left on device"}, std::pair{">&-", "Bad file descriptor"},
          std::pair{"<&- >&-", "Bad file descriptor"}}) {
      const QByteArray line = QByteArray("exec \"$0\" ") + arguments + ' ' + where;
      const Outcome sent = Shell(line.constData());
      EXPECT_EQ(sent.exitCode, 74) << line.constData();
      EXPECT_EQ(sent.err, QByteArray("quarn-send: standard output: ") + reason + '\n') << line.constData();
    }
  }
}

TEST_F(SendBytes, WithoutAPlaceToPrintNoFurtherCommandIsSent) {
  EXPECT_EQ(Shell("exec \"$0\" id id >/dev/full").exitCode, 74);
  // So large that a sanitizer can still make its own files. A block has 512 or 1024 bytes.
  const Outcome limited = Shell(
      "truncate --size 2G \"$XDG_CONFIG_HOME\"/out; ulimit -f 2097152; exec \"$0\" id id "
      ">>\"$XDG_CONFIG_HOME\"/out");
  EXPECT_EQ(limited.exitCode, 74);
  EXPECT_EQ(limited.err, "quarn-send: standard output: File too large\n");
  EXPECT_EQ(m_instrument.Received(), "id\r\nid\r\n");
}

TEST_F(SendBytes, APipeThatNobodyReadsIsNoSilentEnd) {
  const Outcome sent = Shell("{ \"$0\" id id; echo $? >&2; } | :");
  EXPECT_EQ(sent.err, "quarn-send: standard output: Broken pipe\n74\n");
  EXPECT_EQ(m_instrument.Received(), "id\r\n");
}

/// The next file that is opened would get the number of the closed one.
TEST_F(SendBytes, NothingThatIsPrintedReachesTheLineOrAFile) {
  EXPECT_EQ(Shell("exec \"$0\" id <&- >&- 2>&-").exitCode, 74);
  EXPECT_EQ(m_instrument.Received(), "id\r\n");
  EXPECT_EQ(Shell("exec \"$0\" --port COM9 id <&- >&- 2>&-").exitCode, 5);
  EXPECT_EQ(Send("id").out, "[id]\nSIM-1\n") << "the settings are what they were";
}

}  // namespace
}  // namespace quarn
