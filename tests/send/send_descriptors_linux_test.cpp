// The program with fewer and fewer descriptors. Not under sanitizers, which need descriptors themselves.

#include <sys/resource.h>
#include <unistd.h>

#include "send/send_process.h"

namespace quarn {
namespace {

using SendDescriptors = SendProcess;

/// At each number it works, or prints the reason in one line.
TEST_F(SendDescriptors, WithoutThemItIsFiveWithTheReason) {
  int refused = 0;
  Outcome sent;
  for (rlim_t most = 4; most <= 24 && sent.exitCode != 0; ++most) {
    const auto limit = [most] {
      const rlimit few{most, most};
      if (::setrlimit(RLIMIT_NOFILE, &few) != 0) std::_Exit(99);
    };
    sent = Run(QStringLiteral(QUARN_SEND), {QStringLiteral("id")}, limit);
    // Too few even to open the program's libraries.
    if (sent.exitCode == 127) continue;
    if (sent.exitCode == 0) break;
    ++refused;
    EXPECT_EQ(sent.exitCode, 5) << most;
    EXPECT_TRUE(sent.err.endsWith(": Too many open files\n")) << most << ": " << sent.err.constData();
    EXPECT_EQ(sent.err.count('\n'), 1) << most << ": " << sent.err.constData();
    EXPECT_EQ(m_instrument.Received(), "") << most;
  }
  EXPECT_GT(refused, 0);
  EXPECT_EQ(sent.exitCode, 0) << "with enough of them it works";
  EXPECT_EQ(sent.out, "[id]\nSIM-1\n");
}

}  // namespace
}  // namespace quarn
