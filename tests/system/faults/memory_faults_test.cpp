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

/// A terminal whose instrument answers every command with two lines.
struct Scene {
  Scene() {
    line->read = [](char* buffer, std::size_t size) {
      std::copy_n(kAnswer.begin(), std::min(size, kAnswer.size()), buffer);
      return IoResult{.ok = true, .bytes = kAnswer.size()};
    };
    connection.handle = PortHandle(line);
  }
  void Execute(const QString& command) {
    commandLine.Paste(command, 64);
    outcome = ExecuteCommand({engine, settings, log, commandLine}, host, commandLine.Text());
  }
  [[nodiscard]] bool WasAnswered() const {
    return outcome.result == TransactionResult::Received && outcome.response == QByteArray(kAnswer.data());
  }

  /// The next command is answered as if nothing had happened before.
  void ExpectReady() {
    EXPECT_FALSE(engine.IsBusy());
    line->written.clear();
    const int before = log.LineCount();
    Execute(QStringLiteral("next"));
    EXPECT_TRUE(WasAnswered());
    EXPECT_FALSE(engine.IsBusy());
    EXPECT_EQ(line->written, QByteArray("next\r"));
    ASSERT_EQ(log.LineCount(), before + 3);
    EXPECT_EQ(log.Line(before), QByteArray("[next]\r"));
    EXPECT_EQ(log.Line(before + 1), QByteArray("one\r"));
    EXPECT_EQ(log.Line(before + 2), QByteArray("two\r"));
  }

  static constexpr std::string_view kAnswer = "one\rtwo\r";
  Journal journal;
  std::shared_ptr<ScriptedLine> line = std::make_shared<ScriptedLine>(journal);
  PortConnection connection;
  SettingsRecord settings = DefaultSettings();
  OperationLog log;
  CommandLine commandLine;
  SilentHost host;
  TransactionEngine engine{connection};
  TransactionOutcome outcome;
};

/// A command and its response, in the log of the operations.
TEST(MemoryFaults, ACommandAndItsResponse) {
  std::unique_ptr<Scene> scene;
  FaultRun run(
      "execute a command", "/", [&] { scene = std::make_unique<Scene>(); },
      [&] { scene->Execute(QStringLiteral("measure")); },
      [&](const Fault& fault) {
        // The right answer, or, without a thread, a command that was not sent, with the reason.
        const bool noThread = fault.struck && !scene->engine.WhyNoThread().isEmpty();
        EXPECT_TRUE(noThread ? scene->outcome.lineFailed : scene->WasAnswered());
        EXPECT_EQ(scene->line->written, noThread ? QByteArray() : QByteArray("measure\r"));
        EXPECT_EQ(scene->log.LineCount(), 3);
        EXPECT_EQ(scene->log.Line(0), QByteArray("[measure]\r"));
        scene->ExpectReady();
      });
  // Each takes the pause that belongs to a response.
  EXPECT_GT(run.PlayWithoutMemory(), 0);
}

}  // namespace
}  // namespace quarn::test
