// The rules of the comm API's time-outs for reads, case by case, with a clock of the test's.

#include <algorithm>
#include <array>
#include <optional>
#include <vector>

#include "serial/line_parameters.h"
#include "serial/line_test_support.h"
#include "serial/read_deadline.h"
#include "settings/setting_values.h"

namespace quarn {
namespace {

using Ms = std::int64_t;

/// A read, and when each byte comes, in milliseconds from its start.
struct ReadCase {
  LineTimeouts timeouts;
  std::size_t size;
  std::vector<Ms> arrivals;
};

struct ReadEnd {
  std::size_t bytes;
  std::optional<Ms> at;  ///< nullopt: it waits for ever
  bool operator==(const ReadEnd&) const = default;
};

void PrintTo(const ReadEnd& end, std::ostream* out) {
  *out << end.bytes << " bytes at " << (end.at ? std::to_string(*end.at) : "no time");
}

/// The read as a line makes it.
ReadEnd PlayRead(const ReadCase& read) {
  const LineClock::time_point start{std::chrono::hours(1)};
  const auto since = [start](LineClock::time_point when) {
    return std::chrono::duration_cast<std::chrono::milliseconds>(when - start).count();
  };
  ReadDeadline deadline(read.timeouts, read.size, start);
  std::size_t got = 0;
  for (const Ms arrival : read.arrivals) {
    const LineClock::time_point when = start + std::chrono::milliseconds(arrival);
    if (deadline.Time() && *deadline.Time() < when) return {got, since(*deadline.Time())};
    deadline.BytesArrived(when);
    if (++got == read.size) return {got, arrival};
  }
  return {got, deadline.Time() ? std::optional(since(*deadline.Time())) : std::nullopt};
}

/// The same from the rules: the total counts from the start; the interval between two bytes, and after the
/// last one, but never before the first.
ReadEnd EndByTheRules(const ReadCase& read) {
  const LineTimeouts& limits = read.timeouts;
  const Ms total = Ms{limits.readTotalMultiplier} * static_cast<Ms>(read.size) + limits.readTotalConstant;
  const auto inTotal = [&](Ms when) { return total == 0 || when <= total; };
  std::size_t taken = 0;
  while (taken < read.arrivals.size() && inTotal(read.arrivals[taken])) {
    const bool parted = taken > 0 && limits.readInterval != 0 &&
                        read.arrivals[taken] - read.arrivals[taken - 1] > Ms{limits.readInterval};
    if (parted) break;
    if (++taken == read.size) return {taken, read.arrivals[taken - 1]};
  }
  std::optional<Ms> end;
  if (taken > 0 && limits.readInterval != 0) end = read.arrivals[taken - 1] + Ms{limits.readInterval};
  if (total != 0) end = std::min(end.value_or(total), total);
  return {taken, end};
}

constexpr std::array<Ms, 2> kJustBeside{-1, 1};

class ReadCases : public testing::Test {
 protected:
  void Check(const ReadCase& read, std::size_t bytes) {
    ++m_checked;
    const ReadEnd end = PlayRead(read);
    EXPECT_EQ(end, EndByTheRules(read)) << Describe(read);
    EXPECT_EQ(end.bytes, bytes) << Describe(read);
  }
  /// Calls this with the time-outs of every speed.
  template <class Work>
  static void ForEverySpeed(const Work& work) {
    for (const SettingValue& rate : values::kBitRates) {
      for (const char* portSpeed : {"HIGH", "LOW"}) {
        work(TimeoutsOf(rate.text.toString(), QLatin1String(portSpeed)));
      }
    }
  }
  [[nodiscard]] int Checked() const { return m_checked; }

 private:
  static std::string Describe(const ReadCase& read) {
    std::string text = "interval " + std::to_string(read.timeouts.readInterval) + ", total " +
                       std::to_string(read.timeouts.readTotalMultiplier) + " x " + std::to_string(read.size) +
                       " + " + std::to_string(read.timeouts.readTotalConstant) + ", bytes at";
    for (const Ms arrival : read.arrivals) text += ' ' + std::to_string(arrival);
    return text;
  }
  int m_checked = 0;
};

/// One gap of a read is a millisecond shorter or longer than the interval, whenever the first byte comes.
TEST_F(ReadCases, AMillisecondDecidesWhetherAGapEndsARead) {
  ForEverySpeed([this](const LineTimeouts& timeouts) {
    const Ms interval = timeouts.readInterval;
    for (const Ms first : {Ms{0}, interval - 1, interval + 1, 5 * interval}) {
      for (const std::size_t gap : {1U, 2U, 4U}) {
        for (const Ms beside : kJustBeside) {
          ReadCase read{timeouts, 8191, {first}};
          for (std::size_t i = 1; i < 5; ++i) {
            read.arrivals.push_back(read.arrivals.back() + (i == gap ? interval + beside : 1));
          }
          Check(read, beside < 0 ? 5 : gap);
        }
      }
    }
  });
  EXPECT_GE(Checked(), 600);
}

/// The interval and the total end a millisecond apart.
TEST_F(ReadCases, TheEarlierOfTotalAndIntervalEndsARead) {
  ForEverySpeed([this](LineTimeouts timeouts) {
    const Ms interval = timeouts.readInterval;
    for (const Ms beside : kJustBeside) {
      for (const Ms last : {Ms{1}, interval, 7 * interval}) {
        timeouts.readTotalMultiplier = 0;
        timeouts.readTotalConstant = static_cast<std::uint32_t>(last + interval + beside);
        Check({timeouts, 8191, {last}}, 1);
        EXPECT_EQ(PlayRead({timeouts, 8191, {last}}).at, last + interval + std::min<Ms>(beside, 0));
        // A byte that comes between the two is the read's only if neither has ended.
        Check({timeouts, 8191, {last, last + interval + 1}}, 1);
        Check({timeouts, 8191, {last, last + interval - 1}}, 2);
      }
    }
  });
  EXPECT_GE(Checked(), 400);
}

/// The first byte comes a millisecond before or after the total.
TEST_F(ReadCases, AFirstByteMayBeAsLateAsTheTotal) {
  ForEverySpeed([this](const LineTimeouts& timeouts) {
    for (const std::size_t size : {1U, 16U, 8191U}) {
      const Ms total = Ms{timeouts.readTotalMultiplier} * static_cast<Ms>(size) + timeouts.readTotalConstant;
      for (const Ms beside : kJustBeside) Check({timeouts, size, {total + beside}}, beside < 0 ? 1 : 0);
    }
  });
  EXPECT_GE(Checked(), 150);
}

/// Without a total a read waits for its first byte, and without an interval for all of them.
TEST_F(ReadCases, WithoutALimitAReadWaits) {
  for (const Ms interval : {Ms{1}, Ms{90}, Ms{9810}}) {
    const LineTimeouts timeouts{.readInterval = static_cast<std::uint32_t>(interval)};
    Check({timeouts, 10, {}}, 0);
    Check({timeouts, 10, {1'000'000}}, 1);
    Check({timeouts, 2, {1'000'000, 1'000'000 + interval - 1}}, 2);
    Check({timeouts, 2, {1'000'000, 1'000'000 + interval + 1}}, 1);
  }
  Check({{}, 3, {5, 1'000'000}}, 2);
  EXPECT_EQ(PlayRead({{}, 3, {5, 1'000'000}}).at, std::nullopt);
  Check({{}, 3, {5, 1'000'000, 2'000'000}}, 3);
}

}  // namespace
}  // namespace quarn
