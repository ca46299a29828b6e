#include "settings/key_store.h"
#include "system/e2e/commands.h"

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
  /// Adds ports until there are thirty, with the detailed list open and showing all of them.
  void ShowThirty() {
    constexpr int kMost = 30;
    const int present = static_cast<int>(portLinks.Names().size());
    ASSERT_LT(present, kMost);
    ASSERT_TRUE(portLinks.AddSilent(kMost - present, 50));
    // The links are made one by one, and each number of them may be announced.
    ChooseList([this] { return !desktop.Windows(kList).isEmpty(); });
    ASSERT_TRUE(Eventually([this] { return RowsOfList() == kMost; })) << RowsOfList();
    ASSERT_TRUE(WaitForNoWindow(kPassing));
  }
  /// Chooses the detailed list until `effect` is seen: a box that opens meanwhile cancels the choice.
  void ChooseList(const std::function<bool()>& effect) {
    EXPECT_TRUE(Eventually([&] {
      Choose(kPortMenu, kListItem);
      return Eventually(effect, kOneTryMs);
    }));
  }
  int RowsOfList() {
    int rows = 0;
    for (const Control& each : Controls(kList)) rows += each.role == QLatin1String("radio button") ? 1 : 0;
    return rows;
  }
  /// Chooses the detailed list. Returns whether the box that refuses it opens; another window is closed.
  bool ListIsRefused() {
    ChooseList([this] { return !desktop.Windows(kList).isEmpty() || !Texts(kInformation).isEmpty(); });
    if (Texts(kInformation) == kListRefused) return true;
    // The port may be noticed while the list is open, which then closes with a box of its own.
    EXPECT_TRUE(Eventually([this] {
      if (!Texts(kInformation).isEmpty()) {
        Acknowledge(kInformation, kListCloses);
      } else if (const std::optional<Control> ok = FindControl(kList, QStringLiteral("OK"))) {
        ClickOnScreen(ok->place.center());
      }
      return desktop.Windows(kList).isEmpty() && desktop.Windows(kInformation).isEmpty();
    }));
    return false;
  }

  const QString kListItem = QStringLiteral("Detailed COM Port List");
  const QString kList = QStringLiteral("^Quarn - Detailed COM Port List");
  const QStringList kListRefused{QStringLiteral("Too many COM ports to display in the detailed list. "),
                                 QStringLiteral("Select a COM port from the \"COM Port Number\" dialog.")};
  const QStringList kListCloses{QStringLiteral("Too many COM ports to display in the detailed list."),
                                QStringLiteral("The \"Detailed COM Port List\" will be closed.")};
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

TEST_F(PortWatch, ALineThatDiesUnderItsNameIsLost) {
  StartConnected("* -> line \"OK\"");
  ASSERT_TRUE(MainTitleBecomes(QStringLiteral("Quarn   (COM3)")));
  EnterCommand(QStringLiteral("id"));
  ASSERT_TRUE(WireBecomes("id\r"));
  auto next = std::make_unique<ServedInstrument>("* -> line \"again\"");
  ASSERT_TRUE(portLinks.Lead(kPort, next->NodePath()));
  instrument = std::move(next);
  Acknowledge(kError, kNotAvailable);
  EXPECT_TRUE(BoxSays(kConfirmation, kQuestion));
  EXPECT_TRUE(MainTitleBecomes(QStringLiteral("Quarn   (COM3-NC)")));
  EXPECT_TRUE(desktop.Windows(kError).isEmpty()) << "told more than once";
  Answer(kQuestion, kYes);
  Acknowledge(kInformation, {QStringLiteral("Successfully connected to  \"COM3\"")});
  EXPECT_TRUE(MainTitleBecomes(QStringLiteral("Quarn   (COM3)")));
  EnterCommand();
  EXPECT_TRUE(WireBecomes("id\r"));
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
  StartConnected("* -> line \"OK\"");
  ASSERT_TRUE(MainTitleBecomes(QStringLiteral("Quarn   (COM3)")));
  ShowThirty();
  ClickButton(kList, QStringLiteral("OK"), [this] { return desktop.Windows(kList).isEmpty(); });
  ASSERT_TRUE(portLinks.AddSilent(1, 99));
  // Only the refusal shows that the port has been noticed.
  EXPECT_TRUE(Eventually([this] { return ListIsRefused(); }));
  EXPECT_TRUE(desktop.Windows(kPassing).isEmpty()) << "the port has been announced";
  AnswerBox(kInformation, QStringLiteral("OK"));
  EXPECT_TRUE(desktop.Windows(kPassing).isEmpty()) << "the port has been announced";
  ASSERT_TRUE(portLinks.Remove(QStringLiteral("COM99")));
  EXPECT_TRUE(Passes(kUpdated));
  EXPECT_TRUE(MainTitleBecomes(QStringLiteral("Quarn   (COM3)")));
}

TEST_F(PortWatch, MoreThanThirtyPortsCloseTheList) {
  StartConnected("* -> line \"OK\"");
  ASSERT_TRUE(MainTitleBecomes(QStringLiteral("Quarn   (COM3)")));
  ShowThirty();
  ASSERT_TRUE(portLinks.AddSilent(1, 99));
  Acknowledge(kInformation, kListCloses);
  EXPECT_TRUE(WaitForNoWindow(kList));
  EXPECT_TRUE(ListIsRefused());
  AnswerBox(kInformation, QStringLiteral("OK"));
  EnterCommand(QStringLiteral("id"));
  EXPECT_TRUE(WireBecomes("id\r"));
}

}  // namespace
}  // namespace quarn::test
