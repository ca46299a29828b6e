// A chosen port that opens and refuses its settings: no line has eight data bits and one and a half stop
// bits.

#include "dialogs/port_dialog_fixture.h"
#include "dialogs/serial/port_choice.h"

namespace quarn::test {
namespace {

class RefusedPortChoice : public PortDialogTest {
 protected:
  bool Choose(const QString& port) {
    return ConnectToChosenPort(Context(), port, FailureSentence::WithFullStop, [](const QString&) {});
  }
};

TEST_F(RefusedPortChoice, DoesNotStandInForNoPort) {
  Plug("COM4");
  program.settings.comStop = QStringLiteral("1.5");
  EXPECT_FALSE(Choose("COM4"));
  EXPECT_EQ(program.state.currentPortName, "NONE");
  EXPECT_FALSE(program.connection.handle.IsOpen());
}

TEST_F(RefusedPortChoice, DoesNotStandInForAFormerPortThatIsGone) {
  Plug("COM3");
  Plug("COM4");
  ConnectTo("COM3");
  program.settings.comStop = QStringLiteral("1.5");
  Unplug("COM3");
  EXPECT_FALSE(Choose("COM4"));
  EXPECT_EQ(program.state.currentPortName, "COM3");
  EXPECT_TRUE(program.connection.connected.IsSet());
  EXPECT_FALSE(program.connection.handle.IsOpen());
}

}  // namespace
}  // namespace quarn::test
