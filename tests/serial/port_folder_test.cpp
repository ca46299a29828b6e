#include "serial/port_folder_linux.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>

#include <QDir>
#include <algorithm>
#include <list>

#include "serial/port_pins_linux.h"
#include "serial_fixtures.h"

namespace quarn {
namespace {

using Links = std::vector<PortLink>;

Links ReadFolder(const std::string& path) {
  std::vector<FolderEntry> dependencies;
  std::error_code problem;
  const std::optional<Links> links = PortFolder(path).Read(dependencies, problem);
  EXPECT_TRUE(links.has_value());
  return links.value_or(Links());
}

std::vector<int> PresentNumbers(const Links& links) {
  std::vector<int> numbers;
  for (const PortLink& link : links) {
    if (link.present) {
      numbers.push_back(link.number);
    }
  }
  return numbers;
}

/// A pseudo-terminal as it would be listed if it were an adapter.
SerialDevice DeviceOf(const PseudoTerminal& terminal, const std::vector<std::string>& lastingPaths = {}) {
  struct stat status {};
  EXPECT_EQ(::stat(terminal.Node().c_str(), &status), 0);
  SerialDevice device;
  device.node = terminal.Node();
  device.number = status.st_rdev;
  device.pathNames = lastingPaths;
  return device;
}

Links PinAll(const std::string& path, const std::vector<SerialDevice>& devices) {
  std::vector<FolderEntry> dependencies;
  std::error_code problem;
  const std::optional<Links> links = PinNewDevices(PortFolder(path), devices, {}, dependencies, problem);
  EXPECT_TRUE(links.has_value());
  return links.value_or(Links());
}

TEST(PortLinkNumber, IsOneToNinetyNineWithoutALeadingZero) {
  EXPECT_EQ(PortLinkNumber("COM1"), 1);
  EXPECT_EQ(PortLinkNumber("COM99"), 99);
  for (const char* name : {"", "COM", "COM0", "COM01", "COM00", "COM100", "com1", "COM1x", "COMx", "COM-1",
                           "COM 1", "xCOM1", "COM1 "}) {
    EXPECT_EQ(PortLinkNumber(name), std::nullopt) << name;
  }
}

TEST(PortFolder, WithoutAFolderHasNoPorts) {
  const ScratchFolder scratch;
  EXPECT_TRUE(ReadFolder(scratch.At("not/there")).empty());
}

TEST(PortFolder, CannotBeReadWhenItIsNoFolder) {
  const ScratchFolder scratch;
  scratch.File("ports");
  std::vector<FolderEntry> dependencies;
  std::error_code problem;
  EXPECT_FALSE(PortFolder(scratch.At("ports")).Read(dependencies, problem).has_value());
  EXPECT_EQ(problem, std::errc::not_a_directory);
}

TEST(PortFolder, HonoursLinksMadeByHand) {
  const ScratchFolder scratch;
  const PseudoTerminal terminal;
  scratch.Link("COM7", terminal.Node());
  scratch.Link("beside", terminal.Node());
  scratch.Link("COM12", "beside");
  scratch.Folder("sub");
  scratch.Link("sub/up", "../COM7");
  scratch.Link("COM20", "sub/up");
  scratch.Link("COM21", "./sub/../sub/./up");
  const Links links = ReadFolder(scratch.Path());
  EXPECT_EQ(PresentNumbers(links), (std::vector{7, 12, 20, 21}));
  for (const PortLink& link : links) {
    EXPECT_EQ(link.target.node, terminal.Node());
  }
}

TEST(PortFolder, FollowsLinkedFoldersAsTheKernelDoes) {
  const ScratchFolder scratch;
  const PseudoTerminal terminal;
  scratch.Folder("a");
  scratch.Folder("a/b");
  scratch.Link("a/here", terminal.Node());
  scratch.Link("jump", "a/b");
  // "jump/.." is the folder above a/b, not the one that holds the link.
  scratch.Link("COM1", "jump/../here");
  EXPECT_EQ(PresentNumbers(ReadFolder(scratch.Path())), std::vector{1});
  scratch.Link("ports", scratch.Path());
  EXPECT_EQ(PresentNumbers(ReadFolder(scratch.At("ports/"))), std::vector{1});
}

TEST(PortFolder, WhatIsNoTerminalIsAPortNotPresent) {
  const ScratchFolder scratch;
  scratch.File("file");
  scratch.Folder("folder");
  ASSERT_EQ(::mkfifo(scratch.At("fifo").c_str(), 0600), 0);
  scratch.Link("COM1", "COM1");
  scratch.Link("COM2", "COM3");
  scratch.Link("COM3", "COM2");
  scratch.Link("COM4", "folder");
  scratch.Link("COM5", "fifo");
  scratch.Link("COM6", "file");
  scratch.Link("COM7", "/dev/null");
  scratch.Link("COM8", "/dev/ptmx");
  scratch.Link("COM9", "nowhere");
  scratch.Link("COM10", "/");
  scratch.Link("COM11", "file/below");
  scratch.File("COM12");
  scratch.Folder("COM13");
  const Links links = ReadFolder(scratch.Path());
  EXPECT_EQ(links.size(), 13U);
  EXPECT_TRUE(PresentNumbers(links).empty());
}

TEST(PortFolder, EndsAChainOfLinksWhereTheKernelDoes) {
  const ScratchFolder scratch;
  const PseudoTerminal terminal;
  scratch.Link("step0", terminal.Node());
  for (int i = 1; i < 45; ++i) {
    scratch.Link("step" + std::to_string(i), "step" + std::to_string(i - 1));
  }
  for (int i = 37; i < 45; ++i) {
    scratch.Link("COM" + std::to_string(i), "step" + std::to_string(i));
    struct stat status {};
    const bool kernelFollows = ::stat(scratch.At("COM" + std::to_string(i)).c_str(), &status) == 0;
    const std::vector<int> present = PresentNumbers(ReadFolder(scratch.Path()));
    EXPECT_EQ(std::count(present.begin(), present.end(), i), kernelFollows ? 1 : 0) << i;
  }
}

TEST(PortFolder, TakesAHundredLinksButNoNumberAboveNinetyNine) {
  const ScratchFolder scratch;
  const PseudoTerminal terminal;
  for (int i = 0; i <= 100; ++i) {
    scratch.Link("COM" + std::to_string(i), terminal.Node());
  }
  const Links links = ReadFolder(scratch.Path());
  ASSERT_EQ(links.size(), 99U);
  EXPECT_EQ(links.front().number, 1);
  EXPECT_EQ(links.back().number, 99);
  EXPECT_EQ(PresentNumbers(links).size(), 99U);
}

TEST(PortFolder, APortGoesWithItsPseudoTerminal) {
  const ScratchFolder scratch;
  PseudoTerminal terminal = TerminalOfHighNumber();
  scratch.Link("COM7", terminal.Node());
  EXPECT_EQ(PresentNumbers(ReadFolder(scratch.Path())), std::vector{7});
  terminal.Close();
  EXPECT_TRUE(PresentNumbers(ReadFolder(scratch.Path())).empty());
}

TEST(PortFolder, MakesItsFoldersForTheOwnerAlone) {
  const ScratchFolder scratch;
  const PseudoTerminal terminal;
  const PortFolder folder(scratch.At("maker/program/ports"));
  std::error_code problem;
  EXPECT_EQ(folder.Pin(3, terminal.Node(), problem), PortFolder::PinResult::Done);
  EXPECT_FALSE(problem) << problem.message();
  for (const char* made : {"maker", "maker/program", "maker/program/ports"}) {
    struct stat status {};
    ASSERT_EQ(::stat(scratch.At(made).c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777U, 0700U) << made;
  }
  EXPECT_EQ(scratch.TargetOf("maker/program/ports/COM3"), terminal.Node());
}

TEST(PortFolder, NeverOverwritesALink) {
  const ScratchFolder scratch;
  scratch.Link("COM3", "mine");
  const PortFolder folder(scratch.Path());
  std::error_code problem;
  EXPECT_EQ(folder.Pin(3, "/dev/other", problem), PortFolder::PinResult::NumberTaken);
  EXPECT_FALSE(problem) << problem.message();
  EXPECT_EQ(scratch.TargetOf("COM3"), "mine");
}

TEST(PortFolder, SaysWhenItCannotMakeALink) {
  const ScratchFolder scratch;
  scratch.File("file");
  std::error_code problem;
  EXPECT_EQ(PortFolder(scratch.At("file/ports")).Pin(1, "/dev/x", problem), PortFolder::PinResult::Failed);
  EXPECT_EQ(problem, std::errc::not_a_directory);
  EXPECT_EQ(PortFolder(scratch.At("none")).Replace(1, "/dev/x", problem), PortFolder::PinResult::Failed);
  EXPECT_EQ(problem, std::errc::no_such_file_or_directory);
  EXPECT_EQ(PortFolder("/proc/none/ports").Pin(1, "/dev/x", problem), PortFolder::PinResult::Failed);
  // Below a link that leads nowhere no folder can be made.
  scratch.Link("away", "nowhere");
  EXPECT_EQ(PortFolder(scratch.At("away/ports")).Pin(1, "/dev/x", problem), PortFolder::PinResult::Failed);
  EXPECT_EQ(problem, std::errc::no_such_file_or_directory);
}

TEST(PortFolder, ReplacesNoFolderAndLeavesNothingBeside) {
  const ScratchFolder scratch;
  scratch.Folder("COM5");
  std::error_code problem;
  EXPECT_EQ(PortFolder(scratch.Path()).Replace(5, "/dev/x", problem), PortFolder::PinResult::Failed);
  EXPECT_EQ(problem, std::errc::is_a_directory);
  EXPECT_EQ(QDir(QString::fromStdString(scratch.Path()))
                .entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot),
            QStringList{QStringLiteral("COM5")});
}

TEST(ChoosePin, TakesTheLowestFreeNumber) {
  SerialDevice device;
  device.node = "/dev/ttyUSB0";
  Links links(2);
  links[0].number = 1;
  links[1].number = 3;
  EXPECT_EQ(ChoosePin(device, {})->number, 1);
  EXPECT_EQ(ChoosePin(device, links)->number, 2);
  EXPECT_FALSE(ChoosePin(device, links)->replaces);
}

TEST(ChoosePin, GivesABuiltInLineItsCustomaryNumber) {
  SerialDevice device;
  const auto numberOf = [&](const char* node, const Links& links) {
    device.node = node;
    return ChoosePin(device, links)->number;
  };
  Links links(1);
  links[0].number = 5;
  EXPECT_EQ(numberOf("/dev/ttyS0", {}), 1);
  EXPECT_EQ(numberOf("/dev/ttyS31", {}), 32);
  EXPECT_EQ(numberOf("/dev/ttyS98", {}), 99);
  EXPECT_EQ(numberOf("/dev/ttyS4", links), 1);
  EXPECT_EQ(numberOf("/dev/ttyS99", {}), 1);
  EXPECT_EQ(numberOf("/dev/ttyS100", {}), 1);
  EXPECT_EQ(numberOf("/dev/ttySC7", {}), 1);
  EXPECT_EQ(numberOf("/dev/ttyS", {}), 1);
  EXPECT_EQ(numberOf("/dev/tty", {}), 1);
}

TEST(ChoosePin, WithAllTakenLetsTheLongestAbsentGiveWay) {
  SerialDevice device;
  device.node = "/dev/ttyS4";
  Links links(99);
  for (std::size_t i = 0; i < links.size(); ++i) {
    links[i].number = static_cast<int>(i) + 1;
    links[i].isLink = true;
    links[i].present = i != 40 && i != 60 && i != 70;
    links[i].lastSeen = {1000, 0};
  }
  links[10].lastSeen = {1, 0};  // present, so it stays however old
  links[40].lastSeen = {900, 5};
  links[60].lastSeen = {900, 4};
  links[70] = PortLink{};
  links[70].number = 71;  // no link, so it is not the program's to remove
  const std::optional<PinChoice> choice = ChoosePin(device, links);
  ASSERT_TRUE(choice.has_value());
  EXPECT_EQ(choice->number, 61);
  EXPECT_TRUE(choice->replaces);
  links[40].present = links[60].present = true;
  EXPECT_FALSE(ChoosePin(device, links).has_value());
}

TEST(PinNewDevices, MakesNoFolderWithoutADevice) {
  const ScratchFolder scratch;
  EXPECT_TRUE(PinAll(scratch.At("ports"), {}).empty());
  struct stat status {};
  EXPECT_NE(::stat(scratch.At("ports").c_str(), &status), 0);
}

TEST(PinNewDevices, PinsThroughTheMostLastingNameThatLeadsToTheDevice) {
  const ScratchFolder scratch;
  const PseudoTerminal first;
  const PseudoTerminal second;
  scratch.Link("id", first.Node());
  scratch.Link("path", second.Node());
  const std::string ports = scratch.At("ports");
  // Both claim the same name, which leads to one of them.
  const Links links = PinAll(ports, {DeviceOf(first, {scratch.At("gone"), scratch.At("id")}),
                                     DeviceOf(second, {scratch.At("id"), scratch.At("path")})});
  EXPECT_EQ(PresentNumbers(links), (std::vector{1, 2}));
  EXPECT_EQ(scratch.TargetOf("ports/COM1"), scratch.At("id"));
  EXPECT_EQ(scratch.TargetOf("ports/COM2"), scratch.At("path"));
}

TEST(PinNewDevices, PinsByItsNodeADeviceWithoutALastingName) {
  const ScratchFolder scratch;
  const PseudoTerminal terminal;
  EXPECT_EQ(PresentNumbers(PinAll(scratch.Path(), {DeviceOf(terminal)})), std::vector{1});
  EXPECT_EQ(scratch.TargetOf("COM1"), terminal.Node());
}

TEST(PinNewDevices, LeavesADeviceThatHasANumberAlone) {
  const ScratchFolder scratch;
  const PseudoTerminal terminal;
  scratch.Link("COM44", terminal.Node());
  EXPECT_EQ(PresentNumbers(PinAll(scratch.Path(), {DeviceOf(terminal)})), std::vector{44});
  // Renamed by its owner, it keeps the new number.
  ASSERT_EQ(::rename(scratch.At("COM44").c_str(), scratch.At("COM8").c_str()), 0);
  EXPECT_EQ(PresentNumbers(PinAll(scratch.Path(), {DeviceOf(terminal)})), std::vector{8});
}

TEST(PinNewDevices, KeepsTheNumberOfAnAbsentDevice) {
  const ScratchFolder scratch;
  const PseudoTerminal terminal;
  scratch.Link("COM1", "/dev/serial/by-id/absent");
  EXPECT_EQ(PresentNumbers(PinAll(scratch.Path(), {DeviceOf(terminal)})), std::vector{2});
  EXPECT_EQ(scratch.TargetOf("COM1"), "/dev/serial/by-id/absent");
}

TEST(PinNewDevices, PutsBuiltInLinesFirst) {
  const ScratchFolder scratch;
  const PseudoTerminal adapter;
  const PseudoTerminal builtIn;
  SerialDevice line = DeviceOf(builtIn, {builtIn.Node()});
  line.node = "/dev/ttyS0";
  PinAll(scratch.Path(), {DeviceOf(adapter), line});
  EXPECT_EQ(scratch.TargetOf("COM1"), builtIn.Node());
  EXPECT_EQ(scratch.TargetOf("COM2"), adapter.Node());
}

TEST(PinNewDevices, WithAllNumbersTakenReusesTheOneAbsentLongest) {
  const ScratchFolder scratch;
  const PseudoTerminal present;
  const PseudoTerminal fresh;
  for (int i = 1; i <= 99; ++i) {
    const std::string name = "COM" + std::to_string(i);
    scratch.Link(name, i == 5 ? present.Node() : "/dev/serial/by-id/absent" + std::to_string(i));
    const timespec seen = {i == 5 ? 1 : (i == 42 ? 1000 : 2000 + i), 0};
    const timespec times[2] = {seen, seen};
    ASSERT_EQ(::utimensat(AT_FDCWD, scratch.At(name).c_str(), times, AT_SYMLINK_NOFOLLOW), 0);
  }
  EXPECT_EQ(PresentNumbers(PinAll(scratch.Path(), {DeviceOf(fresh)})), (std::vector{5, 42}));
  EXPECT_EQ(scratch.TargetOf("COM42"), fresh.Node());
  EXPECT_EQ(scratch.TargetOf("COM5"), present.Node());
}

TEST(PinNewDevices, LeavesADeviceOutWhenEveryNumberIsInUse) {
  const ScratchFolder scratch;
  const PseudoTerminal present;
  const PseudoTerminal fresh;
  for (int i = 1; i <= 99; ++i) {
    scratch.Link("COM" + std::to_string(i), present.Node());
  }
  const Links links = PinAll(scratch.Path(), {DeviceOf(fresh)});
  EXPECT_EQ(PresentNumbers(links).size(), 99U);
  for (const PortLink& link : links) {
    EXPECT_EQ(link.target.node, present.Node());
  }
}

TEST(PinNewDevices, TwoProcessesAtOnceGiveOneNumberPerDevice) {
  const ScratchFolder scratch;
  std::list<PseudoTerminal> terminals(8);
  std::vector<SerialDevice> devices;
  for (const PseudoTerminal& terminal : terminals) {
    devices.push_back(DeviceOf(terminal));
  }
  for (int round = 0; round < 100; ++round) {
    const std::string ports = scratch.At("ports" + std::to_string(round));
    const pid_t other = ::fork();
    std::vector<FolderEntry> dependencies;
    std::error_code problem;
    const bool pinned = PinNewDevices(PortFolder(ports), devices, {}, dependencies, problem).has_value();
    if (other == 0) {
      ::_exit(pinned ? 0 : 1);
    }
    int status = -1;
    ASSERT_EQ(::waitpid(other, &status, 0), other);
    EXPECT_EQ(status, 0);
    EXPECT_TRUE(pinned);
    EXPECT_EQ(PresentNumbers(ReadFolder(ports)), (std::vector{1, 2, 3, 4, 5, 6, 7, 8}));
  }
}

}  // namespace
}  // namespace quarn
