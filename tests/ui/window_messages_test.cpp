#include "ui/window_messages.h"

#include <gtest/gtest.h>

#include <QPushButton>
#include <QTimer>
#include <functional>

#include "support/dialog_controls.h"
#include "ui/pictures.h"

namespace quarn::test {
namespace {

const QString kAskedSuffix = QStringLiteral(": Confirmation");
const QString kAsked = QStringLiteral("Is it OK to proceed?");

struct AskedQuestion {
  const char* name;
  std::function<bool()> ask;
  int agree;  ///< the buttons' control numbers
  int refuse;
};

std::ostream& operator<<(std::ostream& out, const AskedQuestion& question) { return out << question.name; }

/// Presses the button with this number in the next box.
class Presser : public QObject {
 public:
  explicit Presser(int controlId) {
    connect(&m_timer, &QTimer::timeout, this, [this, controlId] {
      const auto* box = qobject_cast<QDialog*>(QApplication::activeModalWidget());
      if (box == nullptr || !box->isActiveWindow()) return;
      m_timer.stop();
      Control<QPushButton>(*box, controlId)->click();
    });
    m_timer.start(10);
  }

 private:
  QTimer m_timer;
};

class AskedInABox : public testing::TestWithParam<AskedQuestion> {};

TEST_P(AskedInABox, OnlyTheAgreeingButtonIsAYes) {
  const AskedQuestion& question = GetParam();
  {
    const Presser presser(question.agree);
    EXPECT_TRUE(question.ask());
  }
  const Presser presser(question.refuse);
  EXPECT_FALSE(question.ask());
}

INSTANTIATE_TEST_SUITE_P(
    All, AskedInABox,
    testing::Values(
        AskedQuestion{"Confirmation",
                      [] {
                        return WindowMessages().AskConfirmation(kAskedSuffix, QString(), kAsked, QString(),
                                                                AnswerByDefault::Agree);
                      },
                      1, 1314},
        AskedQuestion{"YesNo",
                      [] {
                        return WindowMessages().AskYesNo(kAskedSuffix, QString(), kAsked, QString(),
                                                         AnswerByDefault::Refuse);
                      },
                      1066, 2},
        AskedQuestion{"Simple", [] { return WindowMessages().AskSimple(kAsked, AnswerByDefault::Agree); }, 1,
                      2},
        AskedQuestion{"SimpleYesNo",
                      [] { return WindowMessages().AskSimpleYesNo(kAsked, AnswerByDefault::Refuse); }, 1066,
                      2}),
    [](const testing::TestParamInfo<AskedQuestion>& each) { return each.param.name; });

/// What a person sees of a box, apart from its caption.
struct SeenBox {
  QImage picture{};
  qint64 icon = 0;
  QString font{};
  Qt::WindowFlags flags{};
};

/// The box that `show` opens, which is then closed.
SeenBox Seen(const std::function<void()>& show) {
  SeenBox seen;
  QTimer timer;
  timer.callOnTimeout([&] {
    auto* box = qobject_cast<QDialog*>(QApplication::activeModalWidget());
    if (box == nullptr || !box->isActiveWindow()) return;
    timer.stop();
    seen = {box->grab().toImage(), box->windowIcon().cacheKey(), box->font().toString(), box->windowFlags()};
    Control<QPushButton>(*box, 1)->click();
  });
  timer.start(1);
  show();
  return seen;
}

TEST(PlainMessages, LookLikeInformation) {
  const QIcon before = QApplication::windowIcon();
  const QIcon icon = ApplicationIcon();
  QApplication::setWindowIcon(icon);
  // "Already open" is one line, a reason is more.
  for (const QString& text : {kAsked, QStringLiteral("one\ntwo, which is longer than one")}) {
    const SeenBox plain = Seen([&] { WindowMessages().ShowPlainMessage(text); });
    const SeenBox usual = Seen([&] { WindowMessages().ShowInformationMessage(kAskedSuffix, {}, text, {}); });
    EXPECT_FALSE(plain.picture.isNull());
    EXPECT_EQ(plain.picture, usual.picture) << "text, button, margins or focus differ";
    EXPECT_EQ(plain.icon, icon.cacheKey()) << "it has another icon, or none";
    EXPECT_EQ(plain.icon, usual.icon);
    EXPECT_EQ(plain.font, usual.font);
    EXPECT_EQ(plain.flags & ~Qt::WindowFlags(Qt::WindowStaysOnTopHint), usual.flags);
  }
  QApplication::setWindowIcon(before);
}

}  // namespace
}  // namespace quarn::test
