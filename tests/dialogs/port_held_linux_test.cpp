#include <fcntl.h>
#include <sys/file.h>

#include "dialogs/detailed_port_list_fixture.h"
#include "dialogs/serial/port_choice.h"

namespace quarn::test {
namespace {

/// Another process that has the line open exclusively.
OtherProcess HolderOf(const PseudoTerminal& terminal) {
  const std::string& node = terminal.Node();
  return OtherProcess([node] {
    const int device = ::open(node.c_str(), O_RDWR | O_NOCTTY);
    return device >= 0 && ::flock(device, LOCK_EX | LOCK_NB) == 0;
  });
}

using PortHeldByAnother = DetailedPortListDialog;

TEST_F(PortHeldByAnother, IsNotConnected) {
  Plug("COM3");
  Plug("COM4");
  // Started first. Otherwise it would inherit the line that is open here.
  const OtherProcess holder = HolderOf(*terminals.at(1));
  ConnectTo("COM3");
  EXPECT_FALSE(ConnectToChosenPort(
      Context(), "COM4", FailureSentence::WithoutFullStop,
      [this](const QString& status) { journal.append(QStringLiteral("title ") + status); }));
  EXPECT_EQ(Happened(),
            (QStringList{"title  Connecting Port ... ", "pause 500", ChoiceFailed("COM4", ""), "title "}));
  EXPECT_TRUE(program.connection.connected.IsSet());
  EXPECT_TRUE(program.connection.handle.IsOpen());
  EXPECT_EQ(program.state.currentPortName, "COM3");
}

TEST_F(PortHeldByAnother, IsReportedByTheListAndTheFormerIsOpenAgain) {
  Plug("COM3");
  Plug("COM4");
  const OtherProcess holder = HolderOf(*terminals.at(1));
  ConnectTo("COM3");
  const std::string before = WorkingFile();
  Open();
  ClickRadio(1);
  Click(kSetId);
  EXPECT_EQ(Happened(), (QStringList{"pause 500", ChoiceFailed("COM4", "")}));
  EXPECT_TRUE(program.connection.connected.IsSet());
  EXPECT_TRUE(program.connection.handle.IsOpen());
  EXPECT_EQ(program.state.currentPortName, "COM3");
  EXPECT_EQ(Checked(), QList<int>{0});
  EXPECT_EQ(WorkingFile(), before);
}

}  // namespace
}  // namespace quarn::test
