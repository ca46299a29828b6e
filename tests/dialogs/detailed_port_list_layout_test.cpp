// How the Detailed COM Port List looks: its rows, its height, its texts.

#include <QScreen>
#include <QScrollArea>
#include <QScrollBar>

#include "dialogs/detailed_port_list_fixture.h"
#include "dialogs/serial/port_rules.h"
#include "support/waits.h"
#include "ui/placement.h"

namespace quarn::test {
namespace {

TEST_F(DetailedPortListDialog, HasThirtyRowsSixteenUnitsApart) {
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

TEST_F(DetailedPortListDialog, WithoutPortsThereIsOnlyTheStatusLine) {
  Open();
  EXPECT_EQ(Status(), "No available COM ports detected.");
  EXPECT_EQ(RowsShown(), 0);
  EXPECT_TRUE(BecomesHigh(90)) << OuterSize(*window).height();
  EXPECT_FALSE(Button(kSetId).isEnabled());
  EXPECT_FALSE(Button(kSetId).isVisible());
  EXPECT_FALSE(Button(kOkId).isVisible());
  EXPECT_FALSE(window->findChild<QScrollArea*>()->isVisible()) << "nothing to be read in it";
  EXPECT_EQ(window->windowTitle(), "Quarn - Detailed COM Port List  (NONE)  ");
  QTest::keyClick(window, Qt::Key_Escape);
  EXPECT_TRUE(IsGone());
}

TEST_F(DetailedPortListDialog, HeightFollowsTheRows) {
  ListOnly(3);
  Open();
  EXPECT_EQ(Status(), "Select a port from the list below.");
  const auto rowsTop = [this] {
    return Control<QLabel>(*window, kStatusId)->geometry().bottom() + 1 +
           MapDialogUnits(window->font(), {0, 0, 0, 4}).height();
  };
  const int pitch = MapDialogUnits(window->font(), {0, 0, 0, 16}).height();
  // The first row that is not shown counts.
  EXPECT_TRUE(BecomesHigh(rowsTop() + 4 * pitch + 53)) << OuterSize(*window).height();
  const int width = window->width();
  ListOnly(5);
  program.state.requests.refresh.Add(Window::DetailedPortList);
  EXPECT_TRUE(WaitUntil([&] { return RowsShown() == 5; }));
  EXPECT_TRUE(BecomesHigh(rowsTop() + 6 * pitch + 53)) << OuterSize(*window).height();
  EXPECT_EQ(window->width(), width);
}

TEST_F(DetailedPortListDialog, LongDescriptionsAreWholeInTheToolTip) {
  ListOnly(1);
  const QString whole = QString(40, u'W') + QStringLiteral("<b> - /dev/ttyUSB0 (COM1)");
  ports.present = {{QStringLiteral("COM1"), whole}};
  Open();
  EXPECT_LE(Description(0).sizeHint().width(), Description(0).width());
  EXPECT_TRUE(Description(0).text().endsWith("(COM1)"));
  EXPECT_TRUE(Description(0).text().contains(QChar(0x2026)));
  EXPECT_EQ(Description(0).toolTip(),
            QStringLiteral("<span style=\"white-space:pre\">%1</span>").arg(whole.toHtmlEscaped()));
  EXPECT_EQ(Description(0).accessibleName(), whole);
  EXPECT_TRUE(Description(0).text().endsWith(" - /dev/ttyUSB0 (COM1)")) << "the product gives way first";
  ports.present = {{QStringLiteral("COM1"), QString(200, u'W') + QStringLiteral(" (COM1)")}};
  program.state.requests.refresh.Add(Window::DetailedPortList);
  ASSERT_TRUE(WaitUntil([&] { return !program.state.requests.refresh.Contains(Window::DetailedPortList); }));
  EXPECT_TRUE(Description(0).text().endsWith("(COM1)"));
  EXPECT_LE(Description(0).sizeHint().width(), Description(0).width());
}

TEST_F(DetailedPortListDialog, RowsScrollWhereTheScreenIsTooLow) {
  ListOnly(30);
  Configure("COM30");
  for (const int percent : {100, 150}) {
    const FontScale scale(percent);
    Open();
    EXPECT_EQ(RowsShown(), 30);
    const QRect available = window->screen()->availableGeometry();
    EXPECT_LE(OuterSize(*window).height(), available.height());
    EXPECT_TRUE(window->rect().contains(Button(kOkId).geometry()));
    auto* scroll = window->findChild<QScrollArea*>();
    EXPECT_GT(scroll->verticalScrollBar()->maximum(), 0);
    // The current port is visible.
    const QRect row(Radio(29).mapTo(scroll->viewport(), QPoint(0, 0)), Radio(29).size());
    EXPECT_TRUE(scroll->viewport()->rect().intersects(row));
    EXPECT_EQ(Button(kOkId).geometry().intersects(scroll->geometry()), false);
    delete window;
  }
}

TEST_F(DetailedPortListDialog, NothingIsClippedWithLargerFonts) {
  for (const int percent : {100, 150}) {
    const FontScale scale(percent);
    for (const QList<Port>& present : {QList<Port>(), Adapters({"COM88", "COM99"})}) {
      ports.present = present;
      List();
      Open();
      ExpectNothingClipped(*window);
      for (int i = 0; i < present.size(); ++i) {
        EXPECT_EQ(Radio(i).text(), present.at(i).name);
        EXPECT_GE(Radio(i).width(), Radio(i).sizeHint().width());
      }
      for (const int id : {kSetId, kOkId}) {
        if (present.isEmpty()) continue;
        EXPECT_GE(Button(id).width(), Button(id).minimumSizeHint().width());
        EXPECT_GE(Button(id).height(), Button(id).minimumSizeHint().height());
        EXPECT_TRUE(window->rect().contains(Button(id).geometry()));
      }
      EXPECT_EQ(window->minimumSize(), window->maximumSize());
      delete window;
    }
  }
}

TEST_F(DetailedPortListDialog, TitleIsSeenWholeWithLargerFonts) {
  ports.present = Adapters({"COM99"});
  List();
  Configure("COM99");
  for (const int percent : {100, 150}) {
    const FontScale scale(percent);
    Open();
    EXPECT_TRUE(TitleFits(*window, window->windowTitle()));
    EXPECT_TRUE(TitleFits(*window, DetailedPortListTitle({QStringLiteral("COM99"), false, {}},
                                                         QStringLiteral(" Connecting Port ... "))));
    delete window;
  }
}

TEST_F(DetailedPortListDialog, TheButtonsStandBelowTheRowsAndNearerToThemThanToTheEdge) {
  for (const int rows : {1, 3, 7}) {
    ListOnly(rows);
    Open();
    const QRect list = window->findChild<QScrollArea*>()->geometry();
    EXPECT_EQ(list.height(), rows * MapDialogUnits(window->font(), {0, 0, 0, 16}).height()) << "all are seen";
    for (const int id : {kSetId, kOkId}) {
      const QRect button = Button(id).geometry();
      const int above = button.top() - list.bottom();
      const int below = window->rect().bottom() - button.bottom();
      EXPECT_GT(above, 0);
      EXPECT_LT(above, below);
      const QMargins frame = FrameOf(*window);
      EXPECT_EQ(below, (53 - frame.top() - frame.bottom()) * 2 / 3) << "with the frame as without one";
    }
    delete window;
  }
}

TEST_F(DetailedPortListDialog, MovesUpWhenMoreRowsWouldNotFitBelow) {
  ListOnly(1);
  Open();
  const QRect available = window->screen()->availableGeometry();
  const auto bottom = [this] { return window->y() + OuterSize(*window).height(); };
  window->move(window->x(), available.bottom() + 1 - OuterSize(*window).height());
  ASSERT_TRUE(WaitUntil([&] { return bottom() == available.bottom() + 1; }));
  ListOnly(20);
  AskForTheList();
  EXPECT_TRUE(WaitUntil([&] { return RowsShown() == 20 && bottom() <= available.bottom() + 1; }));
}

}  // namespace
}  // namespace quarn::test
