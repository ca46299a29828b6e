#include "demo/demo_line.h"

#include <QScopeGuard>
#include <algorithm>
#include <cstring>
#include <utility>
#include <variant>

namespace quarn {
namespace {

using std::chrono::milliseconds;

constexpr int kEndlessPieces = 256;
constexpr std::size_t kEndlessPieceBytes = 64;
constexpr milliseconds kEndlessPace{1};

}  // namespace

DemoLine::DemoLine(device::Rules rules) : m_rules(std::move(rules)) {}

std::optional<LineFailure> DemoLine::Obstacle() const {
  if (m_closed) return LineFailure{LineError::Disconnected, QStringLiteral("the line is closed")};
  if (m_cancelled) return LineFailure{LineError::Cancelled, QStringLiteral("cancelled")};
  if (m_lost) return LineFailure{LineError::Disconnected, QStringLiteral("the instrument has hung up")};
  return std::nullopt;
}

LineResult DemoLine::Usable() const {
  if (m_closed || m_lost) return *Obstacle();
  return {};
}

LineResult DemoLine::GetState(LineState& state) {
  const std::lock_guard guard(m_mutex);
  LineResult usable = Usable();
  if (usable) state = m_state;
  return usable;
}

LineResult DemoLine::SetState(const LineState& state) {
  const std::lock_guard guard(m_mutex);
  LineResult usable = Usable();
  if (usable) m_state = state;
  return usable;
}

LineResult DemoLine::SetTimeouts(const LineTimeouts& timeouts) {
  const std::lock_guard guard(m_mutex);
  LineResult usable = Usable();
  if (usable) m_timeouts = timeouts;
  return usable;
}

LineResult DemoLine::SetModemLines(const ModemLines& /*lines*/) {
  const std::lock_guard guard(m_mutex);
  return Usable();
}

LineResult DemoLine::Purge() {
  const std::lock_guard guard(m_mutex);
  LineResult usable = Usable();
  if (!usable) return usable;
  const auto now = LineClock::now();
  std::erase_if(m_coming, [now](const Arrival& each) { return !each.hangUp && each.time <= now; });
  return usable;
}

LineResult DemoLine::ClearError() {
  const std::lock_guard guard(m_mutex);
  return Usable();
}

IoResult DemoLine::Read(char* buffer, std::size_t size) {
  std::unique_lock guard(m_mutex);
  m_reading = true;
  const auto over = qScopeGuard([this] {
    m_reading = false;
    m_changed.notify_all();
  });
  return ReadUntilEnd(guard, buffer, size);
}

IoResult DemoLine::ReadUntilEnd(std::unique_lock<std::mutex>& guard, char* buffer, std::size_t size) {
  ReadDeadline deadline(m_timeouts, size, LineClock::now());
  std::size_t got = 0;
  while (got < size) {
    if (const std::size_t taken = Take(buffer + got, size - got); taken > 0) {
      got += taken;
      deadline.BytesArrived(LineClock::now());
      continue;
    }
    if (std::optional<LineFailure> obstacle = Obstacle()) {
      return {.ok = got > 0, .bytes = got, .failure = std::move(*obstacle)};
    }
    const auto end = deadline.Time();
    if (end && LineClock::now() >= *end) break;
    auto wake = end;
    if (!m_coming.empty()) wake = std::min(end.value_or(m_coming.front().time), m_coming.front().time);
    if (wake) {
      m_changed.wait_until(guard, *wake);
    } else {
      m_changed.wait(guard);
    }
  }
  return {.ok = true, .bytes = got};
}

std::size_t DemoLine::Take(char* buffer, std::size_t size) {
  std::size_t taken = 0;
  while (taken < size && !m_coming.empty() && m_coming.front().time <= LineClock::now()) {
    Arrival& first = m_coming.front();
    if (first.hangUp) {
      m_lost = true;
      return taken;
    }
    const std::size_t part = std::min(size - taken, first.bytes.size());
    std::memcpy(buffer + taken, first.bytes.data(), part);
    taken += part;
    first.bytes.erase(0, part);
    if (first.bytes.empty()) m_coming.pop_front();
  }
  return taken;
}

IoResult DemoLine::Write(const char* data, std::size_t size) {
  const std::lock_guard guard(m_mutex);
  if (std::optional<LineFailure> obstacle = Obstacle()) return {.failure = std::move(*obstacle)};
  m_command.append(data, size);
  if (std::erase_if(m_coming, [](const Arrival& each) { return each.endless; }) > 0) {
    m_answeredBy = LineClock::now();
  }
  for (const device::Command& command : device::TakeCommands(m_command)) Answer(command);
  m_changed.notify_all();
  return {.ok = true, .bytes = size};
}

void DemoLine::Answer(const device::Command& command) {
  const device::Rule* rule = device::FindRule(m_rules, command.text);
  if (rule == nullptr) return;
  // An instrument answers one command at a time.
  m_answeredBy = std::max(m_answeredBy, LineClock::now());
  for (const device::Step& step : rule->steps) m_answeredBy += Perform(step, command, m_answeredBy);
}

milliseconds DemoLine::Perform(const device::Step& step, const device::Command& command,
                               LineClock::time_point when) {
  const auto comes = [&](std::string bytes) {
    m_coming.push_back({.time = when, .bytes = std::move(bytes)});
  };
  if (const auto* pause = std::get_if<device::PauseMs>(&step)) return milliseconds(pause->ms);
  if (const auto* bytes = std::get_if<device::Bytes>(&step)) {
    comes(bytes->bytes);
  } else if (const auto* line = std::get_if<device::Line>(&step)) {
    comes(command.before + line->text + command.after);
  } else if (std::holds_alternative<device::Echo>(step)) {
    comes(command.before + command.text + command.after);
  } else if (std::holds_alternative<device::Flood>(step)) {
    for (int i = 0; i < kEndlessPieces; ++i) {
      m_coming.push_back(
          {.time = when + i * kEndlessPace, .bytes = std::string(kEndlessPieceBytes, 'F'), .endless = true});
    }
    return kEndlessPieces * kEndlessPace;
  } else {
    m_coming.push_back({.time = when, .hangUp = true});
  }
  return milliseconds(0);
}

void DemoLine::CancelIo() {
  std::unique_lock guard(m_mutex);
  m_cancelled = true;
  m_changed.notify_all();
  m_changed.wait(guard, [this] { return !m_reading; });
}

void DemoLine::AllowIo() {
  const std::lock_guard guard(m_mutex);
  m_cancelled = false;
}

LineResult DemoLine::Close() {
  const std::lock_guard guard(m_mutex);
  m_closed = true;
  m_changed.notify_all();
  return {};
}

bool DemoLine::IsLost() {
  const std::lock_guard guard(m_mutex);
  const auto now = LineClock::now();
  const bool hungUp = m_lost || std::ranges::any_of(m_coming, [now](const Arrival& each) {
                        return each.hangUp && each.time <= now;
                      });
  return hungUp && !m_closed;
}

}  // namespace quarn
