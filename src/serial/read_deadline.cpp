#include "serial/read_deadline.h"

#include <algorithm>
#include <cstdint>

namespace quarn {
namespace {

constexpr std::uint32_t kMaximum = 0xFFFFFFFFU;
/// Practically never; a multiplier's largest product would overflow the clock.
constexpr auto kLongestTotal = std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::years(50));

std::optional<LineClock::time_point> TotalEnd(std::uint32_t multiplier, std::uint32_t constant,
                                              std::size_t size, LineClock::time_point start) {
  if (multiplier == 0 && constant == 0) return std::nullopt;
  const std::uint64_t total = std::uint64_t{multiplier} * size + constant;
  return start + std::min(std::chrono::milliseconds(total), kLongestTotal);
}

}  // namespace

ReadDeadline::ReadDeadline(const LineTimeouts& timeouts, std::size_t size, LineClock::time_point start) {
  if (timeouts.readInterval != kMaximum) {
    if (timeouts.readInterval != 0) m_interval = std::chrono::milliseconds(timeouts.readInterval);
    m_totalEnd = TotalEnd(timeouts.readTotalMultiplier, timeouts.readTotalConstant, size, start);
    return;
  }
  // The largest interval means: take what is there. With the largest multiplier too, wait for the first byte
  // as long as the constant says, and end the read with it.
  m_interval = std::chrono::milliseconds(0);
  const bool waitsForFirst = timeouts.readTotalMultiplier == kMaximum && timeouts.readTotalConstant != 0;
  m_totalEnd = start + std::chrono::milliseconds(waitsForFirst ? timeouts.readTotalConstant : 0U);
}

void ReadDeadline::BytesArrived(LineClock::time_point when) {
  if (m_interval) m_silenceEnd = when + *m_interval;
}

std::optional<LineClock::time_point> ReadDeadline::Time() const {
  if (m_totalEnd && m_silenceEnd) return std::min(*m_totalEnd, *m_silenceEnd);
  return m_totalEnd ? m_totalEnd : m_silenceEnd;
}

LineTimeouts RestOf(const LineTimeouts& timeouts, std::optional<LineClock::time_point> totalEnd,
                    LineClock::time_point now) {
  // With the largest interval the totals mean something else, and a read that has a byte ends at once.
  if (!totalEnd || timeouts.readInterval == kMaximum) return timeouts;
  // No time at all would mean: without an end.
  constexpr std::int64_t kShortest = 1;
  constexpr std::int64_t kLongest = kMaximum - 1;
  const auto left = std::chrono::ceil<std::chrono::milliseconds>(*totalEnd - now).count();
  LineTimeouts rest = timeouts;
  rest.readTotalMultiplier = 0;
  rest.readTotalConstant = static_cast<std::uint32_t>(std::clamp<std::int64_t>(left, kShortest, kLongest));
  return rest;
}

std::optional<LineClock::time_point> WriteDeadline(const LineTimeouts& timeouts, std::size_t size,
                                                   LineClock::time_point start) {
  return TotalEnd(timeouts.writeTotalMultiplier, timeouts.writeTotalConstant, size, start);
}

}  // namespace quarn
