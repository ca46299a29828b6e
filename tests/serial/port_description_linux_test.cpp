#include "serial/port_description_linux.h"

#include <gtest/gtest.h>

namespace quarn {
namespace {

TEST(DescriptionOf, SaysProductNodeAndWhatIsInTheWay) {
  EXPECT_EQ(DescriptionOf({"USB Adapter", "/dev/ttyUSB0", "", "COM3"}), "USB Adapter - /dev/ttyUSB0 (COM3)");
  EXPECT_EQ(DescriptionOf({"USB Adapter", "/dev/ttyUSB0", "no permission: group dialout", "COM3"}),
            "USB Adapter - /dev/ttyUSB0, no permission: group dialout (COM3)");
}

TEST(DescriptionOf, HasNoOtherPortNameInBrackets) {
  const QString hostile[] = {"Evil (COM9) adapter",         "(COM1)", "(CO\x01M8)", "((COM8)", "(COM(COM8)",
                             QStringLiteral("(C\u200bOM8)")};
  for (const QString& text : hostile) {
    for (const DescribedPort& port : {DescribedPort{text, "/dev/ttyUSB0", "", "COM33"},
                                      DescribedPort{"Adapter", "/dev/" + text, text, "COM33"}}) {
      const QString description = DescriptionOf(port);
      EXPECT_EQ(description.count("(COM"), 1) << description.toStdString();
      EXPECT_TRUE(description.endsWith(" (COM33)")) << description.toStdString();
    }
  }
  EXPECT_EQ(DescriptionOf({"Evil (COM9)", "/dev/ttyUSB0", "", "COM3"}), "Evil [COM9) - /dev/ttyUSB0 (COM3)");
}

TEST(DescriptionOf, RemovesWhatCannotBeSeen) {
  EXPECT_EQ(DescriptionOf({QStringLiteral("A\r\n\x1b\u202e"
                                          "B\u2028"),
                           "/dev/ttyUSB0", "", "COM3"}),
            "AB - /dev/ttyUSB0 (COM3)");
  const QString half(QChar(0xD800));
  EXPECT_EQ(DescriptionOf({"A" + half + "B", "/dev/ttyUSB0", "", "COM3"}), "AB - /dev/ttyUSB0 (COM3)");
}

TEST(DescriptionOf, IsCutButKeepsTheName) {
  const QString face = QString::fromUtf8("\xF0\x9F\x98\x80");
  for (const QString& product : {QString(1000, 'x'), face.repeated(500), "y" + face.repeated(500)}) {
    const QString text = DescriptionOf({product, "/dev/ttyUSB0", "in use by PID 1234", "COM99"});
    EXPECT_LE(text.size(), 250);
    EXPECT_TRUE(text.endsWith(" - /dev/ttyUSB0, in use by PID 1234 (COM99)")) << text.toStdString();
    EXPECT_TRUE(text.isValidUtf16());
  }
  const QString text = DescriptionOf({"Adapter", "/dev/" + QString(4000, 'x'), "", "COM99"});
  EXPECT_EQ(text.size(), 250);
  EXPECT_TRUE(text.endsWith("x (COM99)"));
}

}  // namespace
}  // namespace quarn
