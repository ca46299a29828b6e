// A line delivers chunks at random times of a simulated clock, and is read as serial_line_linux does. The
// bytes of a read and its end must follow from its time-outs, whatever the line does.

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <optional>
#include <vector>

#include "serial/read_deadline.h"

namespace {

using quarn::LineClock;
using quarn::LineTimeouts;
using quarn::ReadDeadline;
using std::chrono::milliseconds;

void Require(bool holds) {
  if (!holds) std::abort();
}

class Input {
 public:
  Input(const std::uint8_t* data, std::size_t size) : m_data(data), m_size(size) {}
  std::uint8_t Byte() { return m_next < m_size ? m_data[m_next++] : std::uint8_t{0}; }
  bool IsAtEnd() const { return m_next >= m_size; }

 private:
  const std::uint8_t* m_data;
  std::size_t m_size;
  std::size_t m_next = 0;
};

struct Chunk {
  milliseconds at{};
  std::size_t bytes = 0;
};

struct Outcome {
  std::size_t bytes = 0;
  std::optional<milliseconds> end;  ///< nullopt: it waits without limit
};

/// The reader's loop on the simulated clock.
Outcome Read(const LineTimeouts& timeouts, std::size_t size, const std::vector<Chunk>& chunks) {
  const LineClock::time_point start{};
  ReadDeadline deadline(timeouts, size, start);
  Outcome outcome;
  for (const Chunk& chunk : chunks) {
    const auto time = deadline.Time();
    if (time && *time < start + chunk.at) break;
    outcome.bytes = std::min(size, outcome.bytes + chunk.bytes);
    if (outcome.bytes == size) {
      outcome.end = chunk.at;
      return outcome;
    }
    deadline.BytesArrived(start + chunk.at);
  }
  if (const auto time = deadline.Time()) {
    outcome.end = std::chrono::duration_cast<milliseconds>(*time - start);
  }
  return outcome;
}

/// The same, computed from the description of the time-outs: its only state is the list of arrivals.
Outcome Expected(const LineTimeouts& timeouts, std::size_t size, const std::vector<Chunk>& chunks) {
  const std::uint64_t total = std::uint64_t{timeouts.readTotalMultiplier} * size + timeouts.readTotalConstant;
  std::optional<milliseconds> last;
  Outcome outcome;
  const auto limit = [&]() -> std::optional<milliseconds> {
    std::optional<milliseconds> end;
    if (total > 0) end = milliseconds(total);
    if (timeouts.readInterval > 0 && last) {
      const milliseconds silence = *last + milliseconds(timeouts.readInterval);
      end = end ? std::min(*end, silence) : silence;
    }
    return end;
  };
  for (const Chunk& chunk : chunks) {
    if (const auto end = limit(); end && *end < chunk.at) break;
    outcome.bytes = std::min(size, outcome.bytes + chunk.bytes);
    if (outcome.bytes == size) {
      outcome.end = chunk.at;
      return outcome;
    }
    last = chunk.at;
  }
  outcome.end = limit();
  return outcome;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Input input(data, size);
  LineTimeouts timeouts;
  timeouts.readInterval = input.Byte();
  timeouts.readTotalMultiplier = input.Byte() % 16U;
  timeouts.readTotalConstant = input.Byte();
  const std::size_t wanted = 1 + input.Byte();
  std::vector<Chunk> chunks;
  milliseconds now{};
  while (!input.IsAtEnd()) {
    now += milliseconds(input.Byte());
    chunks.push_back({now, std::size_t{1} + input.Byte() % 32U});
  }
  const Outcome outcome = Read(timeouts, wanted, chunks);
  const Outcome expected = Expected(timeouts, wanted, chunks);
  Require(outcome.bytes == expected.bytes);
  Require(outcome.end == expected.end);
  return 0;
}
