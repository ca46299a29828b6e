#include "serial/dialogs/port_details_dialog.h"

#include <QRadioButton>
#include <QScreen>
#include <QScrollArea>
#include <QScrollBar>

#include "app/port_dialog_fixture.h"
#include "ui/placement.h"

namespace quarn::test {
namespace {

constexpr int kSet = 1062;
constexpr int kOk = 1013;
constexpr int kStatus = 1064;

const QString kApplyQuestion =
    QStringLiteral("question/: Confirmation//Do you want to apply this configuration?/");

QList<int> Range(int first, int last) {
  QList<int> ids;
  for (int id = first; id <= last; ++id) ids.append(id);
  return ids;
}

const QList<int> kRadios =
    Range(1031, 1040) + Range(1051, 1061) + QList<int>{1063} + Range(1065, 1067) + Range(1073, 1077);
const QList<int> kDescriptions =
    Range(1021, 1030) + Range(1041, 1050) + Range(1068, 1072) + Range(1078, 1082);

class PortDetailsDialog : public PortDialogTest {
 protected:
  CPortDetails& Open() { return Show<CPortDetails>(); }
  QRadioButton& Radio(int row) { return *Control<QRadioButton>(*window, kRadios[row]); }
  QLabel& Description(int row) { return *Control<QLabel>(*window, kDescriptions[row]); }
  QString Status() { return Control<QLabel>(*window, kStatus)->text(); }
  /// The window manager tells the frame after a while only.
  bool BecomesHigh(int height) {
    return QTest::qWaitFor([&] { return OuterSize(*window).height() == height; });
  }
  int RowsShown() {
    int shown = 0;
    for (int i = 0; i < kPortRowCount; ++i) shown += Radio(i).isVisible() ? 1 : 0;
    return shown;
  }
  QList<int> Checked() {
    QList<int> rows;
    for (int i = 0; i < kPortRowCount; ++i) {
      if (Radio(i).isChecked()) rows.append(i);
    }
    return rows;
  }
  void ClickRadio(int row) {
    QTest::mouseClick(&Radio(row), Qt::LeftButton, {}, QPoint(8, Radio(row).height() / 2));
  }
};

TEST_F(PortDetailsDialog, HasThirtyRowsSixteenUnitsApart) {
  ListOnly(30);
  Open();
  EXPECT_EQ(kRadios.size(), 30);
  EXPECT_EQ(kDescriptions.size(), 30);
  const int pitch = MapDialogUnits(window->font(), {0, 0, 0, 16}).height();
  for (int i = 0; i < 30; ++i) {
    EXPECT_EQ(Radio(i).y(), i * pitch);
    EXPECT_EQ(Description(i).y(), i * pitch);
    EXPECT_GT(Description(i).x(), Radio(i).x());
    EXPECT_EQ(Radio(i).accessibleName(), QStringLiteral("Adapter (COM%1)").arg(i + 1));
    EXPECT_EQ(Description(i).text(), QStringLiteral("Adapter (COM%1)").arg(i + 1));
  }
  EXPECT_EQ(RowsShown(), 30);
}

TEST_F(PortDetailsDialog, WithoutPortsThereIsOnlyTheStatusLine) {
  Open();
  EXPECT_EQ(Status(), "No available COM ports detected.");
  EXPECT_EQ(RowsShown(), 0);
  EXPECT_TRUE(BecomesHigh(90)) << OuterSize(*window).height();
  EXPECT_FALSE(Button(kSet).isEnabled());
  EXPECT_FALSE(Button(kSet).isVisible());
  EXPECT_FALSE(Button(kOk).isVisible());
  EXPECT_EQ(window->windowTitle(), "Quarn - Detailed COM Port List  (NONE)  ");
  QTest::keyClick(window, Qt::Key_Escape);
  EXPECT_TRUE(IsGone());
}

TEST_F(PortDetailsDialog, HeightFollowsTheRows) {
  ListOnly(3);
  Open();
  EXPECT_EQ(Status(), "Select a port from the list below.");
  const auto rowsTop = [this] {
    return Control<QLabel>(*window, kStatus)->geometry().bottom() + 1 +
           MapDialogUnits(window->font(), {0, 0, 0, 4}).height();
  };
  const int pitch = MapDialogUnits(window->font(), {0, 0, 0, 16}).height();
  const int row = MapDialogUnits(window->font(), {0, 0, 0, 14}).height();
  EXPECT_TRUE(BecomesHigh(rowsTop() + 3 * pitch + row + 53)) << OuterSize(*window).height();
  const int width = window->width();
  ListOnly(5);
  program.state.requests.detailedListRefresh = true;
  EXPECT_TRUE(QTest::qWaitFor([&] { return RowsShown() == 5; }));
  EXPECT_TRUE(BecomesHigh(rowsTop() + 5 * pitch + row + 53)) << OuterSize(*window).height();
  EXPECT_EQ(window->width(), width);
}

TEST_F(PortDetailsDialog, MarksTheCurrentPort) {
  Plug("COM3");
  Plug("COM12");
  ConnectTo("COM12");
  program.state.requests.detailedListClose = true;
  Open();
  EXPECT_TRUE(program.state.open.detailedPortList);
  EXPECT_FALSE(program.state.requests.detailedListClose);
  EXPECT_EQ(Checked(), QList<int>{1});
  EXPECT_FALSE(Button(kSet).isEnabled());
  EXPECT_EQ(window->windowTitle(), "Quarn - Detailed COM Port List  (COM12)  ");
}

TEST_F(PortDetailsDialog, MarksNothingWithoutACurrentPort) {
  Plug("COM3");
  Open();
  EXPECT_EQ(Checked(), QList<int>());
  EXPECT_FALSE(Button(kSet).isEnabled());
}

TEST_F(PortDetailsDialog, SetIsForTheConfiguredPortWhileItIsNotConnected) {
  Plug("COM3");
  Configure("COM3");
  Open();
  EXPECT_EQ(window->windowTitle(), "Quarn - Detailed COM Port List  (COM3-NC)  ");
  EXPECT_TRUE(Button(kSet).isEnabled());
  Click(kSet);
  EXPECT_EQ(Happened(), (QStringList{"pause 500", ChoiceConnected("COM3")}));
  EXPECT_FALSE(Button(kSet).isEnabled());
}

TEST_F(PortDetailsDialog, ClickedRowIsConnectedBySet) {
  Plug("COM3");
  Plug("COM4");
  ConnectTo("COM3");
  Open();
  ClickRadio(1);
  EXPECT_EQ(Checked(), QList<int>{1});
  EXPECT_TRUE(Button(kSet).isEnabled());
  WaitForATick();
  EXPECT_EQ(Checked(), QList<int>{1});
  EXPECT_TRUE(Button(kSet).isEnabled());
  QString title;
  pause.during = [&] { title = window->windowTitle(); };
  Click(kSet);
  EXPECT_EQ(title, "Quarn - Detailed COM Port List  (COM3)   Connecting Port ... ");
  EXPECT_EQ(Happened(), (QStringList{"pause 500", ChoiceConnected("COM4")}));
  EXPECT_EQ(WorkingFile(), FileWith({{"COM_PORT", "COM4"}}));
  EXPECT_EQ(Checked(), QList<int>{1});
  EXPECT_EQ(window->windowTitle(), "Quarn - Detailed COM Port List  (COM4)  ");
  EXPECT_FALSE(Button(kSet).isEnabled());
}

TEST_F(PortDetailsDialog, ClickOnADescriptionIsAClickOnItsRow) {
  ListOnly(3);
  Open();
  QTest::mouseClick(&Description(2), Qt::LeftButton);
  EXPECT_EQ(Checked(), QList<int>{2});
  EXPECT_TRUE(Button(kSet).isEnabled());
}

TEST_F(PortDetailsDialog, ArrowKeysGoFromRowToRow) {
  ListOnly(3);
  Configure("COM1");
  Open();
  Radio(0).setFocus();
  Press(Qt::Key_Down);
  EXPECT_EQ(Checked(), QList<int>{1});
  Press(Qt::Key_Tab);
  EXPECT_EQ(QApplication::focusWidget(), &Button(kSet));
  Press(Qt::Key_Tab);
  EXPECT_EQ(QApplication::focusWidget(), &Button(kOk));
}

TEST_F(PortDetailsDialog, ConnectedPortCannotBeSetAgain) {
  Plug("COM3");
  ConnectTo("COM3");
  Open();
  ClickRadio(0);
  EXPECT_FALSE(Button(kSet).isEnabled());
  WaitForATick();
  Click(kSet);
  EXPECT_EQ(Happened(), QStringList());
}

TEST_F(PortDetailsDialog, PortHeldByAnotherProcessIsReportedAndTheFormerIsOpenAgain) {
  Plug("COM3");
  Plug("COM4");
  // First, or the other process has a copy of the line that is open here.
  const auto holder = HeldByAnother(1);
  ConnectTo("COM3");
  const std::string before = WorkingFile();
  Open();
  ClickRadio(1);
  Click(kSet);
  EXPECT_EQ(Happened(), (QStringList{"pause 500", ChoiceFailed("COM4", "")}));
  EXPECT_TRUE(program.connection.connected);
  EXPECT_TRUE(program.connection.handle.IsOpen());
  EXPECT_EQ(program.state.currentPortName, "COM3");
  EXPECT_EQ(Checked(), QList<int>{0});
  EXPECT_EQ(WorkingFile(), before);
}

TEST_F(PortDetailsDialog, PortThatVanishesBetweenClickAndSetIsRefused) {
  Plug("COM3");
  Plug("COM4");
  ConnectTo("COM3");
  Open();
  ClickRadio(1);
  Unplug("COM4");
  Click(kSet);
  EXPECT_EQ(Happened(), (QStringList{"pause 500", ChoiceFailed("COM4", "")}));
  EXPECT_EQ(RowsShown(), 1);
  EXPECT_TRUE(program.connection.handle.IsOpen());
}

TEST_F(PortDetailsDialog, ListChangeShowsTheCurrentPortAgain) {
  Plug("COM3");
  Plug("COM4");
  ConnectTo("COM3");
  Open();
  ClickRadio(1);
  Unplug("COM4");
  program.state.requests.detailedListRefresh = true;
  EXPECT_TRUE(QTest::qWaitFor([&] { return RowsShown() == 1; }));
  EXPECT_EQ(Checked(), QList<int>{0});
  EXPECT_FALSE(Button(kSet).isEnabled());
  Unplug("COM3");
  program.state.requests.detailedListRefresh = true;
  EXPECT_TRUE(QTest::qWaitFor([&] { return Status() == "No available COM ports detected."; }));
  EXPECT_TRUE(BecomesHigh(90)) << OuterSize(*window).height();
}

TEST_F(PortDetailsDialog, OkWithoutAChangeClosesWithoutAQuestion) {
  Plug("COM3");
  ConnectTo("COM3");
  Open();
  Radio(0).setFocus();
  Press(Qt::Key_Return);
  EXPECT_TRUE(IsGone());
  EXPECT_EQ(Happened(), QStringList());
  EXPECT_FALSE(program.state.open.detailedPortList);
  EXPECT_TRUE(program.state.requests.mainRefresh);
}

TEST_F(PortDetailsDialog, OkAsksBeforeItConnects) {
  Plug("COM3");
  for (const bool yes : {false, true}) {
    messages.answers = {yes};
    Open();
    ClickRadio(0);
    Click(kOk);
    EXPECT_TRUE(IsGone());
    EXPECT_EQ(Happened(), yes ? (QStringList{kApplyQuestion, "pause 500", ChoiceConnected("COM3")})
                              : QStringList{kApplyQuestion});
    EXPECT_EQ(WorkingFile(), FileWith({{"COM_PORT", yes ? "COM3" : "NONE"}}));
    EXPECT_EQ(program.connection.connected, yes);
  }
}

TEST_F(PortDetailsDialog, ClosesByItsBoxAndByRequest) {
  for (const int way : {0, 1, 2}) {
    ListOnly(2);
    Open();
    program.state.requests.mainRefresh = false;
    if (way == 0) Press(Qt::Key_Escape);
    if (way == 1) window->close();
    if (way == 2) program.state.requests.detailedListClose = true;
    EXPECT_TRUE(IsGone()) << way;
    EXPECT_FALSE(program.state.open.detailedPortList) << way;
    EXPECT_FALSE(program.state.requests.detailedListClose) << way;
    EXPECT_EQ(program.state.requests.mainRefresh, way == 2) << way;
  }
}

TEST_F(PortDetailsDialog, NothingSlipsIntoAConnectThatIsUnderWay) {
  Plug("COM3");
  Plug("COM4");
  Open();
  ClickRadio(0);
  whileShown = [this] {
    ASSERT_TRUE(window);
    program.state.requests.detailedListClose = true;
    Button(kSet).click();
    Button(kOk).click();
    QTest::keyClick(window, Qt::Key_Escape);
    WaitForATick();
    ASSERT_TRUE(window) << "destroyed under its own message";
    EXPECT_TRUE(window->isVisible());
  };
  Click(kSet);
  EXPECT_TRUE(IsGone()) << "the close was put off, not forgotten";
  EXPECT_EQ(Happened(), (QStringList{"pause 500", ChoiceConnected("COM3")}));
}

TEST_F(PortDetailsDialog, LongDescriptionsAreWholeInTheToolTip) {
  ports.names = {QStringLiteral("COM1")};
  List();
  ports.names = {QString(60, u'W') + QStringLiteral("<b>) - /dev/ttyUSB0 (COM1")};
  Open();
  const QString whole = QStringLiteral("Adapter (%1)").arg(ports.names.first());
  EXPECT_LE(Description(0).sizeHint().width(), Description(0).width());
  EXPECT_TRUE(Description(0).text().endsWith("(COM1)"));
  EXPECT_TRUE(Description(0).text().contains(QChar(0x2026)));
  EXPECT_EQ(Description(0).toolTip(), whole.toHtmlEscaped());
  EXPECT_EQ(Description(0).accessibleName(), whole);
}

TEST_F(PortDetailsDialog, RowsScrollWhereTheScreenIsTooLow) {
  ListOnly(30);
  Configure("COM30");
  for (const int percent : {100, 150}) {
    const FontScale scale(percent);
    Open();
    EXPECT_EQ(RowsShown(), 30);
    const QRect available = window->screen()->availableGeometry();
    EXPECT_LE(OuterSize(*window).height(), available.height());
    EXPECT_TRUE(window->rect().contains(Button(kOk).geometry()));
    auto* scroll = window->findChild<QScrollArea*>();
    EXPECT_GT(scroll->verticalScrollBar()->maximum(), 0);
    // The current port is in sight.
    const QRect row(Radio(29).mapTo(scroll->viewport(), QPoint(0, 0)), Radio(29).size());
    EXPECT_TRUE(scroll->viewport()->rect().intersects(row));
    EXPECT_EQ(Button(kOk).geometry().intersects(scroll->geometry()), false);
    delete window;
  }
}

TEST_F(PortDetailsDialog, NothingIsClippedWithLargerFonts) {
  for (const int percent : {100, 150}) {
    const FontScale scale(percent);
    for (const int count : {0, 1, 5}) {
      ListOnly(count);
      Open();
      ExpectNothingClipped(*window);
      for (int i = 0; i < count; ++i) EXPECT_GE(Radio(i).width(), Radio(i).sizeHint().width());
      if (count > 0) {
        EXPECT_GE(Button(kSet).width(), Button(kSet).minimumSizeHint().width());
        EXPECT_GE(Button(kSet).height(), Button(kSet).fontMetrics().height());
      }
      EXPECT_EQ(window->minimumSize(), window->maximumSize());
      delete window;
    }
  }
}

}  // namespace
}  // namespace quarn::test
