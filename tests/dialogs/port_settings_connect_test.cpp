// COM Port Settings and the line: the order of setting, storing and messages.

#include "dialogs/port_settings_fixture.h"

namespace quarn::test {
namespace {

TEST_F(PortSettingsDialog, SetStoresAndReopensTheConnectedPort) {
  Plug("COM3");
  ConnectTo("COM3");
  const auto former = program.connection.handle.Line();
  Open();
  Pick(kBps, "19200");
  Pick(kStop, "2");
  EXPECT_EQ(program.settings.comBps, "9600");
  Click(kSetLine);
  EXPECT_EQ(Happened(), QStringList());
  EXPECT_EQ(WorkingFile(), SavedFile({{"COM_PORT", "COM3"}, {"COM_BPS", "19200"}, {"COM_STOP", "2"}}));
  EXPECT_TRUE(program.connection.connected.IsSet());
  EXPECT_NE(program.connection.handle.Line(), former);
  EXPECT_EQ(OpenLineState().baudRate, 19200U);
  EXPECT_EQ(OpenLineState().stopBits, StopBits::Two);
  EXPECT_TRUE(program.state.requests.refresh.Contains(Window::MainDialog));
  EXPECT_TRUE(window->isVisible());
}

TEST_F(PortSettingsDialog, SetWithoutAConnectionOnlyStores) {
  Plug("COM3");
  Configure("COM3");
  Open();
  Pick(kBits, "7");
  Click(kSetLine);
  EXPECT_EQ(Happened(), QStringList());
  EXPECT_FALSE(program.connection.connected.IsSet());
  EXPECT_FALSE(program.connection.handle.IsOpen());
  EXPECT_EQ(WorkingFile(), SavedFile({{"COM_PORT", "COM3"}, {"COM_BITS", "7"}}));
}

TEST_F(PortSettingsDialog, FailedReopenAfterSetIsReportedAndTheSettingsAreStored) {
  Plug("COM3");
  ConnectTo("COM3");
  Open();
  Pick(kBps, "19200");
  Unplug("COM3");
  whileShown = [this] {
    EXPECT_EQ(program.settings.comBps, "19200");
    EXPECT_FALSE(program.connection.connected.IsSet());
    EXPECT_EQ(WorkingFile(), SavedFile({{"COM_PORT", "COM3"}, {"COM_BPS", "19200"}})) << "already";
  };
  Click(kSetLine);
  EXPECT_EQ(Happened(), QStringList{NotAvailable("COM3")});
  EXPECT_FALSE(program.connection.connected.IsSet());
  EXPECT_FALSE(program.connection.handle.IsOpen());
  EXPECT_EQ(WorkingFile(), SavedFile({{"COM_PORT", "COM3"}, {"COM_BPS", "19200"}}));
  EXPECT_TRUE(program.state.requests.refresh.Contains(Window::MainDialog));
}

TEST_F(PortSettingsDialog, WhatTheNextStartCouldNotReadIsNotStored) {
  const std::string before = WorkingFile();
  Open();
  Pick(kBits, "7");
  // Edited in the Function Key Table, and not saved there.
  for (int key = 0; key < 6; ++key)
    program.settings.mem.at(static_cast<std::size_t>(key)) = QString(1018, u'\u20AC');
  Click(kSetLine);
  EXPECT_EQ(Happened(), QStringList{kTooLong});
  EXPECT_EQ(WorkingFile(), before);
  EXPECT_EQ(program.settings.comBits, "7");
  program.settings.mem[5].clear();
  Click(kSetLine);
  EXPECT_EQ(Happened(), QStringList());
  SettingsRecord loaded;
  EXPECT_EQ(LoadSettings(program.workingSettingsFile, loaded), LoadResult::Loaded);
  EXPECT_EQ(loaded.comBits, "7");
  EXPECT_EQ(loaded.mem, program.settings.mem);
}

TEST_F(PortSettingsDialog, DefaultAnsweredWithNoChangesNothing) {
  Plug("COM3");
  program.settings.comBps = QStringLiteral("1200");
  ConnectTo("COM3");
  const auto line = program.connection.handle.Line();
  const std::string before = WorkingFile();
  messages.answers = {false};
  Open();
  Pick(kStop, "2");
  Click(kDefault);
  EXPECT_EQ(Happened(), QStringList{kDefaultQuestion});
  EXPECT_EQ(Shown(), (QStringList{"1200", "8", "None", "2"}));
  EXPECT_EQ(program.settings.comBps, "1200");
  EXPECT_EQ(WorkingFile(), before);
  EXPECT_EQ(program.connection.handle.Line(), line);
  EXPECT_EQ(OpenLineState().baudRate, 1200U);
  EXPECT_EQ(OpenLineState().stopBits, StopBits::One);
  EXPECT_TRUE(program.connection.connected.IsSet());
  EXPECT_FALSE(program.state.requests.refresh.Contains(Window::MainDialog));
}

TEST_F(PortSettingsDialog, DefaultRestoresStoresAndReconnects) {
  Plug("COM3");
  program.settings.comBps = QStringLiteral("1200");
  program.settings.comBits = QStringLiteral("7");
  ConnectTo("COM3");
  messages.answers = {true};
  Open();
  Click(kDefault);
  EXPECT_EQ(Happened(), (QStringList{kDefaultQuestion, kReset}));
  EXPECT_EQ(Shown(), (QStringList{"9600", "8", "None", "1"}));
  EXPECT_EQ(WorkingFile(), SavedFile({{"COM_PORT", "COM3"}}));
  EXPECT_EQ(OpenLineState().baudRate, 9600U);
  EXPECT_TRUE(window->isVisible());
}

TEST_F(PortSettingsDialog, FailedReopenAfterDefaultIsNotReported) {
  Plug("COM3");
  ConnectTo("COM3");
  Unplug("COM3");
  messages.answers = {true};
  Open();
  Click(kDefault);
  EXPECT_EQ(Happened(), (QStringList{kDefaultQuestion, kReset}));
  EXPECT_FALSE(program.connection.connected.IsSet());
}

TEST_F(PortSettingsDialog, OkAsksBeforeItSaves) {
  Plug("COM3");
  ConnectTo("COM3");
  for (const bool yes : {false, true}) {
    messages.answers = {yes};
    Open();
    Pick(kBps, "57600");
    Click(kOkLine);
    EXPECT_TRUE(IsGone());
    EXPECT_EQ(Happened(), QStringList{kSaveQuestion});
    EXPECT_EQ(program.settings.comBps, yes ? "57600" : "9600");
    EXPECT_EQ(WorkingFile(), yes ? SavedFile({{"COM_PORT", "COM3"}, {"COM_BPS", "57600"}})
                                 : FileWith({{"COM_PORT", "COM3"}}));
    EXPECT_TRUE(program.connection.handle.IsOpen());
  }
}

TEST_F(PortSettingsDialog, FailedReopenAfterOkIsNotReported) {
  Plug("COM3");
  ConnectTo("COM3");
  messages.answers = {true};
  Open();
  Pick(kBps, "19200");
  Unplug("COM3");
  Click(kOkLine);
  EXPECT_TRUE(IsGone());
  EXPECT_EQ(Happened(), QStringList{kSaveQuestion});
  EXPECT_EQ(WorkingFile(), SavedFile({{"COM_PORT", "COM3"}, {"COM_BPS", "19200"}}));
  EXPECT_FALSE(program.connection.connected.IsSet());
}

TEST_F(PortSettingsDialog, OkConnectsThePortThatWasNotConnected) {
  Plug("COM3");
  Configure("COM3");
  messages.answers = {true};
  Open();
  Pick(kBps, "19200");
  Click(kOkLine);
  EXPECT_TRUE(IsGone());
  EXPECT_EQ(Happened(), QStringList{kSaveQuestion});
  EXPECT_TRUE(program.connection.connected.IsSet());
  EXPECT_EQ(OpenLineState().baudRate, 19200U);
  EXPECT_TRUE(program.state.requests.refresh.Contains(Window::MainDialog));
}

TEST_F(PortSettingsDialog, DefaultConnectsThePortThatWasNotConnected) {
  Plug("COM3");
  Configure("COM3");
  program.settings.comBps = QStringLiteral("1200");
  messages.answers = {true};
  Open();
  Click(kDefault);
  EXPECT_EQ(Happened(), (QStringList{kDefaultQuestion, kReset}));
  EXPECT_TRUE(program.connection.connected.IsSet());
  EXPECT_EQ(OpenLineState().baudRate, 9600U);
  EXPECT_TRUE(program.state.requests.refresh.Contains(Window::MainDialog));
}

/// The port was not wanted back, and so has no name; the settings in force still have its own.
TEST_F(PortSettingsDialog, APortThatIsConnectedHasItsNameAgain) {
  Plug("COM3");
  Configure("COM3");
  program.state.currentPortName = QStringLiteral("NONE");
  messages.answers = {true};
  Open();
  Click(kDefault);
  EXPECT_EQ(Happened(), (QStringList{kDefaultQuestion, kReset}));
  EXPECT_TRUE(program.connection.connected.IsSet());
  EXPECT_EQ(program.state.currentPortName, "COM3");
}

TEST_F(PortSettingsDialog, RateThatIsNotOfferedIsThatOfTheLine) {
  Plug("COM3");
  program.settings.comBps = QStringLiteral("110");
  ASSERT_TRUE(UpdateValue(program.workingSettingsFile, keys::kComBps, program.settings.comBps));
  ConnectTo("COM3");
  Open();
  WaitForATick();
  EXPECT_EQ(Box(kBps).currentIndex(), -1);
  EXPECT_EQ(OpenLineState().baudRate, 110U);
  Pick(kParity, "Even");
  Click(kSetLine);
  EXPECT_EQ(Happened(), QStringList());
  EXPECT_EQ(OpenLineState().baudRate, 110U);
  // A pseudo-terminal knows no parity.
  EXPECT_EQ(program.settings.comParity, "Even");
  EXPECT_EQ(WorkingFile(), SavedFile({{"COM_PORT", "COM3"}, {"COM_BPS", "110"}, {"COM_PARITY", "Even"}}));
}

}  // namespace
}  // namespace quarn::test
