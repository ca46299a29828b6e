#include "terminal/transaction.h"

#include "support/no_threads_linux.h"
#include "support/scripted_line.h"
#include "terminal/execute_command.h"
#include "terminal/transaction_fixture.h"

namespace quarn {
namespace {

class TransactionHangUp : public TransactionTest {
 protected:
  /// A silence of 2880 ms, so that the hang-up comes first.
  TransactionHangUp() { m_settings.comBps = QStringLiteral("300"); }
};

TEST_F(TransactionHangUp, MidAnswerGivesWhatCameAndThenTheFormerBuffer) {
  Serve("\"id\" -> \"half\" 1000 hangup");
  EXPECT_EQ(Run("id"), TransactionResult::Received);
  EXPECT_EQ(Response(), "half");
  EXPECT_FALSE(m_outcome.lineFailed);
  EXPECT_TRUE(m_outcome.cutOff);
  EXPECT_EQ(m_outcome.byteCount, 3);
  EXPECT_EQ(Run("again"), TransactionResult::Received);
  EXPECT_EQ(Response(), "half");
  EXPECT_TRUE(m_outcome.lineFailed);
  EXPECT_EQ(m_outcome.raw, "");
  EXPECT_EQ(m_outcome.byteCount, -1);
}

TEST_F(TransactionHangUp, InsteadOfAnAnswerIsAFailedRead) {
  Serve("\"unplug\" -> hangup");
  EXPECT_EQ(Run("unplug"), TransactionResult::InvalidData);
  EXPECT_TRUE(m_outcome.lineFailed);
  EXPECT_EQ(m_outcome.raw, "");
  EXPECT_EQ(m_outcome.byteCount, -1);
  EXPECT_TRUE(ClosePort(m_connection));
}

/// The log of two commands, the second of which gets no thread; and why.
QByteArray LogOfTwoCommands(const std::function<bool()>& between) {
  Journal journal;
  auto line = std::make_shared<ScriptedLine>(journal);
  line->read = [](char* buffer, std::size_t) {
    *buffer = 'A';
    return IoResult{.ok = true, .bytes = 1};
  };
  PortConnection connection;
  connection.handle = PortHandle(line);
  TransactionEngine engine(connection);
  const SettingsRecord settings = PatientSettings();
  OperationLog log;
  CommandLine commandLine;
  ScriptedHost host;
  const auto execute = [&](const char* command) {
    return ExecuteCommand({engine, settings, log, commandLine}, host, QString::fromLatin1(command));
  };
  execute("one");
  if (!engine.WhyNoThread().isEmpty() || !between()) return "no test";
  const TransactionOutcome second = execute("two");
  const TransactionOutcome third = execute("three");
  return log.CopyLogAll(QStringLiteral("OFF")).toUtf8().replace('\r', '/') +
         line->written.replace('\r', '/') + ' ' + QByteArray::number(static_cast<int>(second.result)) +
         QByteArray::number(static_cast<int>(third.result)) + ' ' +
         QByteArray(third.lineFailed ? "line failed " : "") + engine.WhyNoThread().toUtf8() +
         (engine.IsBusy() || host.begun != host.ended ? " busy" : "");
}

/// Nothing is sent, and the log is as after a failed read. The program goes on.
TEST(NoThread, IsAFailedRead) {
  const auto play = [] {
    std::fputs(LogOfTwoCommands(test::ForbidThreads).constData(), stderr);
    std::_Exit(0);
  };
  EXPECT_EXIT(play(), testing::ExitedWithCode(0),
              "^\\[one\\]/A/\\[two\\]/A/\\[three\\]/A/one/ 00 line failed Resource temporarily unavailable$");
}

}  // namespace
}  // namespace quarn
