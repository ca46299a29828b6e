#include "send/port_listing.h"

#include "serial/line_test_support.h"

namespace quarn::send {
namespace {

std::vector<PortDetails> TwoPorts() {
  return {{.name = QStringLiteral("COM1"),
           .description = QStringLiteral("Serial Port"),
           .device = QStringLiteral("/dev/ttyS0"),
           .lastingName = {},
           .unavailableReason = QStringLiteral("no permission: group dialout"),
           .holder = {}},
          {.name = QStringLiteral("COM12"),
           .description = QStringLiteral("a, \x1b[31m"),
           .device = QStringLiteral("/dev/ttyUSB0"),
           .lastingName = QStringLiteral("/dev/serial/by-id/x"),
           .unavailableReason = {},
           .holder = {}}};
}

TEST(PortListing, IsATableWithoutEmptyColumns) {
  EXPECT_EQ(PortListing(TwoPorts(), Output::Log),
            "COM1   /dev/ttyS0    Serial Port" + QByteArray(24, ' ') +
                "no permission: group dialout\n"
                "COM12  /dev/ttyUSB0  a, <ESC>[31m  /dev/serial/by-id/x\n");
  EXPECT_EQ(PortListing({}, Output::Log), "");
}

TEST(PortListing, IsLinesForMachines) {
  EXPECT_EQ(PortListing(TwoPorts(), Output::Csv),
            "port,device,description,lasting_name,unavailable_reason,holder\n"
            "COM1,/dev/ttyS0,Serial Port,,no permission: group dialout,\n"
            "COM12,/dev/ttyUSB0,\"a, <ESC>[31m\",/dev/serial/by-id/x,,\n");
  const QByteArrayList json = PortListing(TwoPorts(), Output::Json).trimmed().split('\n');
  ASSERT_EQ(json.size(), 2);
  EXPECT_EQ(
      json[0],
      "{\"description\":\"Serial Port\",\"device\":\"/dev/ttyS0\",\"holder\":\"\",\"lasting_name\":\"\","
      "\"port\":\"COM1\",\"unavailable_reason\":\"no permission: group dialout\"}");
}

}  // namespace
}  // namespace quarn::send
