#include <gtest/gtest.h>

#include <QElapsedTimer>
#include <QKeyEvent>
#include <QPushButton>
#include <memory>

#include "support/dialog_controls.h"
#include "support/waits.h"
#include "ui/message_dialogs.h"

namespace quarn::test {
namespace {

using Action = std::function<void(MessageDialog&)>;
using Maker = std::function<std::unique_ptr<MessageDialog>()>;

constexpr int kYesId = 1066;
const QString kConfirmationSuffix = QStringLiteral(": Confirmation");
const QString kText = QStringLiteral("Exit program without saving?");

struct Outcome {
  int answer;
  int result;
  bool operator==(const Outcome&) const = default;
};

constexpr Outcome kAgreed{1, QDialog::Accepted};
constexpr Outcome kRefused{0, QDialog::Rejected};

Outcome After(const Maker& make, const Action& action) {
  const std::unique_ptr<MessageDialog> box = make();
  ShowActive(*box);
  action(*box);
  EXPECT_FALSE(box->isVisible());
  return {box->Answer(), box->result()};
}

Action Click(int controlId) {
  return [controlId](MessageDialog& box) {
    QTest::mouseClick(Control<QPushButton>(box, controlId), Qt::LeftButton);
  };
}

Action Keys(std::initializer_list<Qt::Key> keys) {
  return [list = std::vector<Qt::Key>(keys)](MessageDialog&) {
    for (const Qt::Key key : list) Press(key);
  };
}

const Action kClose = [](MessageDialog& box) { box.close(); };

struct Question {
  const char* name;
  Maker make;
  int agree;
  int refuse;
};

class Questions : public testing::TestWithParam<Question> {};

TEST_P(Questions, AnswerOneOnlyForTheFirstButton) {
  const Question& question = GetParam();
  EXPECT_EQ(question.make()->Answer(), 0) << "nobody has answered yet";
  EXPECT_EQ(After(question.make, Click(question.agree)), kAgreed);
  EXPECT_EQ(After(question.make, Click(question.refuse)), kRefused);
  EXPECT_EQ(After(question.make, kClose), kRefused);
}

TEST_P(Questions, CanBeAnsweredWithKeysAlone) {
  const Question& question = GetParam();
  EXPECT_EQ(After(question.make, Keys({Qt::Key_Return})), kAgreed);
  EXPECT_EQ(After(question.make, Keys({Qt::Key_Enter})), kAgreed);
  EXPECT_EQ(After(question.make, Keys({Qt::Key_Space})), kAgreed);
  EXPECT_EQ(After(question.make, Keys({Qt::Key_Escape})), kRefused);
  EXPECT_EQ(After(question.make, Keys({Qt::Key_Right, Qt::Key_Return})), kRefused);
  EXPECT_EQ(After(question.make, Keys({Qt::Key_Tab, Qt::Key_Return})), kRefused);
  EXPECT_EQ(After(question.make, Keys({Qt::Key_Right, Qt::Key_Space})), kRefused);
  EXPECT_EQ(After(question.make, Keys({Qt::Key_Right, Qt::Key_Left, Qt::Key_Return})), kAgreed);
  EXPECT_EQ(After(question.make, Keys({Qt::Key_Tab, Qt::Key_Backtab, Qt::Key_Return})), kAgreed);
}

TEST_P(Questions, BeginOnTheFirstButton) {
  const Question& question = GetParam();
  const std::unique_ptr<MessageDialog> box = question.make();
  ShowActive(*box);
  const auto* first = Control<QPushButton>(*box, question.agree);
  EXPECT_TRUE(first->isDefault());
  EXPECT_TRUE(first->hasFocus());
  EXPECT_LT(first->x(), Control<QPushButton>(*box, question.refuse)->x());
}

TEST_P(Questions, AreAnsweredWithTheFirstLetterOfAButton) {
  const Question& question = GetParam();
  const bool yesNo = question.agree == kYesId;
  const Qt::Key agree = yesNo ? Qt::Key_Y : Qt::Key_O;
  const Qt::Key refuse = yesNo ? Qt::Key_N : Qt::Key_C;
  EXPECT_EQ(After(question.make, Keys({agree})), kAgreed);
  EXPECT_EQ(After(question.make, Keys({refuse})), kRefused);
  EXPECT_EQ(After(question.make, Keys({Qt::Key_Right, agree})), kAgreed);
  for (const Qt::KeyboardModifier modifier : {Qt::ShiftModifier, Qt::AltModifier}) {
    EXPECT_EQ(After(question.make, [&](MessageDialog&) { Press(agree, modifier); }), kAgreed);
  }
  const std::unique_ptr<MessageDialog> box = question.make();
  ShowActive(*box);
  for (const Qt::Key key : {Qt::Key_A, yesNo ? Qt::Key_O : Qt::Key_Y}) Press(key);
  Press(agree, Qt::ControlModifier);
  QKeyEvent repeat(QEvent::KeyPress, agree, Qt::NoModifier, QString(), true);
  QApplication::sendEvent(QApplication::focusWidget(), &repeat);
  EXPECT_TRUE(box->isVisible()) << "none of these is an answer";
}

TEST(MessageAnswers, AQuestionThatComesByItselfIsNotAnsweredByAKeyThatWasHeldDownBefore) {
  CConfirmYesNo box(nullptr, kConfirmationSuffix, QString(), kText, QString(),
                    AnswerByDefault::AgreeUncalled);
  ShowActive(box);
  for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Enter, Qt::Key_Escape}) {
    for (int repeats = 0; repeats < 3; ++repeats) {
      QKeyEvent repeat(QEvent::KeyPress, key, Qt::NoModifier, QString(), true);
      QApplication::sendEvent(QApplication::focusWidget(), &repeat);
    }
    EXPECT_TRUE(box.isVisible()) << key;
  }
  Press(Qt::Key_Escape);
  EXPECT_FALSE(box.isVisible());
}

TEST(MessageAnswers, ABoxWithoutAQuestionIsNotSentAwayByALetter) {
  CConfirmOK box(nullptr, QStringLiteral(": Information"), QString(), kText, QString());
  ShowActive(box);
  Press(Qt::Key_O);
  EXPECT_TRUE(box.isVisible());
}

TEST(MessageAnswers, AQuestionThatComesByItselfTakesNoLetterOfWhoIsTyping) {
  const Maker make = [] {
    return std::make_unique<CConfirmYesNo>(nullptr, kConfirmationSuffix, QString(), kText, QString(),
                                           AnswerByDefault::AgreeUncalled);
  };
  const std::unique_ptr<MessageDialog> box = make();
  QElapsedTimer shown;
  shown.start();
  ShowActive(*box);
  // On a busy computer even the first may come after enough time to read it.
  const auto goesBy = [&box](Qt::Key letter) {
    if (box->isVisible()) Press(letter);
    return !box->isVisible();
  };
  if (!goesBy(Qt::Key_N) && shown.elapsed() < 500) goesBy(Qt::Key_Y);
  EXPECT_TRUE(WaitUntil([&] { return goesBy(Qt::Key_N); }));
  EXPECT_GE(shown.elapsed(), 500);
  EXPECT_EQ(box->Answer(), 0);
  EXPECT_EQ(After(make, Keys({Qt::Key_Return})), kAgreed);
  EXPECT_EQ(After(make, Keys({Qt::Key_Right, Qt::Key_Return})), kRefused);
  EXPECT_EQ(After(make, Click(kYesId)), kAgreed);
}

struct HarmlessQuestion {
  const char* name;
  Maker make;
  int agree;
  int refuse;
};

class HarmlessAnswers : public testing::TestWithParam<HarmlessQuestion> {};

TEST_P(HarmlessAnswers, AreTheDefaultWhereAgreeingCanLoseSomething) {
  const HarmlessQuestion& question = GetParam();
  const std::unique_ptr<MessageDialog> box = question.make();
  ShowActive(*box);
  EXPECT_TRUE(Control<QPushButton>(*box, question.refuse)->isDefault());
  EXPECT_TRUE(Control<QPushButton>(*box, question.refuse)->hasFocus());
  EXPECT_FALSE(Control<QPushButton>(*box, question.agree)->isDefault());
  EXPECT_EQ(After(question.make, Keys({Qt::Key_Return})), kRefused);
  EXPECT_EQ(After(question.make, Keys({Qt::Key_Enter})), kRefused);
  EXPECT_EQ(After(question.make, Keys({Qt::Key_Space})), kRefused);
  EXPECT_EQ(After(question.make, Keys({Qt::Key_Left, Qt::Key_Return})), kAgreed);
  EXPECT_EQ(After(question.make, Click(question.agree)), kAgreed);
}

constexpr AnswerByDefault kRefuse = AnswerByDefault::Refuse;

INSTANTIATE_TEST_SUITE_P(
    MessageAnswers, HarmlessAnswers,
    testing::Values(
        HarmlessQuestion{"ConfirmYesCancel",
                         [] {
                           return std::make_unique<CConfirmYesCancel>(nullptr, kConfirmationSuffix, QString(),
                                                                      kText, QString(), kRefuse);
                         },
                         1, 1314},
        HarmlessQuestion{"ConfirmYesNo",
                         [] {
                           return std::make_unique<CConfirmYesNo>(nullptr, kConfirmationSuffix, QString(),
                                                                  kText, QString(), kRefuse);
                         },
                         kYesId, 2},
        HarmlessQuestion{"ConfirmSimple",
                         [] { return std::make_unique<CConfirmSimple>(nullptr, kText, kRefuse); }, 1, 2},
        HarmlessQuestion{"YesNo", [] { return std::make_unique<CYesNo>(nullptr, kText, kRefuse); }, kYesId,
                         2}),
    [](const auto& instance) { return instance.param.name; });

INSTANTIATE_TEST_SUITE_P(
    MessageAnswers, Questions,
    testing::Values(Question{"ConfirmYesCancel",
                             [] {
                               return std::make_unique<CConfirmYesCancel>(nullptr, kConfirmationSuffix,
                                                                          QString(), kText, QString());
                             },
                             1, 1314},
                    Question{"ConfirmYesNo",
                             [] {
                               return std::make_unique<CConfirmYesNo>(nullptr, kConfirmationSuffix, QString(),
                                                                      kText, QString());
                             },
                             1066, 2},
                    Question{"ConfirmSimple", [] { return std::make_unique<CConfirmSimple>(nullptr, kText); },
                             1, 2},
                    Question{"YesNo", [] { return std::make_unique<CYesNo>(nullptr, kText); }, 1066, 2}),
    [](const auto& instance) { return instance.param.name; });

TEST(MessageAnswers, AnErrorOrAnInformationIsOverWithAnyKeyForClosing) {
  const Maker error = [] {
    return std::make_unique<CConfirmErr>(nullptr, QStringLiteral(": Error"), QString(), kText, QString());
  };
  const Maker information = [] {
    return std::make_unique<CConfirmOK>(nullptr, QStringLiteral(": Information"), QString(), kText,
                                        QString());
  };
  for (const Maker& make : {error, information}) {
    After(make, Click(1));
    After(make, kClose);
    After(make, Keys({Qt::Key_Return}));
    After(make, Keys({Qt::Key_Space}));
    After(make, Keys({Qt::Key_Escape}));
  }
}

TEST(MessageAnswers, ATransientMessageGoesByItself) {
  COneshotMsgPos box(nullptr, kText, std::nullopt, 50);
  box.show();
  EXPECT_TRUE(box.isVisible());
  EXPECT_EQ(Control<QLabel>(box, 1067)->text(), kText);
  EXPECT_TRUE(WaitUntil([&] { return !box.isVisible(); }));
}

TEST(MessageAnswers, ATransientMessageStaysTwoSecondsFromWhenItIsShown) {
  COneshotMsgPos box(nullptr, kText, std::nullopt);
  QElapsedTimer clock;
  clock.start();
  box.exec();
  EXPECT_GE(clock.elapsed(), 1950);
  EXPECT_LT(clock.elapsed(), 4000);
}

TEST(MessageAnswers, ATransientMessageCanBeSentAway) {
  for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Enter, Qt::Key_Escape}) {
    COneshotMsgPos box(nullptr, kText, std::nullopt, kLongestWaitMs);
    ShowActive(box);
    QTest::keyClick(&box, Qt::Key_A);
    EXPECT_TRUE(box.isVisible()) << "what is typed ahead is not meant for it";
    QTest::keyClick(&box, key);
    EXPECT_FALSE(box.isVisible());
  }
}

}  // namespace
}  // namespace quarn::test
