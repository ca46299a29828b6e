// Cases that need the far end of a pseudo-terminal, or another program's descriptor of the near end.

#include <fcntl.h>
#include <sys/ioctl.h>
#include <termios.h>

#include <atomic>

#include "serial/file_descriptor.h"
#include "serial/pty_line_test.h"

namespace quarn {
namespace {

constexpr LineTimeouts kPatient{.readInterval = 60'000};

class PtyLineCases : public PtyLineTest {
 protected:
  // Each test opens the line itself.
  void SetUp() override {}
  void Open() { PtyLineTest::SetUp(); }

  /// The state of the line as another program sets and sees it.
  [[nodiscard]] termios State() const {
    termios state{};
    EXPECT_EQ(::tcgetattr(m_near.Get(), &state), 0);
    return state;
  }
  template <class Change>
  void ChangeState(const Change& change) const {
    termios state = State();
    change(state);
    ASSERT_EQ(::tcsetattr(m_near.Get(), TCSANOW, &state), 0);
  }
  void LeaveWithoutWaiting() const {
    ChangeState([](termios& state) {
      state.c_cc[VMIN] = 0;
      state.c_cc[VTIME] = 0;
    });
  }
  [[nodiscard]] int Waiting() const {
    int waiting = -1;
    EXPECT_EQ(::ioctl(m_near.Get(), FIONREAD, &waiting), 0);
    return waiting;
  }
  /// A read without time-outs waits for the first byte.
  void ExpectAReadWaits() {
    auto reading = ReadInThread(4);
    EXPECT_TRUE(StillRuns(reading));
    EXPECT_FALSE(m_line->IsLost());
    FarSends("late");
    ASSERT_TRUE(Ends(reading));
    const ReadOutcome outcome = reading.get();
    EXPECT_TRUE(outcome.result.ok);
    EXPECT_EQ(outcome.bytes, "late");
    EXPECT_EQ(outcome.result.failure.kind, LineError::None);
    EXPECT_FALSE(m_line->IsLost());
  }

  FileDescriptor m_near{::open(m_far.NodePath().c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC)};
};

TEST_F(PtyLineCases, ALineLeftWithoutWaitingWaits) {
  ASSERT_NO_FATAL_FAILURE(LeaveWithoutWaiting());
  ASSERT_NO_FATAL_FAILURE(Open());
  ASSERT_TRUE(m_line->SetTimeouts({}));
  ExpectAReadWaits();
  EXPECT_TRUE(m_line->Close());
  EXPECT_EQ(State().c_cc[VMIN], 0) << "as it was left";
}

TEST_F(PtyLineCases, AndSoDoesOneThatIsMadeSoWhileItIsOpen) {
  ASSERT_NO_FATAL_FAILURE(Open());
  ASSERT_TRUE(m_line->SetTimeouts({}));
  ASSERT_NO_FATAL_FAILURE(LeaveWithoutWaiting());
  ExpectAReadWaits();
}

TEST_F(PtyLineCases, BytesThatAreTakenFromUnderAReadAreNoLoss) {
  ASSERT_NO_FATAL_FAILURE(Open());
  ASSERT_TRUE(m_line->SetTimeouts({}));
  ASSERT_NO_FATAL_FAILURE(LeaveWithoutWaiting());
  // With these settings a read of the system that comes too late gives no bytes and no error.
  std::atomic<bool> enough = false;
  auto dropping = InThread([&] {
    while (!enough) EXPECT_TRUE(m_line->Purge());
  });
  auto reading = ReadInThread(20'000);
  for (int i = 0; i < 20'000; ++i) {
    FarSends("x");
    if (reading.wait_for(std::chrono::seconds(0)) == std::future_status::ready) break;
  }
  enough = true;
  dropping.get();
  EXPECT_FALSE(m_line->IsLost());
  m_line->CancelIo();
  ASSERT_TRUE(Ends(reading));
  const LineError end = reading.get().result.failure.kind;
  EXPECT_TRUE(end == LineError::None || end == LineError::Cancelled) << static_cast<int>(end);
}

TEST_F(PtyLineCases, MarksOfBreaksAndParityErrorsAreOffWhoeverLeftThemOn) {
  const std::string marks(
      "\xFF\x00\x00\xFF\x00"
      "A\xFF\xFF\x00",
      9);
  ASSERT_NO_FATAL_FAILURE(ChangeState([](termios& state) { state.c_iflag |= PARMRK | INPCK | BRKINT; }));
  // That the setting is felt here: the system doubles this byte to tell it from a mark.
  FarSends("\xFF");
  ASSERT_TRUE(Eventually([this] { return Waiting() == 2; }));
  ASSERT_EQ(::tcflush(m_near.Get(), TCIFLUSH), 0);

  ASSERT_NO_FATAL_FAILURE(Open());
  EXPECT_EQ(State().c_iflag & (PARMRK | INPCK | BRKINT | IGNBRK | IGNPAR), 0U);
  ASSERT_TRUE(m_line->SetTimeouts(kPatient));
  FarSends(marks);
  EXPECT_EQ(Read(marks.size()).bytes, marks);
  EXPECT_EQ(Waiting(), 0);
  EXPECT_TRUE(m_line->Close());
  EXPECT_NE(State().c_iflag & PARMRK, 0U) << "as it was left";
}

TEST_F(PtyLineCases, TwoWritesWithinTheIntervalAreOneRead) {
  ASSERT_NO_FATAL_FAILURE(Open());
  ASSERT_TRUE(m_line->SetTimeouts(kPatient));
  FarSends("one");
  ASSERT_TRUE(Eventually([this] { return Waiting() == 3; }));
  auto reading = ReadInThread(6);
  ASSERT_TRUE(Eventually([this] { return Waiting() == 0; }));
  FarSends("two");
  ASSERT_TRUE(Ends(reading));
  EXPECT_EQ(reading.get().bytes, "onetwo");
}

TEST_F(PtyLineCases, APauseMakesTwoReads) {
  ASSERT_NO_FATAL_FAILURE(Open());
  ASSERT_TRUE(m_line->SetTimeouts({.readInterval = 30}));
  for (const char* each : {"one", "two"}) {
    auto reading = ReadInThread();
    FarSends(each);
    ASSERT_TRUE(Ends(reading)) << "the pause is as long as the read lasts";
    EXPECT_EQ(reading.get().bytes, each);
  }
}

TEST_F(PtyLineCases, AFirstByteLaterThanTheIntervalIsStillTheAnswer) {
  ASSERT_NO_FATAL_FAILURE(Open());
  for (const std::uint32_t interval : {1U, 5U, 20U}) {
    ASSERT_TRUE(m_line->SetTimeouts({.readInterval = interval, .readTotalConstant = 600'000}));
    auto reading = ReadInThread();
    EXPECT_TRUE(StillRuns(reading)) << "the interval has passed";
    FarSends("late");
    ASSERT_TRUE(Ends(reading));
    EXPECT_EQ(reading.get().bytes, "late");
  }
}

TEST_F(PtyLineCases, TheTotalEndsAReadBeforeItsIntervalDoes) {
  ASSERT_NO_FATAL_FAILURE(Open());
  ASSERT_TRUE(m_line->SetTimeouts({.readInterval = 600'000, .readTotalConstant = 100}));
  FarSends("some");
  auto reading = ReadInThread();
  ASSERT_TRUE(Ends(reading)) << "ten minutes of the interval were left";
  EXPECT_EQ(reading.get().bytes, "some");
}

TEST_F(PtyLineCases, TheIntervalEndsAReadBeforeItsTotalDoes) {
  ASSERT_NO_FATAL_FAILURE(Open());
  ASSERT_TRUE(m_line->SetTimeouts({.readInterval = 20, .readTotalConstant = 600'000}));
  FarSends("some");
  auto reading = ReadInThread();
  ASSERT_TRUE(Ends(reading)) << "ten minutes of the total were left";
  EXPECT_EQ(reading.get().bytes, "some");
}

TEST(HangUpCases, AMessageComesBeforeTheLossThreeTimes) {
  for (int round = 0; round < 3; ++round) {
    device::PseudoTerminal far;
    const auto line = OpenTerminalDevice(QString::fromStdString(far.NodePath())).line;
    ASSERT_TRUE(line);
    ASSERT_TRUE(line->SetTimeouts({}));
    const FileDescriptor near(::open(far.NodePath().c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC));
    const auto waits = [&near](int bytes) {
      int waiting = -1;
      return ::ioctl(near.Get(), FIONREAD, &waiting) == 0 && waiting == bytes;
    };
    ASSERT_EQ(::write(far.Descriptor(), "message", 7), 7);
    ASSERT_TRUE(Eventually([&] { return waits(7); }));
    std::string bytes(100, '\0');
    auto reading = InThread([&] { return line->Read(bytes.data(), bytes.size()); });
    ASSERT_TRUE(Eventually([&] { return waits(0); })) << "the message has not been taken";
    EXPECT_FALSE(line->IsLost());
    far.HangUp();
    ASSERT_TRUE(Ends(reading));
    const IoResult answer = reading.get();
    EXPECT_TRUE(answer.ok);
    EXPECT_EQ(bytes.substr(0, answer.bytes), "message");
    const IoResult next = line->Read(bytes.data(), bytes.size());
    EXPECT_FALSE(next.ok);
    EXPECT_EQ(next.bytes, 0U);
    EXPECT_EQ(next.failure.kind, LineError::Disconnected);
    EXPECT_TRUE(line->IsLost());
    EXPECT_TRUE(line->Close());
  }
}

/// The system may drop what nobody has read yet. It never changes it, and tells the loss.
TEST(HangUpCases, AMessageThatIsNotReadYetIsWholeOrMissing) {
  for (int round = 0; round < 3; ++round) {
    device::PseudoTerminal far;
    const auto line = OpenTerminalDevice(QString::fromStdString(far.NodePath())).line;
    ASSERT_TRUE(line);
    ASSERT_TRUE(line->SetTimeouts({}));
    ASSERT_EQ(::write(far.Descriptor(), "message", 7), 7);
    far.HangUp();
    std::string bytes(100, '\0');
    std::string got;
    IoResult read;
    for (int reads = 0; reads < 2; ++reads) {
      read = line->Read(bytes.data(), bytes.size());
      got += bytes.substr(0, read.bytes);
    }
    EXPECT_TRUE(got == "message" || got.empty()) << got;
    EXPECT_FALSE(read.ok);
    EXPECT_EQ(read.failure.kind, LineError::Disconnected);
    EXPECT_TRUE(line->IsLost());
  }
}

}  // namespace
}  // namespace quarn
