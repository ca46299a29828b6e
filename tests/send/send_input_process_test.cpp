// Commands from files and from standard input.

#include "send/send_process.h"

namespace quarn {
namespace {

class SendInput : public SendProcess {
 protected:
  QString Write(const char* name, const QByteArray& content) const {
    QFile file(Path(name));
    EXPECT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(content);
    return file.fileName();
  }
};

TEST_F(SendInput, AFileHasOneCommandPerLine) {
  const QString unix = Write("unix.txt", "id\nempty\n");
  const QString windows = Write("windows.txt", "\xEF\xBB\xBFid\r\n\r\nempty");
  for (const QString& file : {unix, windows}) {
    const Outcome sent = Send({QStringLiteral("--file"), file, QStringLiteral("id")});
    EXPECT_EQ(sent.out, "[id]\nSIM-1\n[empty]\nError: Received Invalid Data\n\n[id]\nSIM-1\n");
    EXPECT_EQ(sent.exitCode, 0);
  }
  EXPECT_EQ(m_instrument.Received(), "id\r\nempty\r\nid\r\nid\r\nempty\r\nid\r\n");
}

TEST_F(SendInput, StandardInputIsADash) {
  EXPECT_EQ(Shell(R"sh(printf 'id\r\nx\n' | "$0" first -)sh").exitCode, 0);
  EXPECT_EQ(m_instrument.Received(), "first\r\nid\r\nx\r\n");
}

TEST_F(SendInput, BytesThatAreReadAreBytesThatAreSent) {
  EXPECT_EQ(Shell(R"sh(printf '\377\000\032 a\n' | "$0" -)sh").exitCode, 0);
  EXPECT_EQ(m_instrument.Received(), std::string("\xff\0\x1a a\r\n", 7));
}

TEST_F(SendInput, EscapesAreBytes) {
  EXPECT_EQ(Send({QStringLiteral("--escapes"), QStringLiteral("\\x01\\\\r\\xFF")}).exitCode, 0);
  EXPECT_EQ(Send(QStringList(QStringLiteral("\\x01"))).exitCode, 0);
  EXPECT_EQ(m_instrument.Received(), "\x01\\r\xff\r\n\\x01\r\n");
}

TEST_F(SendInput, NothingIsSentIfOneOfThemCannotBe) {
  const QString good = Write("good.txt", "id\n");
  const QString escape = Write("escape.txt", "id\n\\q\n");
  const QString wide = Write("wide.txt", QByteArray("\xff\xfei\0d\0", 6));
  const QString longer = Write("long.txt", "id\n" + QByteArray(2000, 'x') + '\n');
  for (const QString& file : {escape, wide, longer}) {
    const Outcome sent =
        Send({QStringLiteral("--escapes"), QStringLiteral("--file"), good, QStringLiteral("--file"), file});
    EXPECT_EQ(sent.exitCode, 64) << file.toStdString();
    EXPECT_EQ(sent.err.count('\n'), 1) << sent.err.constData();
  }
  EXPECT_EQ(Shell(R"sh(printf '\n' | "$0" -)sh").exitCode, 64);
  const Outcome missing = Send({QStringLiteral("id"), QStringLiteral("--file"), Path("none.txt")});
  EXPECT_EQ(missing.exitCode, 5);
  EXPECT_EQ(missing.err, "quarn-send: " + Path("none.txt").toUtf8() + ": No such file or directory\n");
  const Outcome folder = Send({QStringLiteral("id"), QStringLiteral("--file"), Path("Halvo")});
  EXPECT_EQ(folder.exitCode, 5) << folder.err.constData();
  const Outcome endless = Send({QStringLiteral("--file"), QStringLiteral("/dev/zero")});
  EXPECT_EQ(endless.exitCode, 5);
  EXPECT_EQ(endless.err, "quarn-send: /dev/zero: more than 16 MiB\n");
  const Outcome piped = Shell(R"sh("$0" - </dev/zero)sh");
  EXPECT_EQ(piped.exitCode, 5);
  EXPECT_EQ(piped.err, "quarn-send: standard input: more than 16 MiB\n");
  const Outcome closed = Shell(R"sh(exec "$0" - <&-)sh");
  EXPECT_NE(closed.exitCode, 0) << closed.err.constData();
  EXPECT_EQ(m_instrument.Received(), "");
}

}  // namespace
}  // namespace quarn
