#include "app/about_box.h"

#include <gtest/gtest.h>

#include <QAccessible>
#include <QPushButton>
#include <QScreen>
#include <QUrl>

#include "identity.h"
#include "support/dialog_controls.h"
#include "support/recorded_messages.h"
#include "support/waits.h"
#include "support/window_places.h"
#include "ui/placement.h"

namespace quarn::test {
namespace {

constexpr int kLink = 1170;

class AboutBox : public testing::Test {
 protected:
  /// A browser that notes what it is to show.
  LinkOpener Browser() {
    return [this](const QUrl& page) {
      m_opened.append(page);
      return m_browserWorks;
    };
  }

  QList<QUrl> m_opened;
  bool m_browserWorks = true;
  RecordedMessages m_messages;
  CAboutBox m_box{Browser(), m_messages};

  QLabel* Label(int id) { return Control<QLabel>(m_box, id); }
  void FocusTheLink() {
    ShowActive(m_box);
    Press(Qt::Key_Tab);
    ASSERT_TRUE(Label(kLink)->hasFocus());
  }
};

TEST_F(AboutBox, SaysWhatTheProgramIs) {
  EXPECT_EQ(m_box.windowTitle(), QStringLiteral("About  Quarn - Serial Port Terminal "));
  EXPECT_EQ(Label(1165)->text(), QStringLiteral("Quarn  (Ver. 1.00)"));
  EXPECT_EQ(Label(1166)->text(), QStringLiteral("Serial Port Terminal"));
  EXPECT_EQ(Label(1169)->text(), QStringLiteral("Build ") + QLatin1String(identity::kBuildDate));
  EXPECT_EQ(Label(1168)->text(), QStringLiteral("Halvo"));
  EXPECT_EQ(m_box.findChild<QLabel*>(QStringLiteral("emptyLabel"))->text(), QString());
  EXPECT_EQ(m_box.findChild<QLabel*>(QStringLiteral("tagline"))->text(),
            QStringLiteral("Simple and high performance"));
  EXPECT_EQ(Label(kLink)->text(), QStringLiteral("https://www.halvo.example"));
  EXPECT_EQ(Control<QPushButton>(m_box, 1)->text(), QStringLiteral("OK"));
}

TEST_F(AboutBox, OnlyTheNameIsBold) {
  for (const QLabel* label : m_box.findChildren<QLabel*>()) {
    EXPECT_EQ(label->font().weight() == QFont::Bold, label == Label(1165)) << label->text().toStdString();
  }
}

TEST_F(AboutBox, OnlyTheLinkIsBlueUnderlinedAndUnderAHand) {
  const QColor usual = m_box.palette().color(QPalette::WindowText);
  for (const QLabel* label : m_box.findChildren<QLabel*>()) {
    const bool link = label == Label(kLink);
    EXPECT_EQ(label->font().underline(), link);
    EXPECT_EQ(label->palette().color(QPalette::WindowText), link ? QColor(0, 0, 255) : usual);
    EXPECT_EQ(label->cursor().shape(), link ? Qt::PointingHandCursor : Qt::ArrowCursor);
  }
}

TEST_F(AboutBox, TheLinkIsDrawnBlue) {
  ShowActive(m_box);
  const QImage image = Label(kLink)->grab().toImage();
  bool blue = false;
  for (int y = 0; y < image.height(); ++y) {
    for (int x = 0; x < image.width(); ++x) blue = blue || image.pixelColor(x, y) == QColor(0, 0, 255);
  }
  EXPECT_TRUE(blue);
}

TEST_F(AboutBox, AClickOpensTheSecondAddressAndMarksTheLinkAsVisited) {
  ShowActive(m_box);
  EXPECT_FALSE(m_box.LinkVisited());
  QTest::mouseClick(Label(kLink), Qt::LeftButton);
  EXPECT_EQ(m_opened, QList<QUrl>{QUrl(QStringLiteral("https://www.halvo.example/quarn"))});
  EXPECT_TRUE(m_box.LinkVisited());
  EXPECT_TRUE(m_box.isVisible());
  EXPECT_EQ(Label(kLink)->palette().color(QPalette::WindowText), QColor(0, 0, 255));
  QTest::mouseClick(Label(kLink), Qt::LeftButton);
  EXPECT_EQ(m_opened.size(), 2);
  EXPECT_TRUE(m_messages.shown.isEmpty());
}

TEST_F(AboutBox, OtherButtonsOtherPlacesAndSlidingOffOpenNothing) {
  ShowActive(m_box);
  QTest::mouseClick(Label(kLink), Qt::RightButton);
  QTest::mouseClick(Label(1165), Qt::LeftButton);
  QTest::mousePress(Label(kLink), Qt::LeftButton);
  QTest::mouseRelease(Label(kLink), Qt::LeftButton, {}, Label(kLink)->rect().bottomRight() + QPoint(9, 9));
  QTest::mouseRelease(Label(kLink), Qt::LeftButton);
  EXPECT_TRUE(m_opened.isEmpty());
}

TEST_F(AboutBox, TheLinkIsReachedAndOpenedWithKeysAlone) {
  FocusTheLink();
  for (const Qt::Key key : {Qt::Key_Space, Qt::Key_Return, Qt::Key_Enter}) Press(key);
  EXPECT_EQ(m_opened.size(), 3);
  EXPECT_TRUE(m_box.isVisible()) << "Enter on the link does not press OK";
  Press(Qt::Key_A);
  EXPECT_EQ(m_opened.size(), 3);
  Press(Qt::Key_Tab);
  EXPECT_TRUE(Control<QPushButton>(m_box, 1)->hasFocus());
}

TEST_F(AboutBox, TheLinkShowsThatItHasTheFocus) {
  ShowActive(m_box);
  const QImage without = Label(kLink)->grab().toImage();
  Press(Qt::Key_Tab);
  EXPECT_NE(Label(kLink)->grab().toImage(), without);
}

TEST_F(AboutBox, WithoutABrowserThereIsAnErrorAndNothingElse) {
  m_browserWorks = false;
  ShowActive(m_box);
  QTest::mouseClick(Label(kLink), Qt::LeftButton);
  EXPECT_EQ(m_messages.shown,
            QStringList{QStringLiteral("error/: Error//The web browser could not be opened./"
                                       "https://www.halvo.example/quarn")});
  EXPECT_FALSE(m_box.LinkVisited());
  EXPECT_TRUE(m_box.isVisible());
}

TEST_F(AboutBox, OkEnterEscapeAndTheCloseBoxEndItAndDoNothingElse) {
  const auto ends = [&](auto action) {
    CAboutBox box(Browser(), m_messages);
    ShowActive(box);
    action(box);
    EXPECT_FALSE(box.isVisible());
  };
  ends([](CAboutBox& box) { QTest::mouseClick(Control<QPushButton>(box, 1), Qt::LeftButton); });
  ends([](CAboutBox&) { Press(Qt::Key_Return); });
  ends([](CAboutBox&) { Press(Qt::Key_Escape); });
  ends([](CAboutBox& box) { box.close(); });
  EXPECT_TRUE(m_opened.isEmpty());
  EXPECT_TRUE(m_messages.shown.isEmpty());
}

TEST_F(AboutBox, StandsWhereMessagesDo) {
  ShowActive(m_box);
  // The frame may be known a moment later than the window is there.
  EXPECT_TRUE(StandsOnScreen(m_box, [&](QSize screen) { return CentredPosition(screen, OuterSize(m_box)); }));
  EXPECT_FALSE(m_box.windowFlags() & Qt::WindowMinMaxButtonsHint);
  EXPECT_TRUE(m_box.isModal());
}

TEST_F(AboutBox, NothingIsClippedAtAnyFontSize) {
  for (const int percent : {100, 125, 150, 175}) {
    const FontScale scale(percent);
    CAboutBox box(Browser(), m_messages);
    ShowActive(box);
    ExpectNothingClipped(box);
  }
}

TEST_F(AboutBox, CanBeReadAloud) {
  const auto name = [](QWidget* widget) {
    return QAccessible::queryAccessibleInterface(widget)->text(QAccessible::Name);
  };
  EXPECT_EQ(name(Label(1165)), QStringLiteral("Quarn  (Ver. 1.00)"));
  EXPECT_EQ(name(Label(kLink)), QStringLiteral("https://www.halvo.example"));
  EXPECT_EQ(name(m_box.findChild<QLabel*>(QStringLiteral("logo"))), QStringLiteral("Quarn"));
}

TEST_F(AboutBox, TheLinkFollowsALargerFontWhileItIsShown) {
  ShowActive(m_box);
  const QSize before = Label(kLink)->sizeHint();
  const FontScale scale(200);
  EXPECT_TRUE(WaitUntil([&] { return Label(kLink)->width() > before.width() * 3 / 2; }));
  EXPECT_GE(Label(kLink)->height(), before.height() * 3 / 2);
}

TEST_F(AboutBox, TheLogoHasItsSizeInDialogUnits) {
  for (const int percent : {100, 150}) {
    const FontScale scale(percent);
    const CAboutBox box(Browser(), m_messages);
    const int side = MapDialogUnits(box.font(), {0, 0, 0, 44}).height();
    const auto* logo = box.findChild<QLabel*>(QStringLiteral("logo"));
    EXPECT_EQ(logo->pixmap(Qt::ReturnByValue).deviceIndependentSize().toSize(), QSize(side, side));
  }
}

}  // namespace
}  // namespace quarn::test
