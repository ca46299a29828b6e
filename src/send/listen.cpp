#include "send/listen.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <limits>

#include "send/exit_status.h"
#include "send/failure_text.h"
#include "send/interruption.h"
#include "send/standard_output.h"
#include "serial/line_parameters.h"
#include "terminal/framing.h"

namespace quarn::send {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds kLook{100};
constexpr qsizetype kLongestPiece = 65536;
constexpr std::size_t kReadSize = 4096;

/// A read returns what is there as soon as there is something, and nothing after this time.
LineTimeouts WaitForBytes(std::chrono::milliseconds longest) {
  constexpr std::uint32_t kMaximum = std::numeric_limits<std::uint32_t>::max();
  return {.readInterval = kMaximum,
          .readTotalMultiplier = kMaximum,
          .readTotalConstant = static_cast<std::uint32_t>(longest.count()),
          .writeTotalMultiplier = 0,
          .writeTotalConstant = 0};
}

class Listener {
 public:
  Listener(SerialLine& line, std::chrono::milliseconds silence, QString delimiter, const ListenHost& host)
      : m_line(line), m_silence(silence), m_delimiter(std::move(delimiter)), m_host(host) {}

  ListenEnd Run(LineFailure& failure) {
    while (!m_host.isOver()) {
      if (!ReadOnce(failure)) return TakePiece() ? ListenEnd::LineFailed : ListenEnd::NotPrinted;
      const bool isComplete =
          !m_piece.isEmpty() && (Clock::now() - m_last >= m_silence || m_piece.size() >= kLongestPiece);
      if (isComplete && !TakePiece()) return ListenEnd::NotPrinted;
    }
    return TakePiece() ? ListenEnd::Over : ListenEnd::NotPrinted;
  }

 private:
  /// Within a piece it waits for the silence, but never too long to notice the end.
  bool ReadOnce(LineFailure& failure) {
    const std::chrono::milliseconds wait =
        m_piece.isEmpty() ? kLook : std::clamp(LeftOfSilence(), std::chrono::milliseconds(1), kLook);
    if (wait != m_wait) {
      if (LineResult set = m_line.SetTimeouts(WaitForBytes(wait)); !set) {
        failure = set.Failure();
        return false;
      }
      m_wait = wait;
    }
    std::array<char, kReadSize> bytes{};
    IoResult read = m_line.Read(bytes.data(), bytes.size());
    if (read.bytes > 0) Add(bytes.data(), read.bytes);
    failure = std::move(read.failure);
    return read.ok;
  }

  [[nodiscard]] std::chrono::milliseconds LeftOfSilence() const {
    return std::chrono::ceil<std::chrono::milliseconds>(m_last + m_silence - Clock::now());
  }

  void Add(const char* bytes, std::size_t count) {
    m_last = Clock::now();
    if (m_piece.isEmpty()) {
      m_time = QDateTime::currentDateTimeUtc();
      m_first = m_last;
    }
    m_piece.append(bytes, static_cast<qsizetype>(count));
  }

  bool TakePiece() {
    if (m_piece.isEmpty()) return true;
    Report report{.time = m_time,
                  .duration = std::chrono::duration_cast<std::chrono::microseconds>(m_last - m_first)};
    report.outcome.raw = std::exchange(m_piece, {});
    report.outcome.response = NormaliseResponse(m_delimiter, report.outcome.raw);
    return m_host.take(report);
  }

  SerialLine& m_line;
  const std::chrono::milliseconds m_silence;
  const QString m_delimiter;
  const ListenHost& m_host;
  std::chrono::milliseconds m_wait{0};  ///< what the line's time-outs are set to
  QByteArray m_piece;
  QDateTime m_time;           ///< when its first bytes came
  Clock::time_point m_first;  ///< the same
  Clock::time_point m_last;   ///< when its last bytes came
};

}  // namespace

ListenEnd ListenTo(SerialLine& line, std::chrono::milliseconds silence, const QString& delimiter,
                   const ListenHost& host, LineFailure& failure) {
  return Listener(line, silence, delimiter, host).Run(failure);
}

int Listen(const Options& options, const SettingsRecord& settings, SerialLine& line) {
  const Clock::time_point begin = Clock::now();
  const ReportWriter writer(options, settings);
  const ListenHost host{
      .isOver =
          [&] {
            return IsInterrupted() || (options.listenFor && Clock::now() - begin >= *options.listenFor);
          },
      .take = [&](const Report& report) { return Print(writer.ListenedTextOf(report)); },
  };
  const std::chrono::milliseconds silence(TimeoutsOf(settings.comBps, settings.portSpeed).readInterval);
  LineFailure failure;
  switch (ListenTo(line, silence, settings.delimiter, host, failure)) {
    case ListenEnd::Over:
      return 0;
    case ListenEnd::NotPrinted:
      return kNotPrinted;
    case ListenEnd::LineFailed:
      break;
  }
  Complain(FailureText(settings.comPort, failure));
  return kFailed;
}

}  // namespace quarn::send
