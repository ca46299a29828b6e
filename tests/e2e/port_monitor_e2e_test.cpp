#include "e2e/commands.h"
#include "settings/key_store.h"

namespace quarn::test {
namespace {

class PortWatch : public Commands {
 protected:
  void Unplugged() {
    UnplugPort();
    EXPECT_TRUE(Passes(kUpdated));
    Acknowledge(kError, kNotAvailable);
    EXPECT_TRUE(MainTitleBecomes(QStringLiteral("Quarn   (COM3-NC)")));
    EXPECT_TRUE(PortItemsBecome(true, false, false));
  }
  void PluggedInAgain(const QString& answer) {
    PlugIn("* -> line \"again\"");
    EXPECT_TRUE(Passes(kUpdated));
    EXPECT_TRUE(BoxSays(kConfirmation, kQuestion));
    EXPECT_TRUE(desktop.Windows(kError).isEmpty()) << "told more than once";
    Answer(kQuestion, answer);
  }
  const QString kUpdated = QStringLiteral("COM port list has been updated.");
  const QStringList kQuestion{QStringLiteral("Do you want to connect to \"COM3\" ?")};
};

TEST_F(PortWatch, ThePortGoesAndComesBackAndIsTaken) {
  StartConnected("* -> line \"OK\"");
  ASSERT_TRUE(MainTitleBecomes(QStringLiteral("Quarn   (COM3)")));
  Unplugged();
  PluggedInAgain(kYes);
  Acknowledge(kInformation, {QStringLiteral("Successfully connected to  \"COM3\"")});
  EXPECT_TRUE(MainTitleBecomes(QStringLiteral("Quarn   (COM3)")));
  EXPECT_TRUE(PortItemsBecome(false, true, true));
  EXPECT_EQ(ReadValue(SettingsFile(), SettingsKey(u"COM_PORT=")), kPort);
  EnterCommand(QStringLiteral("id"));
  EXPECT_TRUE(WireBecomes("id\r"));
}

TEST_F(PortWatch, ThePortGoesAndComesBackAndIsRefused) {
  StartConnected("* -> line \"OK\"");
  ASSERT_TRUE(MainTitleBecomes(QStringLiteral("Quarn   (COM3)")));
  Unplugged();
  PluggedInAgain(kNo);
  EXPECT_TRUE(MainTitleBecomes(QStringLiteral("Quarn   (NONE)")));
  EXPECT_TRUE(TerminalTitleBecomes(QStringLiteral("Quarn - Terminal Screeen (NONE)  N- INS")));
  EXPECT_TRUE(PortItemsBecome(false, false, false));
}

TEST_F(PortWatch, AnotherPortIsOnlyAnnounced) {
  StartConnected("* -> line \"OK\"");
  ASSERT_TRUE(MainTitleBecomes(QStringLiteral("Quarn   (COM3)")));
  ASSERT_TRUE(portLinks.AddSilent(1, 60));
  EXPECT_TRUE(Passes(kUpdated));
  EnterCommand(QStringLiteral("id"));
  EXPECT_TRUE(WireBecomes("id\r"));
  portLinks.RemoveSilent();
  EXPECT_TRUE(Passes(kUpdated));
  EnterCommand();
  EXPECT_TRUE(WireBecomes("id\rid\r"));
  EXPECT_TRUE(MainTitleBecomes(QStringLiteral("Quarn   (COM3)")));
}

TEST_F(PortWatch, MoreThanThirtyPortsAreNotAnnounced) {
  constexpr int kMost = 30;
  StartConnected("* -> line \"OK\"");
  ASSERT_TRUE(MainTitleBecomes(QStringLiteral("Quarn   (COM3)")));
  const int present = static_cast<int>(portLinks.Names().size());
  ASSERT_LT(present, kMost);
  ASSERT_TRUE(portLinks.AddSilent(kMost - present, 50));
  // Links are made one by one: there may be a message for the first of them, and another for the rest.
  EXPECT_TRUE(Passes(kUpdated));
  EnterCommand(QStringLiteral("thirty"));
  ASSERT_TRUE(WireBecomes("thirty\r"));
  ASSERT_TRUE(WaitForNoWindow(kPassing));
  PropertyWatch windows(desktop, {QStringLiteral("-root")}, QStringLiteral("_NET_CLIENT_LIST"));
  ASSERT_TRUE(portLinks.AddSilent(1, 99));
  std::string wire = "thirty\r";
  // Nothing shows that the port has been noticed: do so much that it has been.
  for (int i = 0; i < 12; ++i) {
    EnterCommand();
    wire += "thirty\r";
    ASSERT_TRUE(WireBecomes(wire));
  }
  EXPECT_EQ(windows.Lines().count('\n'), 1) << "a box has come: " << windows.Lines().toStdString();
  ASSERT_TRUE(portLinks.Remove(QStringLiteral("COM99")));
  EXPECT_TRUE(Passes(kUpdated));
  EXPECT_TRUE(MainTitleBecomes(QStringLiteral("Quarn   (COM3)")));
}

}  // namespace
}  // namespace quarn::test
