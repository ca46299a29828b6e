#include "ui/message_dialogs.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QLabel>
#include <QPushButton>
#include <QScreen>
#include <QTest>

#include "ui/control.h"
#include "ui/placement.h"

namespace quarn::test {
namespace {

template <typename Widget>
Widget* Control(const QWidget& dialog, int controlId) {
  for (Widget* each : dialog.findChildren<Widget*>()) {
    if (each->property(kControlIdProperty) == controlId) return each;
  }
  ADD_FAILURE() << "no control " << controlId;
  return nullptr;
}

const QString kError = QStringLiteral(": Error");
const QString kA = QStringLiteral("line zero");
const QString kB = QStringLiteral("line one");
const QString kC = QStringLiteral("line two");

void Show(QDialog& dialog) {
  dialog.show();
  dialog.activateWindow();
  ASSERT_TRUE(QTest::qWaitForWindowActive(&dialog));
}

TEST(MessageDialogs, TheCaptionIsTheNameABlankAndTheSuffix) {
  CConfirmErr box(nullptr, kError, kA, kB, kC);
  EXPECT_EQ(box.windowTitle(), QStringLiteral("Quarn : Error"));
  EXPECT_EQ(MessageCaption(QStringLiteral(": Confirmation")), QStringLiteral("Quarn : Confirmation"));
}

TEST(MessageDialogs, LinesStandInTheOrderOneZeroTwo) {
  CConfirmErr box(nullptr, kError, kA, kB, kC);
  Show(box);
  EXPECT_EQ(Control<QLabel>(box, 1051)->text(), kB);
  EXPECT_EQ(Control<QLabel>(box, 1053)->text(), kA);
  EXPECT_EQ(Control<QLabel>(box, 1052)->text(), kC);
  EXPECT_LT(Control<QLabel>(box, 1051)->y(), Control<QLabel>(box, 1053)->y());
  EXPECT_LT(Control<QLabel>(box, 1053)->y(), Control<QLabel>(box, 1052)->y());
  EXPECT_FALSE(Control<QLabel>(box, 1022)->pixmap(Qt::ReturnByValue).isNull());
}

TEST(MessageDialogs, AnEmptyLineTakesNoRoom) {
  CConfirmOK two(nullptr, kError, QString(), kB, kC);
  CConfirmOK three(nullptr, kError, kA, kB, kC);
  Show(two);
  Show(three);
  EXPECT_LT(two.height(), three.height());
  EXPECT_FALSE(Control<QLabel>(two, 1053)->isVisible());
}

TEST(MessageDialogs, LongTextAndMarkupAreShownWhole) {
  const QString text = QStringLiteral("<b>") + QString(150, u'W') + QStringLiteral("</b>");
  CConfirmErr box(nullptr, kError, text, kB, kC);
  Show(box);
  const auto* label = Control<QLabel>(box, 1053);
  EXPECT_GE(label->width(), label->fontMetrics().horizontalAdvance(text));
  EXPECT_TRUE(box.rect().contains(label->geometry()));
}

TEST(MessageDialogs, ReturnAndEscapeCloseAnErrorBox) {
  for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Escape}) {
    CConfirmErr box(nullptr, kError, kA, kB, kC);
    Show(box);
    QTest::keyClick(QApplication::focusWidget(), key);
    EXPECT_FALSE(box.isVisible());
  }
}

TEST(MessageDialogs, AConfirmationAnswersOneForOkOnly) {
  const auto answer = [](auto action) {
    CConfirmYesCancel box(nullptr, QStringLiteral(": Confirmation"), kA, QString(), QString());
    Show(box);
    action(box);
    EXPECT_FALSE(box.isVisible());
    return box.Answer();
  };
  EXPECT_EQ(answer([](auto& box) { QTest::mouseClick(Control<QPushButton>(box, 1), Qt::LeftButton); }), 1);
  EXPECT_EQ(answer([](auto& box) { QTest::mouseClick(Control<QPushButton>(box, 1314), Qt::LeftButton); }), 0);
  EXPECT_EQ(answer([](auto& box) { box.close(); }), 0);
  EXPECT_EQ(answer([](auto&) { QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return); }), 1);
  EXPECT_EQ(answer([](auto&) { QTest::keyClick(QApplication::focusWidget(), Qt::Key_Escape); }), 0);
}

TEST(MessageDialogs, TheConfirmationsControls) {
  CConfirmYesCancel box(nullptr, QStringLiteral(": Confirmation"), kA, kB, kC);
  EXPECT_EQ(Control<QLabel>(box, 1081)->text(), kB);
  EXPECT_EQ(Control<QLabel>(box, 1079)->text(), kA);
  EXPECT_EQ(Control<QLabel>(box, 1080)->text(), kC);
  EXPECT_EQ(Control<QPushButton>(box, 1)->text(), QStringLiteral("OK"));
  EXPECT_EQ(Control<QPushButton>(box, 1314)->text(), QStringLiteral("CANCEL"));
  EXPECT_TRUE(Control<QPushButton>(box, 1)->isDefault());
}

TEST(MessageDialogs, ATransientMessageGoesByItself) {
  COneshotMsgPos box(nullptr, kA, std::nullopt, 50);
  EXPECT_EQ(box.windowTitle(), QStringLiteral("Quarn : Infomation"));
  EXPECT_EQ(Control<QLabel>(box, 1067)->text(), kA);
  Show(box);
  EXPECT_TRUE(QTest::qWaitFor([&] { return !box.isVisible(); }));
}

TEST(MessageDialogs, ATransientMessageStaysTwoSeconds) {
  COneshotMsgPos box(nullptr, kA, std::nullopt);
  QElapsedTimer clock;
  clock.start();
  box.exec();
  EXPECT_GE(clock.elapsed(), 1950);
}

TEST(MessageDialogs, StandsCentredOrWhereItWasPut) {
  CConfirmOK centred(nullptr, kError, kA, kB, kC);
  Show(centred);
  const QSize screen = QGuiApplication::primaryScreen()->geometry().size();
  EXPECT_EQ(centred.pos(), CentredPosition(screen, OuterSize(centred)));
  COneshotMsgPos placed(nullptr, kA, QPoint(33, 44));
  Show(placed);
  EXPECT_EQ(placed.pos(), QPoint(33, 44));
}

}  // namespace
}  // namespace quarn::test
