// Allocations that fail where no system call does: the terminal's part of a command. And that the tests of
// memory would notice what they look for.

#include <csignal>
#include <cstdlib>

#include "settings/settings_table.h"
#include "support/scripted_line.h"
#include "support/transaction_hosts.h"
#include "system/faults/fault_run.h"
#include "terminal/execute_command.h"
#include "terminal/function_key_table.h"

namespace quarn::test {
namespace {

TEST(MemoryFaults, TheAllocationFailsThatIsMeantAndNoOther) {
  const MemoryFault memory(2);
  std::array<void*, 3> got{};
  for (void*& each : got) each = std::malloc(1);
  for (void* const each : got) std::free(each);
  EXPECT_NE(got[0], nullptr);
  EXPECT_EQ(got[1], nullptr);
  EXPECT_NE(got[2], nullptr);
  EXPECT_TRUE(memory.Struck());
}

TEST(MemoryFaults, OnlyAnEndThatNamesTheReasonIsSaid) {
  EXPECT_TRUE(InCopyOfThisProcess([]() -> int { throw std::bad_alloc(); }).said);
  EXPECT_FALSE(InCopyOfThisProcess([]() -> int { throw std::runtime_error("another"); }).said);
  EXPECT_FALSE(InCopyOfThisProcess([]() -> int { std::abort(); }).said);
  const ProcessEnd crashed = InCopyOfThisProcess([] { return std::raise(SIGSEGV); });
  EXPECT_FALSE(crashed.said);
  EXPECT_FALSE(crashed.itself);
  EXPECT_EQ(InCopyOfThisProcess([] { return 7; }).status, 7);
}

/// A command and its response, in the log of the operations.
TEST(MemoryFaults, ACommandAndItsResponse) {
  struct Scene {
    Journal journal;
    std::shared_ptr<ScriptedLine> line = std::make_shared<ScriptedLine>(journal);
    PortConnection connection;
    SettingsRecord settings = DefaultSettings();
    OperationLog log;
    CommandLine commandLine;
    SilentHost host;
    std::unique_ptr<TransactionEngine> engine;
    TransactionOutcome outcome;
  };
  std::unique_ptr<Scene> scene;
  FaultRun run(
      "execute a command", "/",
      [&] {
        scene = std::make_unique<Scene>();
        scene->line->read = [](char* buffer, std::size_t size) {
          const QByteArray answer = QByteArray("one\rtwo\r");
          std::copy_n(answer.begin(), std::min<std::size_t>(size, static_cast<std::size_t>(answer.size())),
                      buffer);
          return IoResult{.ok = true, .bytes = static_cast<std::size_t>(answer.size())};
        };
        scene->connection.handle = PortHandle(scene->line);
        scene->engine = std::make_unique<TransactionEngine>(scene->connection);
      },
      [&] {
        scene->commandLine.Paste(QStringLiteral("measure"), 64);
        scene->outcome = ExecuteCommand({*scene->engine, scene->settings, scene->log, scene->commandLine},
                                        scene->host, scene->commandLine.Text());
      },
      [&](const Fault& fault) {
        EXPECT_TRUE(fault.struck || scene->outcome.result == TransactionResult::Received);
        EXPECT_TRUE(fault.struck || scene->log.LineCount() == 3);
      });
  // Each takes the pause that belongs to a response.
  EXPECT_GT(run.PlayWithoutMemory(7), 0);
}

}  // namespace
}  // namespace quarn::test
