#include <poll.h>
#include <unistd.h>

#include <QFile>
#include <QTemporaryDir>
#include <filesystem>

#include "device/pseudo_terminal.h"
#include "serial/fake_uart.h"
#include "serial/line_failure_linux.h"
#include "serial/line_test_support.h"
#include "serial/open_line_linux.h"
#include "serial/open_terminal_linux.h"
#include "system/faults/fault_run.h"

namespace quarn::test {
namespace {

/// A broken driver, a lost device, a refusal, no memory, and a line in use.
constexpr std::array kLineErrors = {EIO, ENODEV, EINVAL, ENOMEM, EBUSY};

/// What each of them means on an open line.
LineError Meaning(int error) {
  switch (error) {
    case EIO:
    case ENODEV:
      return LineError::Disconnected;
    case EINVAL:
      return LineError::Refused;
    case EBUSY:
      return LineError::InUse;
    default:
      return LineError::Other;
  }
}

/// What each of them means while a line is opened.
LineError MeaningAtOpen(int error) { return error == ENODEV ? LineError::NotFound : Meaning(error); }

constexpr LineState kWanted{.baudRate = 19200, .byteSize = 8};
constexpr LineTimeouts kTimeouts{.readInterval = 20, .readTotalConstant = 500, .writeTotalConstant = 500};

std::ptrdiff_t OpenDescriptors() {
  const std::filesystem::directory_iterator all("/proc/self/fd");
  return std::distance(begin(all), end(all));
}

/// A line that is opened and closed again for each fault; as a UART or a pseudo-terminal.
class LineFaults : public testing::TestWithParam<TerminalKind> {
 protected:
  LineFaults() {
    if (GetParam() != TerminalKind::Uart) return;
    m_uart.emplace();
    // With a fault the driver does not get the call.
    m_uart->failing = [](int descriptor) {
      CallFaults* faults = CallFaults::Current();
      return faults != nullptr && faults->Concerns(descriptor) ? faults->ErrorOrInterruption("ioctl") : 0;
    };
  }

  [[nodiscard]] OpenResult Open() const {
    return OpenTerminalDeviceAs(QString::fromStdString(m_far.NodePath()), GetParam());
  }
  /// An open, configured and idle line, before any fault.
  void OpenAfresh() {
    CloseWithoutFault();
    m_line = Open().line;
    ASSERT_TRUE(m_line);
    ASSERT_TRUE(m_line->SetState({}));
    ASSERT_TRUE(m_line->SetTimeouts(kTimeouts));
    ASSERT_TRUE(m_line->Purge());
  }
  void CloseWithoutFault() {
    if (m_line) m_line->Close();
    m_line.reset();
    if (!m_uart) return;
    // Closing the last descriptor removes the mark.
    m_uart->marked = false;
    m_uart->lowLatency = false;
  }
  /// Runs one operation of an open line; `act` returns its result.
  template <class Act>
  void PlayOnLine(const char* name, const Act& act) {
    LineResult done;
    Play(
        name, [this] { OpenAfresh(); }, [&] { done = act(); },
        [&](const Fault& fault) {
          if (done) {
            EXPECT_TRUE(!fault.struck || GoesOn(fault)) << "a failure was passed over";
          } else {
            EXPECT_TRUE(fault.struck);
            EXPECT_EQ(done.Failure().kind, Meaning(fault.error));
            EXPECT_TRUE(done.Failure().reason.contains(SystemText(fault.error)));
          }
          ExpectWorks();
        });
  }
  /// Returns how many allocations it made.
  template <class Arrange, class Act, class Check>
  int Play(const char* name, const Arrange& arrange, const Act& act, const Check& check) {
    const std::string what = GetParam() == TerminalKind::Uart ? " (UART)" : " (pseudo-terminal)";
    OpenAfresh();
    CloseWithoutFault();
    const auto descriptors = OpenDescriptors();
    const auto checkAll = [&](const Fault& fault) {
      check(fault);
      CloseWithoutFault();
      EXPECT_EQ(OpenDescriptors(), descriptors) << "a descriptor was left open";
    };
    // These faults concern only the line.
    FaultRun run(name + what, m_far.NodePath(), arrange, act, checkAll);
    run.CountEveryThread();
    run.Play(kLineErrors);
    run.PlayHeldUp();
    // Most of these allocate nothing.
    return run.PlayWithoutMemory();
  }
  /// Whether a failure of this call has no effect: it is optional, or its work is already done.
  [[nodiscard]] bool GoesOn(const Fault& fault) const { return m_extras.contains(fault.call); }

  /// After the fault the line works, or works after it is closed and opened again.
  void ExpectWorks() {
    OpenAfresh();
    EXPECT_EQ(m_line->Write("ping", 4).bytes, 4U);
    std::array<char, 4> got{};
    EXPECT_EQ(::read(m_far.Descriptor(), got.data(), got.size()), 4);
    EXPECT_EQ(::write(m_far.Descriptor(), "pong", 4), 4);
    const IoResult answer = m_line->Read(got.data(), got.size());
    EXPECT_TRUE(answer.ok);
    EXPECT_EQ(std::string(got.data(), answer.bytes), "pong");
  }

  /// Takes what has come there.
  [[nodiscard]] std::string EmptyFarEnd() const {
    std::string bytes(16, '\0');
    pollfd polled{m_far.Descriptor(), POLLIN, 0};
    const ssize_t count = ::poll(&polled, 1, 0) > 0 ? ::read(polled.fd, bytes.data(), bytes.size()) : 0;
    bytes.resize(static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
    return bytes;
  }

  device::PseudoTerminal m_far;
  std::optional<FakeUart> m_uart;
  std::shared_ptr<SerialLine> m_line;
  std::set<std::string> m_extras;
};

TEST_P(LineFaults, Open) {
  OpenResult opened;
  int passedOver = 0;
  Play(
      "open the line", [&] { CloseWithoutFault(); }, [&] { opened = Open(); },
      [&](const Fault& fault) {
        if (opened.line) {
          // A UART opens without low latency and without having been emptied, and one that does not say
          // whether it is marked is asked for the mark.
          if (fault.struck) ++passedOver;
          // Without memory for it nobody learns who else uses the line; the mark comes all the same.
          EXPECT_TRUE(!fault.struck || (m_uart && (fault.call == "ioctl" || fault.call == "malloc")));
        } else {
          EXPECT_TRUE(fault.struck);
          EXPECT_EQ(opened.failure.kind, MeaningAtOpen(fault.error)) << opened.failure.reason.toStdString();
          EXPECT_TRUE(opened.failure.reason.startsWith(QString::fromStdString(m_far.NodePath())));
          EXPECT_FALSE(m_uart && m_uart->marked);
        }
        opened.line.reset();
        ExpectWorks();
      });
  EXPECT_EQ(passedOver, m_uart ? 4 * static_cast<int>(kLineErrors.size()) : 0);
}

TEST_P(LineFaults, GetState) {
  PlayOnLine("get the state", [this] {
    LineState state;
    return m_line->GetState(state);
  });
}

TEST_P(LineFaults, SetState) {
  PlayOnLine("set the state", [this] { return m_line->SetState(kWanted); });
}

TEST_P(LineFaults, AFailedSetStateLeavesTheLineAsItWas) {
  LineState state;
  LineResult done;
  Play(
      "set the state and look", [this] { OpenAfresh(); }, [&] { done = m_line->SetState(kWanted); },
      [&](const Fault&) {
        ASSERT_TRUE(m_line->GetState(state));
        EXPECT_EQ(state, done ? kWanted : LineState{});
      });
}

TEST_P(LineFaults, SetTimeouts) {
  PlayOnLine("set the time-outs", [this] { return m_line->SetTimeouts({.readInterval = 1}); });
}

TEST_P(LineFaults, Purge) {
  PlayOnLine("purge", [this] { return m_line->Purge(); });
}

TEST_P(LineFaults, ClearError) {
  PlayOnLine("clear an error", [this] { return m_line->ClearError(); });
}

TEST_P(LineFaults, Write) {
  PlayOnLine("write", [this] {
    const IoResult result = m_line->Write("command\r", 8);
    EXPECT_EQ(result.bytes, result.ok ? 8U : 0U);
    return result.ok ? LineResult() : LineResult(result.failure);
  });
}

TEST_P(LineFaults, Read) {
  std::array<char, 64> buffer{};
  std::string got;
  IoResult result;
  Play(
      "read",
      [&] {
        OpenAfresh();
        ASSERT_EQ(::write(m_far.Descriptor(), "answer", 6), 6);
      },
      [&] {
        result = m_line->Read(buffer.data(), buffer.size());
        got.assign(buffer.data(), result.bytes);
      },
      [&](const Fault& fault) {
        EXPECT_TRUE(!fault.struck || result.failure.kind == Meaning(fault.error));
        // Bytes received until then are returned; later ones come with the next read.
        EXPECT_EQ(result.ok, !got.empty());
        EXPECT_TRUE(fault.struck || result.ok);
        if (!result.ok) got.assign(buffer.data(), m_line->Read(buffer.data(), buffer.size()).bytes);
        EXPECT_EQ(got, "answer");
        ExpectWorks();
      });
}

/// Neither can fail, and nothing is written in between. The call that wakes the reader, or takes the wake-up
/// back, may: then the line works after it is opened again.
TEST_P(LineFaults, CancelAndAllow) {
  IoResult refused;
  IoResult sent;
  const int allocations = Play(
      "cancel and allow",
      [this] {
        OpenAfresh();
        (void)EmptyFarEnd();
      },
      [&] {
        m_line->CancelIo();
        refused = m_line->Write("x", 1);
        m_line->AllowIo();
        sent = m_line->Write("y", 1);
      },
      [&](const Fault& fault) {
        EXPECT_FALSE(refused.ok);
        EXPECT_EQ(refused.bytes, 0U);
        EXPECT_EQ(refused.failure.kind, LineError::Cancelled);
        EXPECT_EQ(EmptyFarEnd(), sent.ok ? "y" : "");
        EXPECT_TRUE(sent.ok || fault.struck);
        // Whoever still sees the wake-up has been cancelled.
        const LineError expected = fault.call == "read" ? LineError::Cancelled : Meaning(fault.error);
        EXPECT_EQ(sent.failure.kind, sent.ok ? LineError::None : expected);
        ExpectWorks();
      });
  EXPECT_GT(allocations, 0) << "the reason of the refusal is a text";
}

TEST_P(LineFaults, Close) {
  LineResult closed;
  Play(
      "close the line", [&] { OpenAfresh(); }, [&] { closed = m_line->Close(); },
      [&](const Fault& fault) {
        EXPECT_EQ(static_cast<bool>(closed), fault.call != "close");
        EXPECT_TRUE(closed || closed.Failure().kind == Meaning(fault.error));
        const LineResult purged = m_line->Purge();
        EXPECT_FALSE(purged);
        EXPECT_EQ(purged.Failure().kind, LineError::Disconnected);
        ExpectWorks();
      });
}

TEST(LineOpenerFaults, OpenByThePortsName) {
  const device::PseudoTerminal far;
  const QTemporaryDir ports;
  ASSERT_TRUE(QFile::link(QString::fromStdString(far.NodePath()), ports.filePath(QStringLiteral("COM3"))));
  LinuxLineOpener opener(ports.path());
  OpenResult opened;
  const auto act = [&] { opened = opener.Open(QStringLiteral("COM3")); };
  const auto check = [&](const Fault& fault) {
    const bool goesOn = fault.call == "readlink" && fault.error == EINVAL;  // what is there is no link
    EXPECT_EQ(opened.line == nullptr, fault.struck && !goesOn);
    // A link that cannot be followed leads nowhere.
    EXPECT_TRUE(opened.line || opened.failure.kind == LineError::NotFound ||
                opened.failure.kind == MeaningAtOpen(fault.error));
    EXPECT_EQ(opened.failure.reason.isEmpty(), opened.line != nullptr);
    opened.line.reset();
  };
  FaultRun run(
      "open by the port's name", "/", [] {}, act, check);
  run.Play(kLineErrors);
  opened.line.reset();
  EXPECT_GT(run.PlayWithoutMemory(), 0);
}

INSTANTIATE_TEST_SUITE_P(Kinds, LineFaults, testing::Values(TerminalKind::Uart, TerminalKind::PseudoTerminal),
                         [](const auto& kind) {
                           return kind.param == TerminalKind::Uart ? "Uart" : "PseudoTerminal";
                         });

}  // namespace
}  // namespace quarn::test
