#include "ui/polled_dialog.h"

#include <gtest/gtest.h>

#include <QTest>

#include "support/waits.h"
#include "ui/input_hold.h"

namespace quarn::test {
namespace {

// Which ticks are skipped.

TEST(TickPlan, WithoutQuietTicksEachIsPlanned) {
  TickPlan plan;
  plan.Start(1000);
  plan.Plan(0, 1000);
  EXPECT_EQ(plan.DueTime(), 1100);
  EXPECT_FALSE(plan.IsLate(1099));
  EXPECT_TRUE(plan.IsLate(1100));
  EXPECT_EQ(plan.Take(1101), 1);
  plan.Plan(0, 1101);
  EXPECT_EQ(plan.DueTime(), 1200);
}

TEST(TickPlan, QuietTicksAreCountedWithTheNext) {
  TickPlan plan;
  plan.Start(0);
  plan.Plan(4, 3);
  EXPECT_EQ(plan.DueTime(), 500);
  EXPECT_EQ(plan.Take(500), 5);
}

TEST(TickPlan, WakesAtTheNextTickWhenSomethingHappensMeanwhile) {
  TickPlan plan;
  plan.Start(0);
  plan.Plan(4, 0);
  plan.Plan(0, 230);
  EXPECT_EQ(plan.DueTime(), 300);
  EXPECT_EQ(plan.Take(302), 3);
  plan.Plan(1, 302);
  EXPECT_EQ(plan.DueTime(), 500) << "two after the last";
}

TEST(TickPlan, SleepsUntilWokenAndKeepsItsGrid) {
  TickPlan plan;
  plan.Start(50);
  plan.Plan(TickPlan::kUntilWoken, 50);
  EXPECT_FALSE(plan.HasDue());
  EXPECT_FALSE(plan.IsLate(1'000'000));
  plan.Plan(0, 1'000'005);
  EXPECT_EQ(plan.DueTime(), 1'000'050);
  EXPECT_EQ(plan.Take(1'000'050), 10'000);
}

TEST(TickPlan, ALateTickStaysPlanned) {
  TickPlan plan;
  plan.Start(0);
  plan.Plan(0, 0);
  plan.Plan(0, 130);
  EXPECT_EQ(plan.DueTime(), 100);
  plan.Plan(TickPlan::kUntilWoken, 350);
  EXPECT_EQ(plan.DueTime(), 100);
  EXPECT_EQ(plan.Take(350), 1) << "what was missed does not count";
  plan.Plan(0, 350);
  EXPECT_EQ(plan.DueTime(), 400);
}

TEST(TickPlan, ATimerMayFireALittleEarly) {
  TickPlan plan;
  plan.Start(0);
  plan.Plan(4, 0);
  EXPECT_EQ(plan.Take(476), 5);
  plan.Plan(0, 476);
  EXPECT_EQ(plan.DueTime(), 600);
}

// Real windows.

class Sleeper final : public PolledDialog {
 public:
  explicit Sleeper(int quietTicks = TickPlan::kUntilWoken) : quiet(quietTicks) { StartTicks(); }
  using PolledDialog::StopTicks;
  int quiet;
  std::vector<int> ticks;

 protected:
  void OnTick(int count) override { ticks.push_back(count); }
  [[nodiscard]] int QuietTicks() const override { return quiet; }
};

bool WaitForTicks(const Sleeper& dialog, std::size_t count) {
  return WaitUntil([&] { return dialog.ticks.size() >= count; });
}

TEST(PolledDialog, SleepsWhileItHasNothingToDo) {
  const Sleeper awake(0);
  Sleeper asleep;
  ASSERT_TRUE(WaitForTicks(awake, 4));
  EXPECT_TRUE(asleep.ticks.empty());
  asleep.quiet = 0;
  ASSERT_TRUE(WaitForTicks(asleep, 1));
  EXPECT_GE(asleep.ticks.front(), 4) << "those that were slept over are counted";
}

TEST(PolledDialog, SleepsOverAsManyTicksAsItSays) {
  const Sleeper dialog(2);
  ASSERT_TRUE(WaitForTicks(dialog, 3));
  for (const int ticks : dialog.ticks) EXPECT_EQ(ticks, 3);
}

TEST(PolledDialog, DoesNotTickAfterItsStop) {
  const Sleeper other(0);
  Sleeper dialog(0);
  ASSERT_TRUE(WaitForTicks(dialog, 1));
  dialog.StopTicks();
  const std::size_t before = dialog.ticks.size();
  const std::size_t others = other.ticks.size();
  ASSERT_TRUE(WaitForTicks(other, others + 3));
  EXPECT_EQ(dialog.ticks.size(), before);
}

/// The tick of one window makes a request to another one, which skips ticks.
TEST(PolledDialog, WakesForWhatAnothersTickAsksOfIt) {
  Sleeper asleep;
  class Asking final : public PolledDialog {
   public:
    explicit Asking(Sleeper& other) : m_other(other) { StartTicks(); }

   protected:
    void OnTick(int /*ticks*/) override {
      m_other.quiet = 0;
      StopTicks();
    }

   private:
    Sleeper& m_other;
  };
  const Asking asking(asleep);
  EXPECT_TRUE(WaitForTicks(asleep, 1));
}

/// No timer runs while the program waits for a response. A tick that was due meanwhile follows soon,
/// however many ticks the window skips.
TEST(PolledDialog, TicksSoonAfterAWaitThatHeldItsTimer) {
  const Sleeper awake(0);
  const Sleeper dialog(9);
  InputHold().HoldFor(13 * PolledDialog::kTickMs);
  EXPECT_TRUE(awake.ticks.empty());
  EXPECT_TRUE(dialog.ticks.empty());
  ASSERT_TRUE(WaitForTicks(dialog, 1));
  EXPECT_EQ(dialog.ticks, std::vector<int>{10});
  EXPECT_LE(awake.ticks.size(), 4U);
}

}  // namespace
}  // namespace quarn::test
