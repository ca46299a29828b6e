// Commands that are not sent, each with its reason in one line.

#include <sys/stat.h>

#include "send/send_process.h"

namespace quarn {
namespace {

class SendRefused : public SendProcess {
 protected:
  void ExpectRefused(const Outcome& sent, int status, const QByteArray& reason) const {
    EXPECT_EQ(sent.exitCode, status);
    EXPECT_EQ(sent.out, "");
    EXPECT_EQ(sent.err, "quarn-send: " + reason + '\n');
    EXPECT_EQ(m_instrument.Received(), "");
  }
  void ExpectSettingsRefused(const QString& file, const QByteArray& reason) const {
    ExpectRefused(Send({QStringLiteral("--settings"), file, QStringLiteral("id")}), 5,
                  file.toUtf8() + ": " + reason);
  }
};

TEST_F(SendRefused, ACommandThatIsTooLong) {
  const QString longest(1021, u'x');
  ExpectRefused(
      Send({QStringLiteral("id"), longest + u'x'}), 64,
      '"' + QByteArray(40, 'x') + "...\" is too long: with its framing a command has at most 1023 bytes");
  EXPECT_EQ(Send(QStringList(longest)).exitCode, 0);
  EXPECT_EQ(m_instrument.Received(), longest.toStdString() + "\r\n");
}

TEST_F(SendRefused, ACommandThatWouldBeCutAtItsOwnEnd) {
  ExpectRefused(Send({QStringLiteral("id"), QStringLiteral("one\ntwo")}), 64,
                "\"one<LF>two\" holds the byte that ends a command, and would be cut off behind it");
  // Another delimiter has another terminator.
  WriteSettings(Path("cr.qrn"), {{"DELIMITER=", "CR"}});
  EXPECT_EQ(Send({QStringLiteral("--settings"), Path("cr.qrn"), QStringLiteral("one\ntwo")}).exitCode, 0);
  EXPECT_EQ(m_instrument.Received(), "one\ntwo\r");
}

TEST_F(SendRefused, ACommandMayBringItsOwnEnd) {
  const Outcome sent = Send({QStringLiteral("id\r\n")});
  EXPECT_EQ(sent.out, "[id<CR><LF>]\nSIM-1\n");
  EXPECT_EQ(m_instrument.Received(), "id\r\n");
}

TEST_F(SendRefused, SettingsThatAreNoFile) {
  ExpectSettingsRefused(Path("Halvo"), "a folder, and no settings file");
  const QString pipe = Path("pipe");
  ASSERT_EQ(::mkfifo(QFile::encodeName(pipe).constData(), 0600), 0);
  ExpectSettingsRefused(pipe, "a device or a pipe, and no settings file");
  ExpectSettingsRefused(QStringLiteral("/dev/null"), "a device or a pipe, and no settings file");
  const QString loop = Path("loop.qrn");
  ASSERT_TRUE(QFile::link(loop, loop));
  ExpectSettingsRefused(loop, "Too many levels of symbolic links");
  const QString nowhere = Path("nowhere.qrn");
  ASSERT_TRUE(QFile::link(Path("nothing"), nowhere));
  ExpectSettingsRefused(nowhere, "no such settings file");
  ExpectSettingsRefused(QString(300, u'x'), "File name too long");
}

TEST_F(SendRefused, SettingsThatAreNoText) {
  QFile file(Path("Halvo/Quarn/Quarn.ini"));
  ASSERT_TRUE(file.open(QIODevice::Append));
  file.write("\xb5\r\n");
  file.close();
  ExpectRefused(Send("id"), 5, file.fileName().toUtf8() + ": not a settings file: it is no UTF-8 text");
}

}  // namespace
}  // namespace quarn
