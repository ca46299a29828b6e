#include "serial/pin_records_linux.h"

#include <gtest/gtest.h>

#include "serial/pin_judgement_linux.h"
#include "serial_fixtures.h"

namespace quarn {
namespace {

using Records = std::vector<PinRecord>;

PinRecord RecordFor(int number, const std::string& target, const std::string& serial = "1") {
  return {number, 10, target, {"id", "path", "0403", "6001", serial}};
}

TEST(PinRecords, AreReadAsTheyWereWritten) {
  const Records records{
      {3,
       4711,
       "/dev/serial/by-id/usb-A",
       {"/dev/serial/by-id/usb-A", "/dev/serial/by-path/1", "0403", "6001", "0001"}},
      {99, 0, "../a\tb\nc\\d\\x41\x7f\xc3\xa4", {"", "p", "", "", "\x01 \r"}},
      {4, ~ino_t{0}, "t", {"", "", "v", "", ""}},
  };
  const std::string text = FormatPinRecords(records);
  EXPECT_EQ(ParsePinRecords(text), records);
  EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 4) << "a line for people, and one a record";
  EXPECT_TRUE(ParsePinRecords(FormatPinRecords({})).empty());
}

TEST(PinRecords, WhatIsNoRecordIsPassedOver) {
  const std::string good = "COM3\t1\ttarget\t\tpath\t\t\t\n";
  const Records expected{{3, 1, "target", {"", "path", "", "", ""}}};
  for (const std::string bad :
       {"\n", "COM3\n", "COM0\t1\tt\t\tp\t\t\t\n", "COM100\t1\tt\t\tp\t\t\t\n", "COM3\tx\tt\t\tp\t\t\t\n",
        "COM3\t-1\tt\t\tp\t\t\t\n", "COM3\t1\t\t\tp\t\t\t\n", "COM3\t1\tt\t\t\t\t\t\n",
        "COM3\t1\tt\t\tp\t\t\t\textra\n", "COM3\t99999999999999999999\tt\t\tp\t\t\t\n"}) {
    EXPECT_EQ(ParsePinRecords(bad + good), expected) << bad;
  }
  EXPECT_EQ(ParsePinRecords(good + "COM4\t1\ttarget\t\tpath\t\t\t"), expected) << "cut off";
  EXPECT_EQ(ParsePinRecords(good + std::string(kPinRecordsLimit, 'x') + '\n' + good), expected);
}

TEST(PinRecords, AreKeptInTheFolder) {
  const ScratchFolder scratch;
  std::error_code problem;
  EXPECT_EQ(ReadPinRecords(scratch.Path(), problem), Records());
  EXPECT_FALSE(problem);
  const Records records{RecordFor(1, "a"), RecordFor(2, "b")};
  EXPECT_TRUE(WritePinRecords(scratch.Path(), {RecordFor(9, "c")}, problem));
  EXPECT_TRUE(WritePinRecords(scratch.Path(), records, problem));
  EXPECT_FALSE(problem);
  EXPECT_EQ(ReadPinRecords(scratch.Path(), problem), records);
}

TEST(PinRecords, ThatCannotBeHadAreToldApartFromNone) {
  const ScratchFolder scratch;
  scratch.Folder("devices");
  std::error_code problem;
  EXPECT_EQ(ReadPinRecords(scratch.Path(), problem), std::nullopt);
  EXPECT_EQ(problem, std::errc::is_a_directory);
  EXPECT_FALSE(WritePinRecords(scratch.Path(), {}, problem));
  EXPECT_EQ(problem, std::errc::is_a_directory);
  EXPECT_FALSE(WritePinRecords(scratch.At("none"), {}, problem));
  EXPECT_EQ(problem, std::errc::no_such_file_or_directory);
}

PortLink LinkOf(int number, ino_t inode, const std::string& text) {
  PortLink link;
  link.number = number;
  link.inode = inode;
  link.text = text;
  link.isLink = true;
  return link;
}

TEST(AttachRecords, FollowsALinkThatWasRenamed) {
  const Records records{{1, 11, "x", {"", "first", "", "", ""}}, {2, 12, "x", {"", "second", "", "", ""}}};
  // Exchanged by their owner: the texts are the same, the files are not.
  std::vector<PortLink> links{LinkOf(1, 12, "x"), LinkOf(2, 11, "x")};
  AttachRecords(links, records);
  EXPECT_EQ(links[0].known->path, "second");
  EXPECT_EQ(links[1].known->path, "first");
}

TEST(AttachRecords, KnowsALinkByItsNumberOrItsTextAlone) {
  const Records records{{1, 11, "x", {"", "first", "", "", ""}}, {2, 12, "y", {"", "second", "", "", ""}}};
  std::vector<PortLink> copied{LinkOf(1, 77, "x"), LinkOf(8, 78, "y"), LinkOf(9, 79, "y")};
  AttachRecords(copied, records);
  EXPECT_EQ(copied[0].known->path, "first");
  EXPECT_EQ(copied[1].known->path, "second");
  EXPECT_EQ(copied[2].known, std::nullopt) << "one record, one link";
  EXPECT_EQ(RecordsOf(copied),
            (Records{{1, 77, "x", {"", "first", "", "", ""}}, {8, 78, "y", {"", "second", "", "", ""}}}));
}

TEST(AttachRecords, ForgetsTheDeviceOfALinkThatWasMadeAnew) {
  std::vector<PortLink> links{LinkOf(1, 11, "elsewhere")};
  AttachRecords(links, {{1, 11, "x", {"", "first", "", "", ""}}});
  EXPECT_EQ(links[0].known, std::nullopt);
}

}  // namespace
}  // namespace quarn
