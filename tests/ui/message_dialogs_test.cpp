#include "ui/message_dialogs.h"

#include <gtest/gtest.h>

#include <QAccessible>
#include <QLineEdit>
#include <QPushButton>
#include <QScreen>
#include <QVBoxLayout>

#include "support/dialog_controls.h"
#include "support/window_places.h"
#include "ui/controls.h"
#include "ui/placement.h"

namespace quarn::test {
namespace {

const QString kError = QStringLiteral(": Error");
const QString kA = QStringLiteral("line zero");
const QString kB = QStringLiteral("line one");
const QString kC = QStringLiteral("line two");

int Top(const QWidget& dialog, int controlId) {
  return Control<QLabel>(dialog, controlId)->mapTo(&dialog, QPoint(0, 0)).y();
}

QString Text(const QWidget& dialog, int controlId) { return Control<QLabel>(dialog, controlId)->text(); }

TEST(MessageDialogs, TheCaptionIsTheNameABlankAndTheSuffix) {
  EXPECT_EQ(CConfirmErr(nullptr, kError, kA, kB, kC).windowTitle(), QStringLiteral("Quarn : Error"));
  EXPECT_EQ(CConfirmOK(nullptr, QStringLiteral(": Information"), kA, kB, kC).windowTitle(),
            QStringLiteral("Quarn : Information"));
  EXPECT_EQ(CConfirmOK(nullptr, QStringLiteral(": Warning"), kA, kB, kC).windowTitle(),
            QStringLiteral("Quarn : Warning"));
  EXPECT_EQ(CConfirmYesCancel(nullptr, QStringLiteral(": Confirmation"), kA, kB, kC).windowTitle(),
            QStringLiteral("Quarn : Confirmation"));
  EXPECT_EQ(CConfirmYesNo(nullptr, QStringLiteral(": Confirmation"), kA, kB, kC).windowTitle(),
            QStringLiteral("Quarn : Confirmation"));
}

TEST(MessageDialogs, TheFixedCaptions) {
  EXPECT_EQ(CConfirmSimple(nullptr).windowTitle(), QStringLiteral("Quarn - Confirmation"));
  EXPECT_EQ(CYesNo(nullptr).windowTitle(), QStringLiteral("Quarn -  Confirmation"));
  EXPECT_EQ(COneshotMsgPos(nullptr, kA, std::nullopt).windowTitle(), QStringLiteral("Quarn : Infomation"));
}

TEST(MessageDialogs, AnErrorHasItsLinesInTheOrderOneZeroTwoAndAPicture) {
  CConfirmErr box(nullptr, kError, kA, kB, kC);
  ShowActive(box);
  EXPECT_EQ(Text(box, 1051), kB);
  EXPECT_EQ(Text(box, 1053), kA);
  EXPECT_EQ(Text(box, 1052), kC);
  EXPECT_LT(Top(box, 1051), Top(box, 1053));
  EXPECT_LT(Top(box, 1053), Top(box, 1052));
  EXPECT_EQ(Control<QPushButton>(box, 1)->text(), QStringLiteral("OK"));
  const auto* picture = Control<QLabel>(box, 1022);
  EXPECT_LE(picture->geometry().right(), Control<QLabel>(box, 1051)->mapTo(&box, QPoint(0, 0)).x());
}

TEST(MessageDialogs, TheErrorsPictureHasItsSizeInDialogUnits) {
  for (const int percent : {100, 150}) {
    const FontScale scale(percent);
    CConfirmErr box(nullptr, kError, kA, kB, kC);
    const QSize room = MapDialogUnits(box.font(), {0, 0, 23, 20}).size();
    const QSizeF size = Control<QLabel>(box, 1022)->pixmap(Qt::ReturnByValue).deviceIndependentSize();
    EXPECT_TRUE(qFuzzyCompare(size.width(), room.width()) || qFuzzyCompare(size.height(), room.height()));
    EXPECT_LE(size.width(), room.width());
    EXPECT_LE(size.height(), room.height());
  }
}

TEST(MessageDialogs, InformationHasItsLinesInTheOrderOneZeroTwoAndNoPicture) {
  CConfirmOK box(nullptr, QStringLiteral(": Information"), kA, kB, kC);
  ShowActive(box);
  EXPECT_EQ(Text(box, 1051), kB);
  EXPECT_EQ(Text(box, 1053), kA);
  EXPECT_EQ(Text(box, 1052), kC);
  EXPECT_LT(Top(box, 1051), Top(box, 1053));
  EXPECT_LT(Top(box, 1053), Top(box, 1052));
  EXPECT_EQ(box.findChild<QLabel*>(QStringLiteral("picture")), nullptr);
  EXPECT_EQ(box.findChildren<QPushButton*>().size(), 1);
}

TEST(MessageDialogs, AQuestionHasItsLinesInTheOrderOneZeroTwo) {
  CConfirmYesCancel box(nullptr, QStringLiteral(": Confirmation"), kA, kB, kC);
  ShowActive(box);
  EXPECT_EQ(Text(box, 1081), kB);
  EXPECT_EQ(Text(box, 1079), kA);
  EXPECT_EQ(Text(box, 1080), kC);
  EXPECT_LT(Top(box, 1081), Top(box, 1079));
  EXPECT_LT(Top(box, 1079), Top(box, 1080));
  EXPECT_EQ(Control<QPushButton>(box, 1)->text(), QStringLiteral("OK"));
  EXPECT_EQ(Control<QPushButton>(box, 1314)->text(), QStringLiteral("CANCEL"));
}

TEST(MessageDialogs, TheSimpleQuestionsAskTheirOwnOrTheirCallersQuestion) {
  const CConfirmSimple simple(nullptr);
  EXPECT_EQ(Text(simple, 1064), QStringLiteral("OK to execute ?"));
  EXPECT_EQ(Control<QPushButton>(simple, 1)->text(), QStringLiteral("OK"));
  EXPECT_EQ(Control<QPushButton>(simple, 2)->text(), QStringLiteral("CANCEL"));
  const CYesNo yesNo(nullptr);
  EXPECT_EQ(Text(yesNo, 1064), QStringLiteral("OK to execute ?"));
  EXPECT_EQ(Control<QPushButton>(yesNo, 1066)->text(), QStringLiteral("YES"));
  EXPECT_EQ(Control<QPushButton>(yesNo, 2)->text(), QStringLiteral("NO"));
  EXPECT_EQ(Text(CConfirmSimple(nullptr, kA), 1064), kA);
  EXPECT_EQ(Text(CYesNo(nullptr, kA), 1064), kA);
}

TEST(MessageDialogs, AnEmptyLineTakesNoRoom) {
  CConfirmOK three(nullptr, kError, kA, kB, kC);
  CConfirmOK withoutZero(nullptr, kError, QString(), kB, kC);
  CConfirmOK withoutTwo(nullptr, kError, kA, kB, QString());
  CConfirmOK one(nullptr, kError, QString(), kB, QString());
  for (QDialog* each : {&three, &withoutZero, &withoutTwo, &one}) ShowActive(*each);
  EXPECT_FALSE(Control<QLabel>(withoutZero, 1053)->isVisible());
  EXPECT_FALSE(Control<QLabel>(withoutTwo, 1052)->isVisible());
  EXPECT_LT(withoutZero.height(), three.height());
  EXPECT_EQ(withoutZero.height(), withoutTwo.height());
  EXPECT_LT(one.height(), withoutZero.height());
  EXPECT_EQ(Top(withoutZero, 1052), Top(three, 1053));
}

TEST(MessageDialogs, HaveACloseBoxAndNothingElse) {
  const CConfirmErr error(nullptr, kError, kA, kB, kC);
  const CConfirmOK information(nullptr, kError, kA, kB, kC);
  const CConfirmYesCancel confirmation(nullptr, kError, kA, kB, kC);
  const CConfirmYesNo question(nullptr, kError, kA, kB, kC);
  const CConfirmSimple simple(nullptr);
  const CYesNo yesNo(nullptr);
  const COneshotMsgPos transient(nullptr, kA, std::nullopt);
  for (const MessageDialog* box : std::initializer_list<const MessageDialog*>{
           &error, &information, &confirmation, &question, &simple, &yesNo, &transient}) {
    const Qt::WindowFlags flags = box->windowFlags();
    EXPECT_TRUE(flags.testFlag(Qt::WindowCloseButtonHint)) << box->objectName().toStdString();
    EXPECT_FALSE(flags & (Qt::WindowMinMaxButtonsHint | Qt::WindowContextHelpButtonHint));
    EXPECT_TRUE(box->isModal());
  }
}

TEST(MessageDialogs, EveryPartCanBeReadAloud) {
  CConfirmErr box(nullptr, kError, kA, kB, QString());
  ShowActive(box);
  const auto name = [](QWidget* widget) {
    return QAccessible::queryAccessibleInterface(widget)->text(QAccessible::Name);
  };
  EXPECT_EQ(name(&box), QStringLiteral("Quarn : Error"));
  EXPECT_EQ(box.accessibleDescription(), kB + QLatin1Char('\n') + kA);
  EXPECT_EQ(name(Control<QLabel>(box, 1051)), kB);
  EXPECT_EQ(name(Control<QLabel>(box, 1053)), kA);
  EXPECT_EQ(name(Control<QLabel>(box, 1022)), QStringLiteral("Warning"));
  EXPECT_EQ(name(Control<QPushButton>(box, 1)), QStringLiteral("OK"));
}

TEST(MessageDialogs, PartsHaveNamesThatSpeak) {
  const CConfirmErr error(nullptr, kError, kA, kB, kC);
  EXPECT_EQ(error.objectName(), QStringLiteral("CConfirmErr"));
  EXPECT_EQ(Control<QLabel>(error, 1053)->objectName(), QStringLiteral("line0"));
  EXPECT_EQ(Control<QLabel>(error, 1051)->objectName(), QStringLiteral("line1"));
  EXPECT_EQ(Control<QLabel>(error, 1052)->objectName(), QStringLiteral("line2"));
  EXPECT_EQ(Control<QPushButton>(error, 1)->objectName(), QStringLiteral("okButton"));
  const CYesNo question(nullptr);
  EXPECT_EQ(question.objectName(), QStringLiteral("CYesNo"));
  EXPECT_EQ(Control<QLabel>(question, 1064)->objectName(), QStringLiteral("message"));
  EXPECT_EQ(Control<QPushButton>(question, 1066)->objectName(), QStringLiteral("yesButton"));
  EXPECT_EQ(Control<QPushButton>(question, 2)->objectName(), QStringLiteral("noButton"));
}

TEST(MessageDialogs, StandCentredOrWhereTheyWerePut) {
  CConfirmOK centred(nullptr, kError, kA, kB, kC);
  ShowActive(centred);
  EXPECT_TRUE(
      StandsOnScreen(centred, [&](QSize screen) { return CentredPosition(screen, OuterSize(centred)); }));
  COneshotMsgPos placed(nullptr, kA, QPoint(33, 44));
  ShowActive(placed);
  EXPECT_TRUE(StandsAt(placed, [] { return QPoint(33, 44); }));
  COneshotMsgPos unplaced(nullptr, kA, std::nullopt);
  ShowActive(unplaced);
  EXPECT_TRUE(
      StandsOnScreen(unplaced, [&](QSize screen) { return CentredPosition(screen, OuterSize(unplaced)); }));
}

/// The picture of a button of this kind in an active dialog.
template <typename Button>
QImage LookOf(bool hasFocus, bool isDefault) {
  QDialog dialog;
  auto* column = new QVBoxLayout(&dialog);
  auto* other = new QLineEdit(&dialog);
  auto* button = new Button(QStringLiteral("OK"), &dialog);
  button->setAutoDefault(false);
  button->setDefault(isDefault);
  column->addWidget(other);
  column->addWidget(button);
  ShowActive(dialog);
  other->setFocus();
  // The focus is drawn after a key has moved it.
  if (hasFocus) Press(Qt::Key_Tab);
  EXPECT_EQ(button->hasFocus(), hasFocus);
  return button->grab().toImage();
}

TEST(DialogButtons, OnlyTheDefaultButtonWithTheFocusHasALineOfItsOwn) {
  for (const bool hasFocus : {false, true}) {
    for (const bool isDefault : {false, true}) {
      if (hasFocus && isDefault) continue;
      EXPECT_EQ(LookOf<DialogButton>(hasFocus, isDefault), LookOf<QPushButton>(hasFocus, isDefault))
          << hasFocus << isDefault;
    }
  }
  EXPECT_NE(LookOf<DialogButton>(true, true), LookOf<DialogButton>(false, true));
}

}  // namespace
}  // namespace quarn::test
