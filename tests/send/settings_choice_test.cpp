#include "send/settings_choice.h"

#include "serial/line_test_support.h"
#include "settings/settings_table.h"

namespace quarn::send {
namespace {

TEST(ApplyOptions, LeavesWhatIsNotGiven) {
  SettingsRecord settings = DefaultSettings();
  ApplyOptions({}, settings);
  EXPECT_EQ(settings, DefaultSettings());
}

TEST(ApplyOptions, PutsOptionsOverTheSettings) {
  Options options;
  options.port = QStringLiteral("com4");
  options.line = {.rate = 921600,
                  .dataBits = QStringLiteral("7"),
                  .parity = QStringLiteral("Odd"),
                  .stopBits = QStringLiteral("2"),
                  .delimiter = QStringLiteral("LF"),
                  .buffer = QStringLiteral("6K"),
                  .speed = QStringLiteral("LOW")};
  SettingsRecord settings = DefaultSettings();
  ApplyOptions(options, settings);
  SettingsRecord wanted = DefaultSettings();
  wanted.comPort = QStringLiteral("COM4");
  wanted.comBps = QStringLiteral("921600");
  wanted.comBits = QStringLiteral("7");
  wanted.comParity = QStringLiteral("Odd");
  wanted.comStop = QStringLiteral("2");
  wanted.delimiter = QStringLiteral("LF");
  wanted.comBuf = QStringLiteral("6K");
  wanted.portSpeed = QStringLiteral("LOW");
  EXPECT_EQ(settings, wanted);
}

TEST(ReplacedRate, IsToldUnlessTheOptionsNameOne) {
  SettingsRecord settings = DefaultSettings();
  EXPECT_EQ(ReplacedRate({}, settings), QString());
  settings.comBps = QStringLiteral("460800");
  EXPECT_EQ(ReplacedRate({}, settings),
            QStringLiteral(
                "the settings name 460800 bps, which they do not offer; the line runs at 9600 (--bps sets "
                "any rate)"));
  Options options;
  options.line.rate = 460800;
  EXPECT_EQ(ReplacedRate(options, settings), QString());
}

}  // namespace
}  // namespace quarn::send
