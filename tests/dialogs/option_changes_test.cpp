#include "dialogs/settings/option_changes.h"

#include "settings/settings_test_support.h"
#include "support/dialog_fixture.h"
#include "support/message_texts.h"

namespace quarn::test {
namespace {

constexpr OptionBinding kSpeed{&SettingsRecord::portSpeed, keys::kPortSpeed};
constexpr OptionBinding kLength{&SettingsRecord::inputMax, keys::kInputMax};

class OptionChanges : public DialogFixture {
 protected:
  void Speed(const char* value) { ChangePortSpeed(Context(), kSpeed, QString::fromLatin1(value)); }
  void Fill(const QByteArray& bytes) {
    QFile file(Context().workingSettingsFile);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    ASSERT_EQ(file.write(bytes), bytes.size());
  }
  void Length(const char* value) { ChangeInputMax(Context(), kLength, QString::fromLatin1(value)); }
};

TEST_F(OptionChanges, TheSpeedInForceTouchesNothing) {
  Connect();
  settings.portSpeed = QStringLiteral("LOW");
  Speed("LOW");
  EXPECT_FALSE(Written());
  EXPECT_TRUE(journal.Entries().empty());
}

TEST_F(OptionChanges, AnOpenPortTakesTheSpeedBeforeItIsWritten) {
  const auto line = Connect();
  settings.comBps = QStringLiteral("9600");
  Speed("LOW");
  // First a read left behind is cancelled.
  EXPECT_EQ(journal.Entries(),
            (std::vector<std::string>{"cancel", "allow", "get state", "set state", "set time-outs"}));
  EXPECT_EQ(line->timeouts, (LineTimeouts{135, 15, 75, 15, 75}));
  EXPECT_EQ(line->state.baudRate, 9600U);
  EXPECT_EQ(File(), FileWith("PORT_SPEED=HIGH", "PORT_SPEED=LOW"));
  EXPECT_TRUE(messages.shown.isEmpty());
  Speed("HIGH");
  EXPECT_EQ(line->timeouts, (LineTimeouts{90, 10, 50, 10, 50}));
  EXPECT_EQ(File(), before);
}

TEST_F(OptionChanges, APortThatFailsKeepsTheSpeedInRecordAndFile) {
  const auto line = Connect();
  const QString error = QStringLiteral("error/: Error//Failed to configure  \"COM3\"/Check COM port state.");
  line->getStateWorks = false;
  line->failure = {LineError::Disconnected, QStringLiteral("gone")};
  messages.whileShown = [&] {
    if (messages.shown.last() != error) return;
    EXPECT_EQ(settings.portSpeed, QStringLiteral("HIGH")) << "it stays in force while the error is up";
    EXPECT_FALSE(Written());
  };
  Speed("LOW");
  EXPECT_EQ(messages.shown, QStringList{error});
  EXPECT_EQ(connection.lastFailure.kind, LineError::Disconnected);
  line->getStateWorks = true;
  line->setStateWorks = false;
  Speed("LOW");
  EXPECT_EQ(messages.shown.mid(1), (QStringList{"plain/Failed to set serial port state", error}));
  EXPECT_EQ(settings.portSpeed, QStringLiteral("HIGH"));
  EXPECT_FALSE(Written());
  EXPECT_TRUE(connection.handle.IsOpen());
  EXPECT_TRUE(connection.connected.IsSet());
}

TEST_F(OptionChanges, WhatAFailedOpenLeftBehindIsNoOpenPort) {
  connection.handle = PortHandle::Invalid();
  Speed("LOW");
  EXPECT_EQ(settings.portSpeed, QStringLiteral("LOW"));
  EXPECT_TRUE(Written());
  EXPECT_TRUE(messages.shown.isEmpty());
  EXPECT_FALSE(ReconfigurePort(settings, connection, Context().environment));
}

TEST_F(OptionChanges, TheLengthInForceAsksNothing) {
  state.open.Add(Window::TerminalScreen);
  settings.inputMax = QStringLiteral("M");
  Length("M");
  EXPECT_TRUE(messages.shown.isEmpty());
  EXPECT_FALSE(Written());
  EXPECT_FALSE(state.requests.refresh.Contains(Window::TerminalScreen));
}

TEST_F(OptionChanges, YesSetsTheLengthClearsTheLogAndRebuilds) {
  state.open.Add(Window::TerminalScreen);
  settings.inputMax = QStringLiteral("N");
  messages.answers = {true};
  Length("W");
  EXPECT_EQ(messages.shown.size(), 1);
  EXPECT_EQ(settings.inputMax, QStringLiteral("W"));
  EXPECT_TRUE(state.requests.clearLog);
  EXPECT_TRUE(state.requests.refresh.Contains(Window::TerminalScreen));
  EXPECT_EQ(ReadValue(Context().workingSettingsFile, keys::kInputMax), QStringLiteral("W"));
}

TEST_F(OptionChanges, ALengthForAClosedScreenAsksForNothingMore) {
  settings.inputMax = QStringLiteral("N");
  Length("W");
  EXPECT_TRUE(messages.shown.isEmpty());
  EXPECT_FALSE(state.requests.clearLog);
  state.requests.clearLog = true;
  Length("M");
  EXPECT_TRUE(state.requests.clearLog) << "somebody else has asked for it";
}

TEST_F(OptionChanges, AKeyThatTheFileLacksIsNotAdded) {
  ASSERT_TRUE(RemoveKey(Context().workingSettingsFile, keys::kPortSpeed));
  const QByteArray without = File();
  Speed("LOW");
  EXPECT_EQ(settings.portSpeed, QStringLiteral("LOW"));
  EXPECT_EQ(File(), without);
}

TEST_F(OptionChanges, WhatTheNextStartCouldNotReadIsNotWritten) {
  constexpr OptionBinding kColour{&SettingsRecord::bkColor, keys::kBkColor};
  constexpr OptionBinding kSize{&SettingsRecord::comBuf, keys::kComBuf};
  Fill(SoundFileOfSize(16384));
  messages.whileShown = [&] {
    EXPECT_EQ(settings.bkColor, QStringLiteral("SYSTEM"));
    EXPECT_TRUE(state.requests.refresh.Contains(Window::TerminalScreen));
  };
  StoreShownOption(Context(), kColour, QStringLiteral("SYSTEM"));
  EXPECT_EQ(messages.shown, QStringList{kTooLong});
  EXPECT_EQ(File(), SoundFileOfSize(16384));
  Speed("LOW");
  StoreOption(Context(), kSize, QStringLiteral("6K"));
  EXPECT_EQ(messages.shown.size(), 1) << "no longer than what was there";
  EXPECT_EQ(ReadValue(Context().workingSettingsFile, keys::kPortSpeed), QStringLiteral("LOW"));
  EXPECT_EQ(ReadValue(Context().workingSettingsFile, keys::kComBuf), QStringLiteral("6K"));
}

}  // namespace
}  // namespace quarn::test
