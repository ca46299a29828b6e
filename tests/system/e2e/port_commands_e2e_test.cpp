#include <QFile>

#include "system/e2e/commands.h"

namespace quarn::test {
namespace {

class PortCommands : public Commands {
 protected:
  void ChooseConnect() { Choose(kPortMenu, QStringLiteral("Connect COM Port")); }
  void ChooseReset() { Choose(kPortMenu, QStringLiteral("Reset Current COM Port")); }
  void Disconnect(const QString& answer) {
    Choose(kPortMenu, QStringLiteral("Disconnect COM Port"));
    Answer({QStringLiteral("Are you sure you want to disconnect the COM port?")}, answer);
  }
  const QString kTitle = QStringLiteral("Quarn   (COM3)");
  const QString kClosedTitle = QStringLiteral("Quarn   (COM3-NC)");
};

TEST_F(PortCommands, DisconnectAnsweredNoChangesNothing) {
  StartConnected("* -> line \"OK\"");
  ASSERT_TRUE(MainTitleBecomes(kTitle));
  EXPECT_TRUE(PortItemsBecome(false, true, true));
  Disconnect(kNo);
  EXPECT_TRUE(PortItemsBecome(false, true, true));
  EXPECT_TRUE(MainTitleBecomes(kTitle));
  EnterCommand(QStringLiteral("id"));
  EXPECT_TRUE(WireBecomes("id\r"));
}

TEST_F(PortCommands, DisconnectedAndConnectedAgain) {
  FarEnd farEnd;
  WriteSettings({{QStringLiteral("COM_PORT"), kPort}});
  ASSERT_TRUE(portLinks.Add(kPort, farEnd.NodePath()));
  StartProgram();
  terminal = WaitForWindow(kTerminal);
  ASSERT_TRUE(MainTitleBecomes(kTitle));
  ASSERT_FALSE(farEnd.HungUp());
  Disconnect(kYes);
  EXPECT_TRUE(Passes(QStringLiteral("\"COM3\" was disconnected.")));
  EXPECT_TRUE(farEnd.HungUp());
  EXPECT_TRUE(MainTitleBecomes(kClosedTitle));
  EXPECT_TRUE(TerminalTitleBecomes(QStringLiteral("Quarn - Terminal Screeen (COM3-NC)  N- INS")));
  EXPECT_TRUE(PortItemsBecome(true, false, false));
  instrument = std::make_unique<ServedInstrument>("* -> line \"OK\"");
  const QString ports = config.filePath(QStringLiteral("Halvo/Quarn/ports/"));
  // In one step, so that the number of ports stays what it was.
  ASSERT_TRUE(portLinks.Add(QStringLiteral("next"), instrument->NodePath()));
  ASSERT_EQ(rename(QFile::encodeName(ports + QStringLiteral("next")).constData(),
                   QFile::encodeName(ports + kPort).constData()),
            0);
  ChooseConnect();
  EXPECT_TRUE(Passes(kConnected));
  EXPECT_TRUE(MainTitleBecomes(kTitle));
  EXPECT_TRUE(TerminalTitleBecomes(QStringLiteral("Quarn - Terminal Screeen (COM3)  N- INS")));
  EXPECT_TRUE(PortItemsBecome(false, true, true));
  EnterCommand(QStringLiteral("id"));
  EXPECT_TRUE(WireBecomes("id\r"));
}

TEST_F(PortCommands, APortThatCannotBeOpened) {
  StartConnected("* -> line \"OK\"");
  Disconnect(kYes);
  ASSERT_TRUE(MainTitleBecomes(kClosedTitle));
  ASSERT_TRUE(WaitForNoWindow(kPassing));
  UnplugPort();
  EXPECT_TRUE(Passes(QStringLiteral("COM port list has been updated.")));
  ChooseConnect();
  Acknowledge(kError, kNotAvailable);
  EXPECT_TRUE(MainTitleBecomes(kClosedTitle));
  EXPECT_TRUE(PortItemsBecome(true, false, false));
}

TEST_F(PortCommands, ResetOpensThePortAgain) {
  StartConnected("* -> line \"OK\"");
  ASSERT_TRUE(MainTitleBecomes(kTitle));
  PropertyWatch titles(desktop, {QStringLiteral("-id"), WaitForWindow(kMain)},
                       QStringLiteral("_NET_WM_NAME"));
  ChooseReset();
  Acknowledge(kInformation, {QStringLiteral("\"COM3\" :  Reset completed successfully.")});
  EXPECT_TRUE(titles.Lines().contains("\"Quarn   (COM3)- Resetting Port ...\""))
      << titles.Lines().toStdString();
  EXPECT_TRUE(MainTitleBecomes(kTitle));
  EXPECT_TRUE(PortItemsBecome(false, true, true));
  EnterCommand(QStringLiteral("id"));
  EXPECT_TRUE(WireBecomes("id\r"));
}

TEST_F(PortCommands, ResetOfAPortThatHasGone) {
  StartConnected("* -> line \"OK\"");
  ASSERT_TRUE(MainTitleBecomes(kTitle));
  // Under another name: the number of ports is the same, so that nothing else notices.
  const QString ports = config.filePath(QStringLiteral("Halvo/Quarn/ports/"));
  ASSERT_TRUE(QFile::rename(ports + kPort, ports + QStringLiteral("COM4")));
  ChooseReset();
  Acknowledge(kError, {QStringLiteral("COM3:  Reset Failed.")});
  EXPECT_TRUE(MainTitleBecomes(kClosedTitle));
  EXPECT_TRUE(PortItemsBecome(true, false, false));
}

}  // namespace
}  // namespace quarn::test
