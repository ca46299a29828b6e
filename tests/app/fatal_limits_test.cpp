#include "app/fatal_limits.h"

#include <QThread>

#include "app/app_fixture.h"
#include "base/bounds.h"
#include "settings/settings_table.h"
#include "support/plugged_port.h"
#include "support/scripted_line.h"

namespace quarn::test {
namespace {

/// Leaves where the program would end.
struct TheEnd {};

/// With a handler of its own behind the one that is tested the program would be over.
class FatalLimitsTest : public AppTest {
 protected:
  void SetUp() override { MakeFolders(); }
  /// A settings file whose second line is longer than any line may be.
  QString FileWithALongLine() {
    QString path = m_folder + QStringLiteral("long.qrn");
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(".BEGIN\nMEM0=" + QByteArray(1024, 'x') + "\n.END\n");
    return path;
  }
};

TEST_F(FatalLimitsTest, AreToldInAPlainBoxWithFileLineAndLimit) {
  const FatalLimits limits(program);
  const QString path = FileWithALongLine();
  messages.whileShown = [] { throw TheEnd(); };
  EXPECT_THROW((void)ReadValue(path, keys::kMem[0]), TheEnd);
  ASSERT_EQ(messages.shown.size(), 1);
  const QString told = messages.shown.first();
  EXPECT_TRUE(told.startsWith(QStringLiteral("plain/"))) << told.toStdString();
  for (const QString& part :
       {QStringLiteral("value of 1024 characters, at most 1023 fit"), QStringLiteral("File: "),
        QStringLiteral("long.qrn"), QStringLiteral("Line: 2")}) {
    EXPECT_TRUE(told.contains(part)) << told.toStdString();
  }
}

TEST_F(FatalLimitsTest, CloseTheLineBeforeTheyAreTold) {
  const FatalLimits limits(program);
  Journal calls;
  auto line = std::make_shared<ScriptedLine>(calls);
  program.connection.handle = PortHandle(line);
  program.connection.connected.Update(PortChange::Opened);
  bool openWhileTold = true;
  messages.whileShown = [&] {
    openWhileTold = program.connection.handle.IsOpen() || program.connection.connected.IsSet();
    throw TheEnd();
  };
  EXPECT_THROW((void)ReadValue(FileWithALongLine(), keys::kMem[0]), TheEnd);
  EXPECT_FALSE(openWhileTold);
  EXPECT_EQ(calls.Entries(), std::vector<std::string>{"close"});
}

using FatalLimitsDeathTest = FatalLimitsTest;

/// The simple expressions that every system's death tests know have no brackets.
constexpr char kToldAndEnded[] =
    "^told\nquarn: bounds error: value of 1024 characters, at most 1023 fit: line 2 of .*long.qrn\n$";
constexpr char kEnded[] =
    "^quarn: bounds error: value of 1024 characters, at most 1023 fit: line 2 of .*long.qrn\n$";

TEST_F(FatalLimitsDeathTest, EndTheProgramAfterThat) {
  const QString path = FileWithALongLine();
  EXPECT_DEATH(
      {
        const FatalLimits limits(program);
        messages.whileShown = [] { std::fputs("told\n", stderr); };
        (void)ReadValue(path, keys::kMem[0]);
      },
      kToldAndEnded);
}

TEST_F(FatalLimitsDeathTest, MetWhileOneIsToldEndItAtOnce) {
  const QString path = FileWithALongLine();
  EXPECT_DEATH(
      {
        const FatalLimits limits(program);
        messages.whileShown = [&] {
          std::fputs("told\n", stderr);
          (void)ReadValue(path, keys::kMem[0]);
        };
        (void)ReadValue(path, keys::kMem[0]);
      },
      kToldAndEnded);
}

TEST_F(FatalLimitsDeathTest, OfAnotherThreadAreNotShown) {
  const QString path = FileWithALongLine();
  EXPECT_DEATH(
      {
        const FatalLimits limits(program);
        messages.whileShown = [] { std::fputs("told\n", stderr); };
        const std::unique_ptr<QThread> thread(QThread::create([&] { (void)ReadValue(path, keys::kMem[0]); }));
        thread->start();
        thread->wait();
      },
      kEnded);
}

}  // namespace
}  // namespace quarn::test
