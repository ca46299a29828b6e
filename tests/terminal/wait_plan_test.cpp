#include "terminal/wait_plan.h"

#include <tuple>

#include "serial/line_test_support.h"

namespace quarn {
namespace {

SettingsRecord Settings(const char* rate, const char* buffer, const char* timeout = "ON") {
  SettingsRecord settings;
  settings.comBps = QString::fromLatin1(rate);
  settings.comBuf = QString::fromLatin1(buffer);
  settings.rTimeout = QString::fromLatin1(timeout);
  return settings;
}

TEST(BufferSize, UnknownTextCountsDifferentlyForTimeoutAndLimit) {
  for (const auto& [text, size] : {std::pair{"1K", 1024}, {"2K", 2048}, {"6K", 6144}}) {
    EXPECT_EQ(BufferSizeForTimeout(QString::fromLatin1(text)), size);
    EXPECT_EQ(ResponseLimit(QString::fromLatin1(text)), size);
  }
  for (const char* text : {"", "1k", "4K", "1024", "6K "}) {
    EXPECT_EQ(BufferSizeForTimeout(QString::fromLatin1(text)), 2048) << text;
    EXPECT_EQ(ResponseLimit(QString::fromLatin1(text)), 1024) << text;
  }
}

TEST(TimeoutPolls, FollowSpeedAndBufferSize) {
  const std::vector<std::tuple<const char*, const char*, int>> rows = {
      {"9600", "1K", 3000},  {"9600", "2K", 1500},  {"9600", "6K", 500},  {"9600", "8K", 1500},
      {"115200", "1K", 250}, {"115200", "2K", 125}, {"115200", "6K", 50}, {"110", "1K", 261818},
      {"110", "6K", 43636},  {"1200", "6K", 4000},  {"38400", "1K", 750}, {"38400", "6K", 125},
      {"256000", "1K", 112}, {"256000", "2K", 56},  {"256000", "6K", 50}, {"96000", "6K", 50},
      {"57600", "6K", 83},   {"", "6K", 500},       {"abc", "1K", 3000},  {"0", "2K", 1500},
      {"1000", "6K", 4800},  {"-1", "1K", 50},
  };
  for (const auto& [rate, buffer, polls] : rows) {
    EXPECT_EQ(TimeoutPolls(Settings(rate, buffer)), polls) << rate << " bps, " << buffer;
  }
}

TEST(WaitPlan, EveryTwentiethPollRefreshesAndDoesNotCount) {
  WaitPlan plan(Settings("9600", "6K"));
  for (int poll = 1; poll <= 400; ++poll) {
    const WaitPlan::Step step = plan.Next();
    EXPECT_EQ(step, poll % 20 == 0 ? WaitPlan::Step::Refresh : WaitPlan::Step::Continue) << poll;
    EXPECT_EQ(plan.Refreshes(), poll / 20);
  }
}

/// The number of polls until the time-out; -1 if there is none within `most`.
int PollsUntilTimeout(WaitPlan& plan, int most) {
  for (int poll = 1; poll <= most; ++poll) {
    if (plan.Next() == WaitPlan::Step::TimedOut) return poll;
  }
  return -1;
}

TEST(WaitPlan, TimesOutWhenTheCountExceedsTheLimit) {
  // 19 polls of 20 count. The limit is exceeded by the 51st counted poll, which is the 53rd of all;
  // the next one notices it.
  WaitPlan shortest(Settings("115200", "6K"));
  EXPECT_EQ(PollsUntilTimeout(shortest, 1000), 54);
  EXPECT_EQ(shortest.Refreshes(), 2);
  // 501 = 26 x 19 + 7.
  WaitPlan longer(Settings("9600", "6K"));
  EXPECT_EQ(PollsUntilTimeout(longer, 1000), 26 * 20 + 7 + 1);
  EXPECT_EQ(longer.Refreshes(), 26);
}

TEST(WaitPlan, ForetellsTheNextStepThatDoesMoreThanCount) {
  WaitPlan shortest(Settings("115200", "6K"));
  EXPECT_EQ(shortest.PollsToNextStep(), 20);
  EXPECT_EQ(shortest.Next(), WaitPlan::Step::Continue);
  EXPECT_EQ(shortest.PollsToNextStep(), 19) << "asking does not count";
  for (int poll = 2; poll <= 40; ++poll) shortest.Next();
  EXPECT_EQ(shortest.Refreshes(), 2);
  EXPECT_EQ(shortest.PollsToNextStep(), 54 - 40) << "the time-out comes before the third refresh";
}

TEST(WaitPlan, OnceTimedOutItStaysSo) {
  WaitPlan plan(Settings("115200", "6K"));
  ASSERT_EQ(PollsUntilTimeout(plan, 1000), 54);
  EXPECT_EQ(plan.Next(), WaitPlan::Step::TimedOut);
  EXPECT_EQ(plan.PollsToNextStep(), 1);
}

TEST(WaitPlan, OnlyExactlyOnLimitsTheWait) {
  for (const char* text : {"OFF", "", "on", "On", "ON ", "TRUE"}) {
    WaitPlan plan(Settings("115200", "6K", text));
    EXPECT_EQ(PollsUntilTimeout(plan, 100'000), -1) << text;
    EXPECT_EQ(plan.Refreshes(), 5000);
  }
}

TEST(WaitingText, ShowsTheMarkFromTheSixthRefreshInTurns) {
  const QString command = QStringLiteral("status");
  for (int refresh = 1; refresh <= 12; ++refresh) {
    const bool marked = refresh > 5 && refresh % 2 == 0;
    EXPECT_EQ(WaitingText(command, 2, refresh), marked ? QStringLiteral("st*tus") : command) << refresh;
  }
}

TEST(WaitingText, PutsTheMarkWhereTheCaretStands) {
  const QString command = QStringLiteral("id");
  EXPECT_EQ(WaitingText(command, 0, 6), QStringLiteral("*d"));
  EXPECT_EQ(WaitingText(command, 1, 6), QStringLiteral("i*"));
  EXPECT_EQ(WaitingText(command, 2, 6), QStringLiteral("id*"));
  EXPECT_EQ(WaitingText(command, 9, 6), QStringLiteral("id*"));
  EXPECT_EQ(WaitingText(QString(), 0, 6), QStringLiteral("*"));
}

TEST(WaitingText, ANegativeCaretGivesNoMark) {
  for (int refresh = 1; refresh <= 10; ++refresh) {
    EXPECT_EQ(WaitingText(QStringLiteral("id"), -1, refresh), QStringLiteral("id"));
  }
}

}  // namespace
}  // namespace quarn
