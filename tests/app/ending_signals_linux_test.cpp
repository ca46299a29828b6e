#include "app/ending_signals.h"

#include <gtest/gtest.h>
#include <signal.h>

#include <QCoreApplication>
#include <QEventLoop>
#include <cstdio>
#include <cstdlib>
#include <thread>

namespace quarn {
namespace {

void TellClosed() { std::fputs("closed", stderr); }

/// Whoever started this process may have had them ignored.
void HandleAsUsual() {
  for (const int each : {SIGINT, SIGTERM, SIGHUP}) ::signal(each, SIG_DFL);
}

/// In a process of its own.
[[noreturn]] void RunWith(const EndingSignals& /*signals*/) {
  QEventLoop().exec();
  std::exit(EXIT_FAILURE);
}

TEST(EndingSignalsDeathTest, TheFirstOneClosesAndEndsTheProgram) {
  for (const int each : {SIGINT, SIGTERM, SIGHUP}) {
    EXPECT_EXIT(
        {
          HandleAsUsual();
          const EndingSignals signals(TellClosed);
          ::raise(each);
          RunWith(signals);
        },
        ::testing::KilledBySignal(each), "closed");
  }
}

TEST(EndingSignalsDeathTest, AnExitFromWithinClosesToo) {
  EXPECT_EXIT(
      {
        const EndingSignals signals(TellClosed);
        std::exit(3);
      },
      ::testing::ExitedWithCode(3), "closed");
  EXPECT_EXIT(
      {
        { const EndingSignals signals(TellClosed); }
        std::exit(3);
      },
      ::testing::ExitedWithCode(3), "^$");
  EXPECT_EXIT(
      {
        const EndingSignals signals(TellClosed);
        std::thread([] { std::exit(3); }).join();
      },
      ::testing::ExitedWithCode(3), "^$");
}

TEST(EndingSignalsDeathTest, TheSecondOneWaitsForNothing) {
  EXPECT_EXIT(
      {
        HandleAsUsual();
        const EndingSignals signals([] {
          ::raise(SIGTERM);
          std::exit(EXIT_FAILURE);
        });
        ::raise(SIGINT);
        RunWith(signals);
      },
      ::testing::KilledBySignal(SIGTERM), "");
}

TEST(EndingSignalsDeathTest, OneThatIsIgnoredStaysIgnored) {
  EXPECT_EXIT(
      {
        ::signal(SIGHUP, SIG_IGN);
        const EndingSignals signals(TellClosed);
        ::raise(SIGHUP);
        QCoreApplication::processEvents();
        ::raise(SIGTERM);
        RunWith(signals);
      },
      ::testing::KilledBySignal(SIGTERM), "closed");
}

}  // namespace
}  // namespace quarn
