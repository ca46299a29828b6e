#include "terminal/execute_command.h"

#include <cstring>

#include "support/scripted_line.h"
#include "terminal/transaction_fixture.h"

namespace quarn {
namespace {

class Execute : public TransactionTest {
 protected:
  Execute() { m_connection.handle = PortHandle(m_line); }

  void ReadGives(const std::string& bytes) {
    m_line->read = [bytes](char* buffer, std::size_t size) {
      const std::size_t count = std::min(size, bytes.size());
      std::memcpy(buffer, bytes.data(), count);
      return IoResult{.ok = true, .bytes = count};
    };
  }
  /// A read that goes on until it is cancelled.
  void ReadBlocks() {
    m_line->read = [this](char*, std::size_t) {
      m_cancelled.get_future().wait();
      return IoResult{};
    };
    m_line->cancel = [this] { m_cancelled.set_value(); };
  }
  TransactionResult RunCommand(const char* command, TransactionHost& host) {
    return ExecuteCommand({*m_engine, m_settings, m_log, m_commandLine}, host, QString::fromLatin1(command))
        .result;
  }
  TransactionResult RunCommand(const char* command) { return RunCommand(command, m_host); }
  [[nodiscard]] std::vector<std::string> Lines(int first = 0) const {
    std::vector<std::string> lines;
    for (int i = first; i < m_log.LineCount(); ++i) lines.push_back(m_log.Line(i).toStdString());
    return lines;
  }
  void FillLog(int lines) {
    while (m_log.LineCount() < lines) {
      ASSERT_TRUE(m_log.BeginTransaction());
      m_log.AppendLogText(QByteArray("x\r").repeated(std::min(lines - m_log.LineCount(), 1000)));
    }
  }

  Journal m_journal;
  std::promise<void> m_cancelled;
  std::shared_ptr<ScriptedLine> m_line = std::make_shared<ScriptedLine>(m_journal);
  OperationLog m_log;
  CommandLine m_commandLine;
};

using Log = std::vector<std::string>;

TEST_F(Execute, AResponseIsLogged) {
  ReadGives("one\rtwo\r");
  EXPECT_EQ(RunCommand("id"), TransactionResult::Received);
  EXPECT_EQ(Lines(), (Log{"[id]\r", "one\r", "two\r"}));
  EXPECT_EQ(m_commandLine.LastCommand(), QStringLiteral("id"));
  EXPECT_EQ(m_line->written, "id\r");
}

TEST_F(Execute, ACommandForgesNoLineOfTheLog) {
  ReadGives("A\r");
  m_settings.delimiter = QStringLiteral("LF");
  EXPECT_EQ(RunCommand("a]\r[b]\rB\x1b[1m\x7f"), TransactionResult::Received);
  EXPECT_EQ(m_line->written, "a]\r[b]\rB\x1b[1m\x7f\n") << "what is sent is what was asked for";
  EXPECT_EQ(Lines(), (Log{"[a]<CR>[b]<CR>B<ESC>[1m<DEL>]\r", "A\r"}));
}

TEST_F(Execute, CommandsFollowEachOtherInTheLog) {
  ReadGives("A\r");
  RunCommand("a");
  ReadGives("");
  EXPECT_EQ(RunCommand("b"), TransactionResult::InvalidData);
  EXPECT_EQ(Lines(), (Log{"[a]\r", "A\r", "[b]\r", "Error: Received Invalid Data\r", "\r"}));
  EXPECT_EQ(m_commandLine.LastCommand(), QStringLiteral("b"));
}

TEST_F(Execute, ARead1501BytesLongOverflowsTheSmallestBuffer) {
  ReadGives(std::string(1501, 'x'));
  EXPECT_EQ(RunCommand("big"), TransactionResult::Overflow);
  const Log lines = Lines();
  ASSERT_EQ(lines.size(), 25U);
  EXPECT_EQ(lines[0], "[big]\r");
  for (std::size_t i = 1; i <= 21; ++i) EXPECT_EQ(lines[i], std::string(48, 'x') + '\r');
  EXPECT_EQ(lines[22], "...\r");
  EXPECT_EQ(lines[23], "Error: Receive Buffer Overflow > 1500 (MAX. 1024)\r");
  EXPECT_EQ(lines[24], "\r");
}

TEST_F(Execute, ATimeoutIsLogged) {
  SetShortestTimeout();
  ReadBlocks();
  EXPECT_EQ(RunCommand("mute"), TransactionResult::Timeout);
  EXPECT_EQ(Lines(), (Log{"[mute]\r", "Error: Response Timeout Error\r", "\r"}));
}

TEST_F(Execute, AnAbortIsLogged) {
  m_host.escapeAtLook = 1;
  ReadBlocks();
  EXPECT_EQ(RunCommand("mute"), TransactionResult::Aborted);
  EXPECT_EQ(Lines(), (Log{"[mute]\r", "Warning: Aborted by ESC Key\r", "\r"}));
}

TEST_F(Execute, ASecondCommandMeanwhileIsACommunicationErrorAndSendsNothing) {
  ReadBlocks();
  TransactionResult inner{};
  ScriptedHost innerHost;
  m_host.whilePainting = [&] { inner = RunCommand("second", innerHost); };
  EXPECT_EQ(RunCommand("first"), TransactionResult::Aborted) << "the refused command ended the wait";
  EXPECT_EQ(inner, TransactionResult::AlreadyRunning);
  EXPECT_EQ(Lines(), (Log{"[second]\r", "Error: Communication Error\r", "\r", "[first]\r",
                          "Warning: Aborted by ESC Key\r", "\r"}));
  EXPECT_EQ(m_line->written, "first\r");
  EXPECT_FALSE(m_engine->IsBusy());
}

TEST_F(Execute, OneTransactionHasOneSetOfSettings) {
  m_settings.delimiter = QStringLiteral("LF");
  ReadGives("one\ntwo\n");
  m_host.whilePainting = [this] { m_settings.delimiter = QStringLiteral("CR"); };
  EXPECT_EQ(RunCommand("id"), TransactionResult::Received);
  EXPECT_EQ(Lines(), (Log{"[id]\r", "one\r", "two\r"}));
}

TEST_F(Execute, TheLastFreeSlotTakesTheFirstLineAndTheNextCommandIsRefused) {
  FillLog(3999);
  ReadGives("one\rtwo\r");
  EXPECT_EQ(RunCommand("id"), TransactionResult::Received);
  EXPECT_EQ(m_log.LineCount(), 4000);
  EXPECT_EQ(Lines(3999), Log{"[id]\r"});

  const std::size_t steps = m_journal.Entries().size();
  EXPECT_EQ(RunCommand("again"), TransactionResult::LogFull);
  EXPECT_EQ(m_journal.Entries().size(), steps) << "nothing may be sent";
  EXPECT_EQ(m_line->written, "id\r");
  EXPECT_EQ(m_log.LineCount(), 4000);
  EXPECT_EQ(Lines(3998), (Log{"x\r", "[id]\r"}));
  EXPECT_EQ(m_host.begun, 1);
}

TEST_F(Execute, AfterAResetOfTheLogCommandsWorkAgain) {
  FillLog(4000);
  ASSERT_EQ(RunCommand("id"), TransactionResult::LogFull);
  m_log.ResetLog();
  ReadGives("SIM\r");
  EXPECT_EQ(RunCommand("id"), TransactionResult::Received);
  EXPECT_EQ(Lines(), (Log{"[id]\r", "SIM\r"}));
}

TEST_F(Execute, OverARealLine) {
  Serve("\"id\" -> line \"SIM-1\"\n\"bytes\" -> \"\\x02A\\x05\\r\\x7f\\xff\"");
  EXPECT_EQ(RunCommand("id"), TransactionResult::Received);
  EXPECT_EQ(RunCommand("bytes"), TransactionResult::Received);
  EXPECT_EQ(Lines(), (Log{"[id]\r", "SIM-1\r", "[bytes]\r", "<STX>A<ENG>\r", "<DEL><0xff>\r"}));
}

}  // namespace
}  // namespace quarn
