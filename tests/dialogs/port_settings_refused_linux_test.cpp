// COM Port Settings when the line refuses the values: one and a half stop bits with eight data bits.

#include "dialogs/port_settings_fixture.h"

namespace quarn::test {
namespace {

TEST_F(PortSettingsDialog, OkOpensThePortBeforeItSaves) {
  Plug("COM3");
  ConnectTo("COM3");
  const std::string before = WorkingFile();
  messages.answers = {true};
  Open();
  Pick(kStop, "1.5");
  int boxes = 0;
  whileShown = [&] {
    ++boxes;
    EXPECT_EQ(program.settings.comStop, "1");
    EXPECT_EQ(WorkingFile(), before);
  };
  Click(kOkLine);
  EXPECT_TRUE(IsGone());
  EXPECT_EQ(boxes, 2);
  // No line has eight data bits and one and a half stop bits.
  EXPECT_EQ(Happened(), (QStringList{kSaveQuestion, kSetStateFailed}));
  EXPECT_FALSE(program.connection.connected.IsSet());
  EXPECT_EQ(program.settings.comStop, "1.5");
  EXPECT_EQ(WorkingFile(), SavedFile({{"COM_PORT", "COM3"}, {"COM_STOP", "1.5"}}));
}

TEST_F(PortSettingsDialog, DefaultRecoversFromAStateThatTheLineRefused) {
  Plug("COM3");
  ConnectTo("COM3");
  messages.answers = {true};
  Open();
  Pick(kStop, "1.5");
  Click(kSetLine);
  EXPECT_EQ(Happened(), (QStringList{kSetStateFailed, NotAvailable("COM3")}));
  EXPECT_FALSE(program.connection.connected.IsSet());
  EXPECT_EQ(WorkingFile(), SavedFile({{"COM_PORT", "COM3"}, {"COM_STOP", "1.5"}}));
  Click(kDefault);
  EXPECT_EQ(Happened(), (QStringList{kDefaultQuestion, kReset}));
  EXPECT_TRUE(program.connection.connected.IsSet());
  EXPECT_EQ(OpenLineState().stopBits, StopBits::One);
  EXPECT_EQ(WorkingFile(), SavedFile({{"COM_PORT", "COM3"}}));
}

}  // namespace
}  // namespace quarn::test
