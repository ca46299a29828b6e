// Who looks at the ports all the time may sleep until something can have changed.

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QEventLoop>

#include "serial/port_source_linux.h"
#include "serial_fixtures.h"

namespace quarn {
namespace {

class PortRevision : public testing::Test {
 protected:
  void SetUp() override { m_scratch.Folder("ports"); }

  LinuxPortSource SourceOf(ChangeWatch::Mode mode = ChangeWatch::Mode::Events) {
    return LinuxPortSource(QString::fromStdString(m_scratch.At("ports")), {}, mode);
  }
  static qsizetype Count(LinuxPortSource& source) {
    const std::optional<QList<Port>> ports = source.Ports();
    EXPECT_TRUE(ports);
    return ports ? ports->size() : -1;
  }
  /// What pins the computer's own lines is a change in its turn.
  static std::uint64_t Settle(LinuxPortSource& source) {
    for (int i = 0; i < 3; ++i) source.Ports();
    const auto revision = source.Revision();
    EXPECT_TRUE(revision);
    return revision.value_or(0);
  }
  /// Sleeps in the event loop until the revision is another one.
  static bool WakesUp(LinuxPortSource& source, std::uint64_t revision) {
    const QDeadlineTimer end(10'000);
    while (source.Revision() == revision && !end.hasExpired()) {
      QCoreApplication::processEvents(QEventLoop::AllEvents, 100);
    }
    return source.Revision() != revision;
  }

  int m_argc = 1;
  char m_name[6] = "ports";
  char* m_argv[2] = {m_name, nullptr};
  QCoreApplication m_loop{m_argc, m_argv};
  ScratchFolder m_scratch;
};

TEST_F(PortRevision, IsUnknownBeforeThePortsAreListed) {
  LinuxPortSource source = SourceOf();
  EXPECT_EQ(source.Revision(), std::nullopt);
  source.Ports();
  EXPECT_NE(source.Revision(), std::nullopt);
  source.Forget();
  EXPECT_EQ(source.Revision(), std::nullopt);
}

TEST_F(PortRevision, IsUnknownWhereFilesHaveToBeLookedAt) {
  LinuxPortSource source = SourceOf(ChangeWatch::Mode::PollingOnly);
  source.Ports();
  EXPECT_EQ(source.Revision(), std::nullopt);
}

TEST_F(PortRevision, StaysWhileNothingHappens) {
  LinuxPortSource source = SourceOf();
  const std::uint64_t revision = Settle(source);
  for (int i = 0; i < 20; ++i) {
    QCoreApplication::processEvents();
    source.Ports();
    EXPECT_EQ(source.Revision(), revision);
  }
}

TEST_F(PortRevision, ChangesByItselfWhenAPortComesAndWhenItGoes) {
  const PseudoTerminal terminal;
  LinuxPortSource source = SourceOf();
  std::uint64_t revision = Settle(source);
  const qsizetype before = Count(source);
  m_scratch.Link("ports/COM57", terminal.Node());
  EXPECT_TRUE(WakesUp(source, revision));
  EXPECT_EQ(Count(source), before + 1);
  revision = Settle(source);
  m_scratch.Remove("ports/COM57");
  EXPECT_TRUE(WakesUp(source, revision));
  EXPECT_EQ(Count(source), before);
}

TEST_F(PortRevision, ChangesByItselfWhenThePortsFarEndIsClosed) {
  PseudoTerminal terminal = TerminalOfHighNumber();
  m_scratch.Link("ports/COM57", terminal.Node());
  LinuxPortSource source = SourceOf();
  const std::uint64_t revision = Settle(source);
  const qsizetype before = Count(source);
  terminal.Close();
  EXPECT_TRUE(WakesUp(source, revision));
  EXPECT_EQ(Count(source), before - 1);
}

/// Somebody else may ask first, and who sleeps must not miss the change because of it.
TEST_F(PortRevision, IsAnotherOneAfterSomebodyElseHasListedTheChange) {
  const PseudoTerminal terminal;
  LinuxPortSource source = SourceOf();
  const std::uint64_t revision = Settle(source);
  m_scratch.Link("ports/COM57", terminal.Node());
  source.Ports();
  EXPECT_NE(source.Revision(), revision);
}

/// The descriptor stays readable until somebody asks; the loop must be able to sleep all the same.
TEST_F(PortRevision, TellsOfAChangeOnceUntilThePortsAreListed) {
  const PseudoTerminal terminal;
  LinuxPortSource source = SourceOf();
  const std::uint64_t revision = Settle(source);
  m_scratch.Link("ports/COM57", terminal.Node());
  ASSERT_TRUE(WakesUp(source, revision));
  const auto told = source.Revision();
  for (int i = 0; i < 20; ++i) QCoreApplication::processEvents();
  EXPECT_EQ(source.Revision(), told);
}

}  // namespace
}  // namespace quarn
