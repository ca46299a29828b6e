#include "send/failure_text.h"

#include "send/connect.h"
#include "serial/line_test_support.h"

namespace quarn::send {
namespace {

TEST(FailureText, NamesPortDeviceHolderAndRemedy) {
  const LineFailure failure{LineError::InUse, QStringLiteral("/dev/ttyUSB0: in use by minicom (PID 12)")};
  EXPECT_EQ(
      FailureText(QStringLiteral("COM7"), failure),
      QStringLiteral(
          "COM7: /dev/ttyUSB0: in use by minicom (PID 12); end the program that uses it, or wait for it with "
          "--wait SECONDS"));
}

TEST(FailureText, NamesTheGroupToJoin) {
  const auto text = [](const char* reason) {
    return FailureText(QStringLiteral("COM7"), {LineError::NoPermission, QString::fromLatin1(reason)});
  };
  EXPECT_EQ(text("/dev/ttyS0: no permission: group dialout"),
            QStringLiteral(
                "COM7: /dev/ttyS0: no permission: group dialout; sudo usermod -aG dialout \"$USER\", and "
                "log in again"));
  EXPECT_EQ(text("/dev/ttyS0: no permission"),
            QStringLiteral("COM7: /dev/ttyS0: no permission; ask who owns the device"));
}

TEST(FailureText, NamesThePortOnce) {
  for (const char* reason : {"COM7: Access is denied.", "COM7 is not present"}) {
    const QString text =
        FailureText(QStringLiteral("COM7"), {LineError::Disconnected, QString::fromLatin1(reason)});
    EXPECT_EQ(text.count(QStringLiteral("COM7")), 1) << text.toStdString();
    EXPECT_FALSE(text.contains(QStringLiteral(".;"))) << text.toStdString();
  }
}

TEST(LatencyWarning, ComesWhereTheAdapterKeepsBytesAsLongAsTheSilenceLasts) {
  using std::chrono::milliseconds;
  const QString port = QStringLiteral("COM7");
  EXPECT_EQ(
      LatencyWarning(port, milliseconds(16), milliseconds(12)),
      QStringLiteral(
          "COM7: the adapter delivers every 16 ms, and a response ends after 12 ms of silence, so it may "
          "be cut off; set the adapter's Latency Timer to 1 ms in the Device Manager, or use --speed LOW"));
  EXPECT_FALSE(LatencyWarning(port, milliseconds(12), milliseconds(12)).isEmpty());
  EXPECT_EQ(LatencyWarning(port, milliseconds(16), milliseconds(18)), QString());
  EXPECT_EQ(LatencyWarning(port, milliseconds(1), milliseconds(12)), QString());
}

TEST(PortNameOf, SpellsNumberedPortsAlike) {
  for (const auto& [text, name] : {std::pair{"com4", "COM4"},
                                   {"Com12", "COM12"},
                                   {"\\\\.\\com12", "COM12"},
                                   {"com104", "COM104"},
                                   {"com", "com"},
                                   {"com4x", "com4x"},
                                   {"/dev/com4", "/dev/com4"},
                                   {"ttyUSB0", "ttyUSB0"},
                                   {"", ""}}) {
    EXPECT_EQ(PortNameOf(QString::fromLatin1(text)), QString::fromLatin1(name));
  }
}

}  // namespace
}  // namespace quarn::send
