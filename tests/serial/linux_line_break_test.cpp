#include <fcntl.h>
#include <sys/ioctl.h>

#include <QFile>
#include <QTemporaryDir>
#include <atomic>

#include "serial/pty_line_test.h"

namespace quarn {
namespace {

// Ends of a read or write other than bytes and time-outs: the far end, CancelIo, Close.
class LinuxLineBreak : public PtyLineTest {
 protected:
  void SetUp() override {
    PtyLineTest::SetUp();
    ASSERT_TRUE(m_line->SetTimeouts({}));  // no time-outs
  }
  /// The number of received bytes that are not read yet.
  [[nodiscard]] int Waiting() const {
    int waiting = -1;
    const int near = ::open(m_far.NodePath().c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
    EXPECT_EQ(::ioctl(near, FIONREAD, &waiting), 0);
    ::close(near);
    return waiting;
  }
};

TEST_F(LinuxLineBreak, AHangUpBeforeAReadFailsIt) {
  m_far.HangUp();
  const ReadOutcome outcome = Read();
  EXPECT_FALSE(outcome.result.ok);
  EXPECT_EQ(outcome.result.bytes, 0U);
  EXPECT_EQ(outcome.result.failure.kind, LineError::Disconnected);
}

TEST_F(LinuxLineBreak, AHangUpWakesABlockedRead) {
  auto reading = ReadInThread();
  EXPECT_TRUE(StillRuns(reading));
  m_far.HangUp();
  ASSERT_TRUE(Ends(reading));
  const IoResult read = reading.get().result;
  EXPECT_FALSE(read.ok);
  EXPECT_EQ(read.failure.kind, LineError::Disconnected);
}

TEST_F(LinuxLineBreak, AHangUpAfterSomeBytesGivesTheseAndFailsTheNextRead) {
  FarSends("half");
  ASSERT_TRUE(Eventually([this] { return Waiting() == 4; }));
  auto reading = ReadInThread();
  ASSERT_TRUE(Eventually([this] { return Waiting() == 0; }));
  EXPECT_TRUE(StillRuns(reading));
  m_far.HangUp();
  ASSERT_TRUE(Ends(reading));
  const ReadOutcome outcome = reading.get();
  EXPECT_TRUE(outcome.result.ok);
  EXPECT_EQ(outcome.bytes, "half");
  EXPECT_EQ(outcome.result.failure.kind, LineError::Disconnected) << "what ended it";
  const IoResult next = Read().result;
  EXPECT_FALSE(next.ok);
  EXPECT_EQ(next.failure.kind, LineError::Disconnected);
}

TEST_F(LinuxLineBreak, AWriteAfterAHangUpFails) {
  m_far.HangUp();
  const IoResult written = Write("x");
  EXPECT_FALSE(written.ok);
  EXPECT_EQ(written.failure.kind, LineError::Disconnected);
}

TEST_F(LinuxLineBreak, AHangUpEndsABlockedWrite) {
  FillLine();
  ASSERT_TRUE(m_line->SetTimeouts({}));
  auto writing = InThread([this] { return Write("more"); });
  EXPECT_TRUE(StillRuns(writing));
  m_far.HangUp();
  ASSERT_TRUE(Ends(writing));
  EXPECT_FALSE(writing.get().ok);
}

TEST_F(LinuxLineBreak, CancelWakesABlockedRead) {
  auto reading = ReadInThread();
  EXPECT_TRUE(StillRuns(reading));
  m_line->CancelIo();
  ASSERT_TRUE(Ends(reading));
  const IoResult read = reading.get().result;
  EXPECT_FALSE(read.ok);
  EXPECT_EQ(read.failure.kind, LineError::Cancelled);
}

TEST_F(LinuxLineBreak, CancelWakesABlockedWrite) {
  FillLine();
  ASSERT_TRUE(m_line->SetTimeouts({}));
  auto writing = InThread([this] { return Write("more"); });
  EXPECT_TRUE(StillRuns(writing));
  m_line->CancelIo();
  ASSERT_TRUE(Ends(writing));
  const IoResult written = writing.get();
  EXPECT_FALSE(written.ok);
  EXPECT_EQ(written.failure.kind, LineError::Cancelled);
}

TEST_F(LinuxLineBreak, ACancelledReadThatHasBytesGivesTheseAndTheNextReadFails) {
  FarSends("half");
  auto reading = ReadInThread();
  ASSERT_TRUE(Eventually([this] { return Waiting() == 0; }));
  EXPECT_TRUE(StillRuns(reading));
  m_line->CancelIo();
  ASSERT_TRUE(Ends(reading));
  const ReadOutcome outcome = reading.get();
  EXPECT_TRUE(outcome.result.ok);
  EXPECT_EQ(outcome.bytes, "half");
  EXPECT_EQ(outcome.result.failure.kind, LineError::Cancelled) << "what ended it";
  const IoResult next = Read().result;
  EXPECT_FALSE(next.ok);
  EXPECT_EQ(next.failure.kind, LineError::Cancelled);
}

TEST_F(LinuxLineBreak, ACancelledWriteSaysHowMuchWent) {
  const std::string message(1'000'000, 'w');
  auto writing = InThread([&] { return Write(message); });
  EXPECT_TRUE(StillRuns(writing));
  m_line->CancelIo();
  ASSERT_TRUE(Ends(writing));
  const IoResult written = writing.get();
  EXPECT_TRUE(written.ok);
  EXPECT_GT(written.bytes, 0U);
  EXPECT_LT(written.bytes, message.size());
}

TEST_F(LinuxLineBreak, CancelHoldsUntilIoIsAllowedAgain) {
  FarSends("waiting");
  m_line->CancelIo();
  m_line->CancelIo();
  EXPECT_FALSE(Read(7).result.ok);
  EXPECT_FALSE(Write("x").ok);
  const IoResult read = Read(7).result;
  EXPECT_FALSE(read.ok);
  EXPECT_EQ(read.failure.kind, LineError::Cancelled);
  m_line->AllowIo();
  EXPECT_EQ(Read(7).bytes, "waiting");
  EXPECT_TRUE(Write("x").ok);
}

TEST_F(LinuxLineBreak, CancelLeavesControlCallsAlone) {
  m_line->CancelIo();
  LineState state;
  EXPECT_TRUE(m_line->GetState(state));
  EXPECT_TRUE(m_line->SetState({.baudRate = 14400}));
  EXPECT_TRUE(m_line->Purge());
}

TEST_F(LinuxLineBreak, ACancelledReadLeavesTheFailureOfAnotherCallAlone) {
  auto reading = ReadInThread();
  EXPECT_TRUE(StillRuns(reading));
  const LineResult set = m_line->SetState({.stopBits = StopBits::OnePointFive});
  m_line->CancelIo();
  ASSERT_TRUE(Ends(reading));
  EXPECT_EQ(reading.get().result.failure.kind, LineError::Cancelled);
  EXPECT_FALSE(set);
  EXPECT_EQ(set.Failure().kind, LineError::Refused);
  EXPECT_TRUE(set.Failure().reason.contains(QStringLiteral("data and stop bits")));
}

TEST_F(LinuxLineBreak, CloseWakesABlockedReadFirst) {
  auto reading = ReadInThread();
  EXPECT_TRUE(StillRuns(reading));
  auto closing = InThread([this] { return m_line->Close(); });
  ASSERT_TRUE(Ends(closing));
  EXPECT_TRUE(closing.get());
  ASSERT_TRUE(Ends(reading));
  const IoResult read = reading.get().result;
  EXPECT_FALSE(read.ok);
  EXPECT_EQ(read.failure.kind, LineError::Disconnected);
  EXPECT_FALSE(Read().result.ok);
  EXPECT_TRUE(OpenTerminalDevice(QString::fromStdString(m_far.NodePath())).line);
}

TEST_F(LinuxLineBreak, CloseWakesABlockedWriteFirst) {
  FillLine();
  ASSERT_TRUE(m_line->SetTimeouts({}));
  auto writing = InThread([this] { return Write("more"); });
  EXPECT_TRUE(StillRuns(writing));
  auto closing = InThread([this] { return m_line->Close(); });
  ASSERT_TRUE(Ends(closing));
  ASSERT_TRUE(Ends(writing));
  EXPECT_FALSE(writing.get().ok);
}

TEST_F(LinuxLineBreak, CancellingAtAnyMomentNeverLosesTheWakeUp) {
  // Without blocking first: the cancel hits the read before, while or after it starts to wait.
  for (int round = 0; round < 200; ++round) {
    auto reading = ReadInThread();
    m_line->CancelIo();
    ASSERT_TRUE(Ends(reading));
    EXPECT_FALSE(reading.get().result.ok);
    m_line->AllowIo();
  }
}

TEST_F(LinuxLineBreak, ClosingIsHeardThoughAnotherThreadAllowsIo) {
  for (int round = 0; round < 200; ++round) {
    auto reading = ReadInThread();
    std::atomic<bool> enough = false;
    auto allowing = InThread([&] {
      while (!enough) m_line->AllowIo();
    });
    auto closing = InThread([this] { return m_line->Close(); });
    const bool closed = Ends(closing);
    if (!closed) m_far.HangUp();  // so that this test ends
    enough = true;
    ASSERT_TRUE(closed) << "in round " << round;
    ASSERT_TRUE(Ends(reading));
    allowing.get();
    m_line = OpenTerminalDevice(QString::fromStdString(m_far.NodePath())).line;
    ASSERT_TRUE(m_line);
    ASSERT_TRUE(m_line->SetTimeouts({}));
  }
}

TEST_F(LinuxLineBreak, ClosingAtAnyMomentIsSafe) {
  for (int round = 0; round < 50; ++round) {
    auto reading = ReadInThread();
    EXPECT_TRUE(m_line->Close());
    ASSERT_TRUE(Ends(reading));
    EXPECT_FALSE(reading.get().result.ok);
    m_line = OpenTerminalDevice(QString::fromStdString(m_far.NodePath())).line;
    ASSERT_TRUE(m_line);
    ASSERT_TRUE(m_line->SetTimeouts({}));
  }
}

TEST_F(LinuxLineBreak, ALineIsLostWithTheHangUpAndNotBefore) {
  EXPECT_FALSE(m_line->IsLost());
  FarSends("bytes that nobody has read");
  EXPECT_FALSE(m_line->IsLost());
  m_far.HangUp();
  EXPECT_TRUE(m_line->IsLost());
  Read();
  Read();
  EXPECT_TRUE(m_line->IsLost());
  EXPECT_TRUE(m_line->Close());
  EXPECT_FALSE(m_line->IsLost()) << "closed is not lost";
}

TEST_F(LinuxLineBreak, ACancelledOrSilentLineIsNotLost) {
  ASSERT_TRUE(m_line->SetTimeouts({.readTotalConstant = 1}));
  EXPECT_TRUE(Read().result.ok);
  m_line->CancelIo();
  EXPECT_FALSE(Read().result.ok);
  EXPECT_FALSE(m_line->IsLost());
}

TEST_F(LinuxLineBreak, ALineCanBeAskedWhileAReadWaits) {
  auto reading = ReadInThread();
  EXPECT_TRUE(StillRuns(reading));
  EXPECT_FALSE(m_line->IsLost());
  EXPECT_TRUE(StillRuns(reading));
  m_line->CancelIo();
  EXPECT_TRUE(Ends(reading));
}

TEST(LineNode, ALineIsLostWhenItsNodeIsAnotherDevice) {
  const device::PseudoTerminal far;
  const device::PseudoTerminal other;
  const QTemporaryDir folder;
  const QString node = folder.filePath(QStringLiteral("node"));
  const auto lead = [&](const device::PseudoTerminal& to) {
    QFile::remove(node);
    ASSERT_TRUE(QFile::link(QString::fromStdString(to.NodePath()), node));
  };
  lead(far);
  const auto line = OpenTerminalDevice(node).line;
  ASSERT_TRUE(line);
  EXPECT_FALSE(line->IsLost());
  lead(other);
  EXPECT_TRUE(line->IsLost());
  QFile::remove(node);
  EXPECT_TRUE(line->IsLost());
  lead(far);
  EXPECT_FALSE(line->IsLost());
}

}  // namespace
}  // namespace quarn
