#include "ui/message_text.h"

#include <gtest/gtest.h>

#include <QPushButton>
#include <QScreen>
#include <QScrollArea>
#include <QScrollBar>

#include "support/dialog_controls.h"
#include "support/waits.h"
#include "support/window_places.h"
#include "ui/message_dialogs.h"
#include "ui/placement.h"

namespace quarn::test {
namespace {

const QString kErrorSuffix = QStringLiteral(": Error");
const QString kLongPath = QStringLiteral("/a") + QString(4000, u'W') + QStringLiteral("/end.qrn");

void ExpectOnScreen(const QWidget& box) {
  const QRect screen = QGuiApplication::primaryScreen()->geometry();
  EXPECT_TRUE(FrameIsThere(box));
  EXPECT_TRUE(WaitUntil([&] { return screen.contains(QRect(box.pos(), OuterSize(box))); }));
}

TEST(MessageText, OneLineStaysOneLine) {
  MessageText text(QStringLiteral("COM port is undefined."), nullptr);
  EXPECT_EQ(text.sizeHint().width(), text.NaturalWidth());
  EXPECT_GE(text.NaturalWidth(), text.fontMetrics().horizontalAdvance(text.text()));
  EXPECT_LE(text.sizeHint().height(), text.fontMetrics().lineSpacing() + 1);
}

TEST(MessageText, WrapsBetweenWordsWhereItCan) {
  MessageText text(QStringLiteral("aaaa bbbb"), nullptr);
  const int oneLine = text.sizeHint().height();
  text.WrapAt(text.NaturalWidth() - 2);
  EXPECT_EQ(text.sizeHint().height(), 2 * oneLine);
  EXPECT_LT(text.sizeHint().width(), text.NaturalWidth() * 2 / 3) << "one word a line";
}

TEST(MessageText, WrapsInsideAWordWhereItMust) {
  MessageText text(QString(100, u'W'), nullptr);
  const int oneLine = text.sizeHint().height();
  const int width = text.NaturalWidth() / 4 + 1;
  text.WrapAt(width);
  EXPECT_LE(text.sizeHint().width(), width);
  EXPECT_GE(text.sizeHint().height(), 4 * oneLine);
}

TEST(MessageText, LineBreaksCountWhicheverTheyAre) {
  const int oneLine = MessageText(QStringLiteral("a"), nullptr).sizeHint().height();
  for (const char* text : {"a\nb\nc", "a\r\nb\r\nc", "a\rb\rc"}) {
    EXPECT_EQ(MessageText(QString::fromLatin1(text), nullptr).sizeHint().height(), 3 * oneLine);
  }
}

TEST(MessageText, TabsTakeRoom) {
  EXPECT_GT(MessageText(QStringLiteral("a\tb"), nullptr).NaturalWidth(),
            MessageText(QStringLiteral("ab"), nullptr).NaturalWidth());
}

TEST(MessageText, IsDrawnToItsEnd) {
  MessageText text(QString(60, QChar(0x2588)), nullptr);  // solid blocks
  text.WrapAt(text.NaturalWidth() / 3 + 1);
  text.resize(text.sizeHint());
  const QImage image = text.grab().toImage();
  const QColor ink = text.palette().color(QPalette::WindowText);
  const auto inked = [&](int y) {
    for (int x = 0; x < image.width(); ++x) {
      if (image.pixelColor(x, y) == ink) return true;
    }
    return false;
  };
  const int third = image.height() / 3;
  EXPECT_TRUE(inked(third / 2));
  EXPECT_TRUE(inked(third + third / 2));
  EXPECT_TRUE(inked(2 * third + third / 2));
}

TEST(LongMessages, MarkupIsShownAsItIsWritten) {
  const QString text = QStringLiteral("<b>COM1</b> &amp; more");
  CConfirmErr box(nullptr, kErrorSuffix, text, QString(), QString());
  ShowActive(box);
  const auto* label = Control<QLabel>(box, 1053);
  EXPECT_EQ(label->textFormat(), Qt::PlainText);
  EXPECT_GE(label->width(), label->fontMetrics().horizontalAdvance(text));
}

TEST(LongMessages, APathWithoutBlanksWrapsAndTheBoxStaysOnTheScreen) {
  for (const int percent : {100, 150}) {
    const FontScale scale(percent);
    CConfirmErr box(nullptr, kErrorSuffix, kLongPath.left(600), QStringLiteral("Invalid file !!"), QString());
    ShowActive(box);
    ExpectOnScreen(box);
    ExpectNothingClipped(box);
    EXPECT_EQ(Control<QLabel>(box, 1053)->text(), kLongPath.left(600)) << "nothing slipped into the text";
    EXPECT_GT(Control<QLabel>(box, 1053)->height(), 2 * Control<QLabel>(box, 1051)->height());
    EXPECT_EQ(box.findChild<QScrollArea*>(), nullptr);
  }
}

TEST(LongMessages, WhatIsTooTallScrollsWithTheButtonsInSight) {
  CConfirmYesCancel box(nullptr, kErrorSuffix, kLongPath + kLongPath, QString(), QStringLiteral("last line"));
  ShowActive(box);
  ExpectOnScreen(box);
  auto* scroll = box.findChild<QScrollArea*>();
  ASSERT_NE(scroll, nullptr);
  for (const int id : {1, 1314}) {
    EXPECT_TRUE(box.rect().contains(Control<QPushButton>(box, id)->geometry()));
  }
  EXPECT_TRUE(Control<QPushButton>(box, 1)->hasFocus());
  const auto* label = Control<QLabel>(box, 1079);
  EXPECT_LE(label->width(), scroll->viewport()->width()) << "nothing hides beside the view";
  EXPECT_GE(label->height(), label->sizeHint().height());
  EXPECT_FALSE(scroll->viewport()->rect().contains(
      Control<QLabel>(box, 1080)->mapTo(scroll->viewport(), QPoint(0, 0))));

  QTest::keyClick(scroll, Qt::Key_PageDown);
  EXPECT_GT(scroll->verticalScrollBar()->value(), 0);
  scroll->verticalScrollBar()->setValue(scroll->verticalScrollBar()->maximum());
  EXPECT_TRUE(scroll->viewport()->rect().contains(
      Control<QLabel>(box, 1080)->mapTo(scroll->viewport(), QPoint(0, 0))));
}

TEST(LongMessages, TheScrolledTextCanBeReachedWithKeysAlone) {
  CConfirmErr box(nullptr, kErrorSuffix, kLongPath + kLongPath, QString(), QString());
  ShowActive(box);
  auto* scroll = box.findChild<QScrollArea*>();
  ASSERT_NE(scroll, nullptr);
  Press(Qt::Key_Tab);
  EXPECT_TRUE(scroll->hasFocus());
  Press(Qt::Key_Down);
  EXPECT_GT(scroll->verticalScrollBar()->value(), 0);
  Press(Qt::Key_Return);
  EXPECT_FALSE(box.isVisible()) << "Enter still presses the default button";
}

TEST(LongMessages, EnterInTheTextGivesTheAnswerByDefault) {
  for (const AnswerByDefault byDefault : {AnswerByDefault::Agree, AnswerByDefault::Refuse}) {
    CConfirmYesNo box(nullptr, kErrorSuffix, kLongPath + kLongPath, QString(), QString(), byDefault);
    ShowActive(box);
    auto* scroll = box.findChild<QScrollArea*>();
    ASSERT_NE(scroll, nullptr);
    scroll->setFocus();
    Press(Qt::Key_Return);
    EXPECT_FALSE(box.isVisible());
    EXPECT_EQ(box.Answer(), byDefault == AnswerByDefault::Agree ? 1 : 0);
  }
}

TEST(LongMessages, ManyLineBreaksScrollToo) {
  CConfirmOK box(nullptr, kErrorSuffix, QStringLiteral("line\t\n").repeated(500), QString(), QString());
  ShowActive(box);
  ExpectOnScreen(box);
  EXPECT_NE(box.findChild<QScrollArea*>(), nullptr);
}

TEST(LongMessages, EveryBoxKeepsWithinTheScreen) {
  CConfirmSimple simple(nullptr, kLongPath);
  CYesNo yesNo(nullptr, kLongPath);
  COneshotMsgPos transient(nullptr, kLongPath, std::nullopt, kLongestWaitMs);
  CConfirmYesNo question(nullptr, kErrorSuffix, kLongPath, kLongPath, kLongPath);
  for (QDialog* box : std::initializer_list<QDialog*>{&simple, &yesNo, &transient, &question}) {
    ShowActive(*box);
    ExpectOnScreen(*box);
  }
}

TEST(LongMessages, OrdinaryTextsAreNeverClipped) {
  for (const int percent : {100, 125, 150, 175}) {
    const FontScale scale(percent);
    CConfirmErr error(nullptr, kErrorSuffix, QStringLiteral("gjpqy ÄÖÜ"),
                      QStringLiteral("File can not be read."),
                      QStringLiteral("Sellect a COM port to connect."));
    CYesNo question(nullptr);
    COneshotMsgPos transient(nullptr, QStringLiteral("Log texts have been copied."), std::nullopt,
                             kLongestWaitMs);
    for (QDialog* box : std::initializer_list<QDialog*>{&error, &question, &transient}) {
      ShowActive(*box);
      ExpectOnScreen(*box);
      ExpectNothingClipped(*box);
    }
  }
}

}  // namespace
}  // namespace quarn::test
