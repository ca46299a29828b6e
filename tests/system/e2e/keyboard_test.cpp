#include "system/e2e/desktop.h"

namespace quarn::test {
namespace {

/// Every editing key with real events; what it did is read off the wire.
class Keyboard : public EndToEnd {
 protected:
  void Start(const QList<QPair<QString, QString>>& values = {}) {
    StartConnected(
        "* -> line \"OK\"",
        QList<QPair<QString, QString>>{{QStringLiteral("AUTO_CLR"), QStringLiteral("ON")}} + values);
  }
  static QStringList Keys(const char* names) { return QString::fromLatin1(names).split(QLatin1Char(' ')); }
};

TEST_F(Keyboard, MovingAndDeleting) {
  Start();
  Type(QStringLiteral("abcdef"));
  Press(Keys("Left Left BackSpace Delete Left x Right y Return"));
  EXPECT_TRUE(WireBecomes("abxcyf\r"));
}

TEST_F(Keyboard, BlanksGoToTheEnd) {
  Start();
  Type(QStringLiteral("ab"));
  Press(Keys("Left space Return"));
  EXPECT_TRUE(WireBecomes("ab \r"));
}

TEST_F(Keyboard, InsertSwitchesToOverwriting) {
  Start();
  Type(QStringLiteral("abc"));
  Press(Keys("Insert"));
  EXPECT_TRUE(TerminalTitleBecomes(QStringLiteral("Quarn - Terminal Screeen (COM3)  N- OVR")));
  Press(Keys("Left Left X Return"));
  EXPECT_TRUE(WireBecomes("aXc\r"));
  Press(Keys("Insert"));
  EXPECT_TRUE(TerminalTitleBecomes(QStringLiteral("Quarn - Terminal Screeen (COM3)  N- INS  [ 1-2  ]")));
}

TEST_F(Keyboard, FunctionKeysLoadAndControlAppends) {
  Start({{QStringLiteral("MEM2"), QStringLiteral("three")}, {QStringLiteral("MEM9"), QStringLiteral("ten")}});
  Press(Keys("F10 ctrl+F3 Return"));
  EXPECT_TRUE(WireBecomes("tenthree\r"));
  Press(Keys("F11 Return"));
  EXPECT_TRUE(WireBecomes("tenthree\rtenthree\r"));
}

TEST_F(Keyboard, ClipboardKeys) {
  Start();
  Type(QStringLiteral("abc"));
  Press(Keys("ctrl+c"));
  EXPECT_TRUE(Eventually([this] { return ClipboardText() == "abc"; }));
  Press(Keys("ctrl+z"));
  SetClipboard("pa\tst\r\ned");
  Press(Keys("ctrl+v Return"));
  EXPECT_TRUE(WireBecomes("pasted\r"));
  Type(QStringLiteral("cut"));
  Press(Keys("ctrl+x"));
  EXPECT_TRUE(Eventually([this] { return ClipboardText() == "cut"; }));
  Type(QStringLiteral("d"));
  Press(Keys("Return"));
  EXPECT_TRUE(WireBecomes("pasted\rd\r"));
}

TEST_F(Keyboard, AVeryLongClipboardComesInPieces) {
  Start();
  // What can be taken begins in a piece behind the first one.
  SetClipboard(QByteArray("\t\n").repeated(200000) + QByteArray(3000000, 'x'));
  Press(Keys("ctrl+v Return"));
  EXPECT_TRUE(WireBecomes(std::string(48, 'x') + '\r'));
}

TEST_F(Keyboard, OtherControlKeysAndEscapeChangeNothing) {
  Start();
  Type(QStringLiteral("id"));
  Press(Keys("ctrl+a ctrl+q Escape Return"));
  EXPECT_TRUE(WireBecomes("id\r"));
  EXPECT_FALSE(desktop.Windows(kTerminal).isEmpty());
}

TEST_F(Keyboard, DeadKeysCompose) {
  Start();
  desktop.Run(QStringLiteral("setxkbmap"), {QStringLiteral("us"), QStringLiteral("intl")});
  Press(Keys("dead_circumflex space dead_acute e Return"));
  EXPECT_TRUE(WireBecomes("^\xc3\xa9\r"));
}

TEST_F(Keyboard, TheKeypadEnterSends) {
  Start();
  Type(QStringLiteral("kp"));
  Press(Keys("KP_Enter"));
  EXPECT_TRUE(WireBecomes("kp\r"));
}

TEST_F(Keyboard, ThereIsNoTypingBeyondTheLimit) {
  Start();
  const QString full(48, QLatin1Char('a'));
  Type(full + QStringLiteral("bc"));
  Press(Keys("Return"));
  EXPECT_TRUE(WireBecomes(full.toStdString() + '\r'));
}

TEST_F(Keyboard, TheMenuKeyOpensTheMenu) {
  Start();
  Type(QStringLiteral("id"));
  Press(Keys("Return"));
  ASSERT_TRUE(TerminalTitleBecomes(QStringLiteral("Quarn - Terminal Screeen (COM3)  N- INS  [ 1-2  ]")));
  SetClipboard("before");
  Press(Keys("Menu Down Down Return"));
  EXPECT_TRUE(Eventually([this] { return ClipboardText() == "[id]\rOK\r"; }))
      << ClipboardText().toStdString();
}

TEST_F(Keyboard, ArrowsScrollTheLog) {
  Start();
  Type(QStringLiteral("id"));
  Press(Keys("Return"));
  ASSERT_TRUE(TerminalTitleBecomes(QStringLiteral("Quarn - Terminal Screeen (COM3)  N- INS  [ 1-2  ]")));
  Press(Keys("Down"));
  EXPECT_TRUE(TerminalTitleBecomes(QStringLiteral("Quarn - Terminal Screeen (COM3)  N- INS  [ 2-2  ]")));
  Press(Keys("Up"));
  EXPECT_TRUE(TerminalTitleBecomes(QStringLiteral("Quarn - Terminal Screeen (COM3)  N- INS  [ 1-2  ]")));
}

}  // namespace
}  // namespace quarn::test
