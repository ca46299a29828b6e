#include "device/instrument.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <system_error>
#include <utility>

namespace quarn::device {

Instrument::Instrument(Rules rules)
    : m_rules(std::move(rules)), m_stop(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
  if (m_stop < 0) throw std::system_error(errno, std::generic_category(), "eventfd");
}

Instrument::~Instrument() { ::close(m_stop); }

void Instrument::Stop() {
  const std::uint64_t one = 1;
  [[maybe_unused]] const ssize_t written = ::write(m_stop, &one, sizeof one);
}

std::string Instrument::Received() const {
  const std::lock_guard guard(m_mutex);
  return m_received;
}

void Instrument::Run() {
  constexpr int kForEver = -1;
  while (m_running) {
    WaitMs(kForEver);
    ReadWhatCame();
    for (const Command& command : TakeCommands(m_pending)) {
      if (m_running) Answer(command);
    }
  }
}

bool Instrument::WaitMs(int ms) {
  std::array<pollfd, 2> polled = {pollfd{m_stop, POLLIN, 0}, pollfd{m_line.Descriptor(), POLLIN, 0}};
  const int count = ::poll(polled.data(), polled.size(), ms);
  if (count > 0 && polled[0].revents != 0) m_running = false;
  return count == 0;
}

void Instrument::ReadWhatCame() {
  std::array<char, 4096> buffer{};
  // Only once: process what has arrived before reading more.
  const ssize_t count = ::read(m_line.Descriptor(), buffer.data(), buffer.size());
  if (count > 0) {
    const std::string_view bytes(buffer.data(), static_cast<std::size_t>(count));
    m_pending += bytes;
    const std::lock_guard guard(m_mutex);
    if (m_keepsRecord) m_received += bytes;
  }
  // The near side is kept open here, so any result except "nothing there now" means the end of the line.
  if (count < 0 && errno != EAGAIN && errno != EINTR) m_running = false;
}

void Instrument::Answer(const Command& command) {
  const Rule* rule = FindRule(m_rules, command.text);
  if (rule == nullptr) return;
  for (const Step& step : rule->steps) {
    if (!m_running || !Perform(step, command)) return;
  }
  if (m_onAnswered) m_onAnswered();
}

bool Instrument::Perform(const Step& step, const Command& command) {
  if (const auto* bytes = std::get_if<Bytes>(&step)) return Send(bytes->bytes);
  if (const auto* line = std::get_if<Line>(&step)) return Send(command.before + line->text + command.after);
  if (std::holds_alternative<Echo>(step)) return Send(command.before + command.text + command.after);
  if (const auto* pause = std::get_if<PauseMs>(&step)) {
    std::array<pollfd, 1> polled = {pollfd{m_stop, POLLIN, 0}};
    m_running = ::poll(polled.data(), polled.size(), pause->ms) == 0;
    return m_running;
  }
  if (std::holds_alternative<Flood>(step)) {
    SendFlood();
    return true;
  }
  m_line.HangUp();
  m_running = false;
  return false;
}

bool Instrument::Send(std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t count = ::write(m_line.Descriptor(), bytes.data(), bytes.size());
    if (count >= 0) {
      bytes.remove_prefix(static_cast<std::size_t>(count));
      continue;
    }
    if (errno != EAGAIN && errno != EINTR) return false;
    std::array<pollfd, 2> polled = {pollfd{m_stop, POLLIN, 0}, pollfd{m_line.Descriptor(), POLLOUT, 0}};
    if (::poll(polled.data(), polled.size(), -1) > 0 && polled[0].revents != 0) {
      m_running = false;
      return false;
    }
  }
  return true;
}

void Instrument::SendFlood() {
  constexpr int kPaceMs = 1;
  const std::string chunk(64, 'F');
  // A full line drops the chunk: nobody is reading at the moment.
  while (m_running && WaitMs(kPaceMs)) {
    [[maybe_unused]] const ssize_t count = ::write(m_line.Descriptor(), chunk.data(), chunk.size());
  }
}

}  // namespace quarn::device
