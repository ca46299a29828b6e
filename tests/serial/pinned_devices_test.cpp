// A number stands for one device for good, whatever is plugged in where and in which order.

#include <map>
#include <utility>

#include "device_tree.h"
#include "serial/pin_judgement_linux.h"

namespace quarn {
namespace {

/// An adapter on the bench. Two with one serial number claim one name in by-id.
struct Adapter {
  std::string serial;
  std::string maker = "0403";
};

const Adapter kCheap{"0001"};
const Adapter kNameless{""};

/// Where the program learns what a device is called.
enum class Names {
  InUdevsData,
  InFolders,  ///< in a sandbox: /dev/serial and the adapter's own attributes
};

class PinnedDevices : public testing::TestWithParam<Names> {
 protected:
  /// Plugs the adapter into the socket, where it is ttyUSB<n>. It takes the name in by-id.
  void Plug(const Adapter& adapter, const std::string& socket, int n) {
    const std::string name = NameOf(adapter);
    m_plugged[socket] = {adapter, n, AddAdapter(adapter, name, socket, n)};
    m_tree.LinkSerial("by-path", socket, "ttyUSB" + std::to_string(n));
    GiveName(name, socket);
  }
  /// Pulls what is in the socket; the name in by-id passes to another that claims it.
  void Pull(const std::string& socket) {
    const Plugged gone = m_plugged.at(socket);
    m_plugged.erase(socket);
    m_tree.Remove(gone.device);
    m_tree.UnlinkSerial("by-path", socket);
    const std::string name = NameOf(gone.adapter);
    m_tree.UnlinkSerial("by-id", name);
    for (const auto& [other, plugged] : m_plugged) {
      if (NameOf(plugged.adapter) == name) GiveName(name, other);
    }
  }
  std::string AddAdapter(const Adapter& adapter, const std::string& name, const std::string& socket, int n) {
    if (GetParam() == Names::InFolders) {
      return m_tree.AddAdapter(n, {}, "Adapter\\n",
                               "A: idVendor=" + adapter.maker +
                                   "\\n\nA: idProduct=6001\\n\nA: serial=" + adapter.serial + "\\n\n");
    }
    std::string lines = "E: DEVLINKS=/dev/serial/by-id/" + name + " /dev/serial/by-path/" + socket +
                        "\nE: ID_VENDOR_ID=" + adapter.maker + "\nE: ID_MODEL_ID=6001\n";
    if (!adapter.serial.empty()) lines += "E: ID_SERIAL_SHORT=" + adapter.serial + "\n";
    return m_tree.AddAdapter(n, lines);
  }
  /// The adapter that was plugged in last has become another one.
  void Exchange(const std::string& device, const char* serial, const char* maker = "0403") {
    if (GetParam() == Names::InFolders) {
      m_tree.SetAdapterAttribute("serial", serial);
      m_tree.SetAdapterAttribute("idVendor", maker);
    } else {
      m_tree.SetProperty(device, "ID_SERIAL_SHORT", serial);
      m_tree.SetProperty(device, "ID_VENDOR_ID", maker);
    }
  }
  void GiveName(const std::string& name, const std::string& socket) {
    m_tree.LinkSerial("by-id", name, "ttyUSB" + std::to_string(m_plugged.at(socket).n));
  }
  static std::string NameOf(const Adapter& adapter) {
    return "usb-" + adapter.maker + (adapter.serial.empty() ? "" : '_' + adapter.serial);
  }
  static std::string IdOf(const Adapter& adapter) { return "/dev/serial/by-id/" + NameOf(adapter); }
  static std::string PathOf(const std::string& socket) { return "/dev/serial/by-path/" + socket; }

  /// The ports as a program that has just been started sees them.
  QStringList Ports() {
    LinuxPortSource source(Folder(), QuietRoots());
    QStringList ports;
    for (const Port& port : List(source)) {
      const QString node =
          port.description.section(QStringLiteral("/dev/"), 1).section(QLatin1Char(' '), 0, 0);
      ports.append(port.name + QLatin1Char(' ') + node);
    }
    // What the list says is what an open would get.
    for (int number = 1; number < 10; ++number) {
      const QString port = QStringLiteral("COM%1").arg(number);
      const QString node = ResolvePort(Folder(), port, QuietRoots());
      EXPECT_EQ(node.isEmpty() ? QString() : port + QLatin1Char(' ') + node.mid(5),
                ports.filter(port + QLatin1Char(' ')).join(QLatin1Char(' ')));
    }
    return ports;
  }
  [[nodiscard]] QString Folder() const { return QString::fromStdString(m_scratch.At("ports")); }
  /// A folder from before, with its links.
  void OldFolder(const std::map<int, std::string>& links) {
    m_scratch.Folder("ports");
    for (const auto& [number, target] : links) {
      m_scratch.Link("ports/COM" + std::to_string(number), target);
    }
  }
  void Rename(const char* from, const char* to) {
    ASSERT_EQ(::rename(m_scratch.At(std::string("ports/") + from).c_str(),
                       m_scratch.At(std::string("ports/") + to).c_str()),
              0);
  }
  [[nodiscard]] std::string Target(const char* port) const {
    return m_scratch.TargetOf(std::string("ports/") + port);
  }

  struct Plugged {
    Adapter adapter;
    int n = 0;
    std::string device;
  };
  DeviceTree m_tree;
  ScratchFolder m_scratch;
  std::map<std::string, Plugged> m_plugged;
};

TEST_P(PinnedDevices, AnAdapterWithANumberOfItsOwnKeepsItsPortInAnotherSocket) {
  Plug({"A1"}, "left", 0);
  EXPECT_EQ(Ports(), QStringList{"COM1 ttyUSB0"});
  EXPECT_EQ(Target("COM1"), IdOf({"A1"}));
  Pull("left");
  EXPECT_EQ(Ports(), QStringList());
  Plug({"A1"}, "right", 3);
  EXPECT_EQ(Ports(), QStringList{"COM1 ttyUSB3"});
  Pull("right");
  Plug({"B2"}, "right", 4);
  EXPECT_EQ(Ports(), QStringList{"COM2 ttyUSB4"});
  Plug({"A1"}, "left", 1);
  EXPECT_EQ(Ports(), (QStringList{"COM1 ttyUSB1", "COM2 ttyUSB4"}));
}

TEST_P(PinnedDevices, TwoOfOneSerialNumberThatAreThereTogetherArePinnedByTheirSockets) {
  Plug(kCheap, "left", 0);
  Plug(kCheap, "right", 1);
  EXPECT_EQ(Ports(), (QStringList{"COM1 ttyUSB0", "COM2 ttyUSB1"}));
  EXPECT_EQ(Target("COM1"), PathOf("left"));
  EXPECT_EQ(Target("COM2"), PathOf("right"));
  Pull("left");
  EXPECT_EQ(Ports(), QStringList{"COM2 ttyUSB1"});
  Pull("right");
  Plug(kCheap, "left", 5);
  EXPECT_EQ(Ports(), QStringList{"COM1 ttyUSB5"});
}

TEST_P(PinnedDevices, TheSecondOfOneSerialNumberNeverBecomesTheFirst) {
  Plug(kCheap, "left", 0);
  EXPECT_EQ(Ports(), QStringList{"COM1 ttyUSB0"});
  EXPECT_EQ(Target("COM1"), IdOf(kCheap)) << "nobody else has claimed the name so far";
  Plug(kCheap, "right", 1);  // takes the name
  EXPECT_EQ(Ports(), (QStringList{"COM1 ttyUSB0", "COM2 ttyUSB1"}));
  EXPECT_EQ(Target("COM1"), PathOf("left")) << "given back what had come to lead elsewhere";
  Pull("left");
  EXPECT_EQ(Ports(), QStringList{"COM2 ttyUSB1"});
  Plug(kCheap, "left", 2);
  EXPECT_EQ(Ports(), (QStringList{"COM1 ttyUSB2", "COM2 ttyUSB1"}));
}

TEST_P(PinnedDevices, ANameThatWasSharedIsNoLastingOneForAThird) {
  Plug(kCheap, "left", 0);
  Plug(kCheap, "right", 1);
  Ports();
  Pull("left");
  Pull("right");
  Plug(kCheap, "middle", 2);
  EXPECT_EQ(Ports(), QStringList{"COM3 ttyUSB2"}) << "it may be either, or a third: its socket is its own";
  EXPECT_EQ(Target("COM3"), PathOf("middle"));
}

TEST_P(PinnedDevices, AFolderFromBeforeKeepsBothOfItsNumbers) {
  OldFolder({{3, IdOf(kCheap)}, {4, PathOf("right")}});
  Plug(kCheap, "right", 1);
  Plug(kCheap, "left", 0);  // the name is its
  EXPECT_EQ(Ports(), (QStringList{"COM3 ttyUSB0", "COM4 ttyUSB1"}));
  Pull("left");  // and passes to the other
  EXPECT_EQ(Ports(), QStringList{"COM4 ttyUSB1"}) << "a command to COM3 would reach the wrong instrument";
  Plug(kCheap, "left", 2);
  GiveName(NameOf(kCheap), "right");
  EXPECT_EQ(Ports(), (QStringList{"COM3 ttyUSB2", "COM4 ttyUSB1"}));
}

TEST_P(PinnedDevices, OfTwoOldLinksToOneDeviceTheFirmerIsListed) {
  OldFolder({{3, IdOf(kCheap)}, {4, PathOf("right")}});
  Plug(kCheap, "right", 1);
  EXPECT_EQ(Ports(), QStringList{"COM4 ttyUSB1"});
  // By itself the other cannot say whether it is the one that COM3 was made for.
  Pull("right");
  Plug(kCheap, "left", 0);
  EXPECT_EQ(Ports(), QStringList{"COM1 ttyUSB0"});
}

TEST_P(PinnedDevices, AnOldLinkThatMayMeanEitherMeansNeither) {
  OldFolder({{3, IdOf(kCheap)}});
  Plug(kCheap, "left", 0);
  Plug(kCheap, "right", 1);
  EXPECT_EQ(Ports(), (QStringList{"COM1 ttyUSB0", "COM2 ttyUSB1"}));
}

TEST_P(PinnedDevices, AnOldLinkStandsForTheDeviceThatItIsFirstSeenWith) {
  OldFolder({{7, IdOf(kNameless)}});
  Plug(kNameless, "left", 0);
  EXPECT_EQ(Ports(), QStringList{"COM7 ttyUSB0"});
  Pull("left");
  Plug(kNameless, "right", 2);
  EXPECT_EQ(Ports(), QStringList{"COM1 ttyUSB2"}) << "without a serial number the socket tells";
  EXPECT_EQ(Target("COM1"), PathOf("right"));
  Plug(kNameless, "left", 1);
  GiveName(NameOf(kNameless), "right");
  EXPECT_EQ(Ports(), (QStringList{"COM1 ttyUSB2", "COM7 ttyUSB1"}));
}

TEST_P(PinnedDevices, WithoutASerialNumberTheSocketIsTheName) {
  Plug(kNameless, "left", 0);
  EXPECT_EQ(Ports(), QStringList{"COM1 ttyUSB0"});
  EXPECT_EQ(Target("COM1"), PathOf("left"));
}

TEST(PinJudgement, WithoutUdevTheSocketTellsTwoOfOneMakeApart) {
  const auto identity = [](const char* socket) { return DeviceIdentity{"", socket, "0403", "6001", ""}; };
  const auto device = [&](const char* node, unsigned int n, const char* socket) {
    return SerialDevice{node, makedev(188, n), {}, {}, socket, identity(socket), ""};
  };
  PortLink link;
  link.number = 1;
  link.isLink = true;
  link.text = "/dev/ttyUSB0";
  link.target.node = link.text;
  link.target.status.st_mode = S_IFCHR;
  link.target.status.st_rdev = makedev(188, 0);
  link.present = true;
  link.known = identity("/sys/left");
  std::vector<PortLink> links{link};
  JudgePins(links, {device("/dev/ttyUSB0", 0, "/sys/left"), device("/dev/ttyUSB1", 1, "/sys/right")}, {});
  EXPECT_TRUE(links[0].present);
  // Neither has a serial number, and the next time they are found in the other order.
  const std::vector<SerialDevice> swapped{device("/dev/ttyUSB0", 0, "/sys/right"),
                                          device("/dev/ttyUSB1", 1, "/sys/left")};
  links = {link};
  JudgePins(links, swapped, {});
  EXPECT_FALSE(links[0].present) << "a command would reach the other one";
  EXPECT_EQ(LinkMadeFor(swapped[1], links), &links[0]);
  EXPECT_EQ(LinkMadeFor(swapped[0], links), nullptr);
}

TEST_P(PinnedDevices, AnotherMakeInTheSocketIsAnotherPort) {
  Plug(kNameless, "left", 0);
  Ports();
  Pull("left");
  Plug({"", "1a86"}, "left", 1);
  EXPECT_EQ(Ports(), QStringList{"COM2 ttyUSB1"});
  EXPECT_EQ(Target("COM2"), Target("COM1")) << "two links with one text";
  Pull("left");
  Plug(kNameless, "left", 2);
  EXPECT_EQ(Ports(), QStringList{"COM1 ttyUSB2"});
  // Exchanged by hand: what is known goes with the link.
  Rename("COM1", "aside");
  Rename("COM2", "COM1");
  Rename("aside", "COM2");
  EXPECT_EQ(Ports(), QStringList{"COM2 ttyUSB2"});
}

TEST_P(PinnedDevices, AnotherSerialNumberUnderTheNameIsAnotherPort) {
  Plug({"A1"}, "left", 0);
  Ports();
  Exchange(m_plugged.at("left").device, "A2");
  EXPECT_EQ(Ports(), QStringList{"COM2 ttyUSB0"});
}

TEST_P(PinnedDevices, TheProgramsOwnLinkToANodeStandsForItsDevice) {
  Plug({"A1"}, "left", 0);
  m_tree.SetProperty(m_plugged.at("left").device, "DEVLINKS", "");
  m_tree.UnlinkSerial("by-id", NameOf({"A1"}));
  m_tree.UnlinkSerial("by-path", "left");
  EXPECT_EQ(Ports(), QStringList{"COM1 ttyUSB0"});
  EXPECT_EQ(Target("COM1"), "/dev/ttyUSB0");
  Exchange(m_plugged.at("left").device, "A2");
  EXPECT_EQ(Ports(), QStringList{"COM2 ttyUSB0"});
}

TEST_P(PinnedDevices, APersonsLinkToANodeIsTakenAsItIs) {
  OldFolder({{7, "/dev/ttyUSB0"}});
  Plug({"A1"}, "left", 0);
  EXPECT_EQ(Ports(), QStringList{"COM7 ttyUSB0"});
  Exchange(m_plugged.at("left").device, "A2", "1a86");
  EXPECT_EQ(Ports(), QStringList{"COM7 ttyUSB0"});
}

TEST_P(PinnedDevices, ALinkThatIsRenamedKeepsItsDevice) {
  Plug(kCheap, "left", 0);
  Ports();
  Rename("COM1", "COM4");
  EXPECT_EQ(Ports(), QStringList{"COM4 ttyUSB0"});
  Plug(kCheap, "right", 1);
  EXPECT_EQ(Ports(), (QStringList{"COM1 ttyUSB1", "COM4 ttyUSB0"}));
}

TEST_P(PinnedDevices, ALinkThatIsDeletedForgetsItsDevice) {
  Plug(kNameless, "left", 0);
  Ports();
  Pull("left");
  m_scratch.Remove("ports/COM1");
  EXPECT_EQ(Ports(), QStringList());
  m_scratch.Link("ports/COM5", PathOf("left"));
  Plug({"", "1a86"}, "left", 1);
  EXPECT_EQ(Ports(), QStringList{"COM5 ttyUSB1"});
}

TEST_P(PinnedDevices, TwoLinksOfOneTextListTheDeviceOnce) {
  Plug({"A1"}, "left", 0);
  Ports();
  m_scratch.Link("ports/COM5", IdOf({"A1"}));
  EXPECT_EQ(Ports(), QStringList{"COM1 ttyUSB0"});
}

TEST_P(PinnedDevices, TheLinesOfOneAdapterMoveTogether) {
  const auto plug = [&](const std::string& socket, int n) {
    const std::string usb = "/devices/pci0000:00/usb1/" + socket;
    m_tree.Add("P: " + usb +
               "\nE: SUBSYSTEM=usb\nE: DEVTYPE=usb_device\nA: product=Two\\n\nA: idVendor=0403\\n\n"
               "A: idProduct=6010\\n\nA: serial=T1\\n\n\n");
    std::vector<std::string> lines;
    for (int i = 0; i < 2; ++i) {
      const std::string id = "usb-0403_T1-if0" + std::to_string(i);
      const std::string place = socket + ":1." + std::to_string(i);
      const std::string node = "ttyUSB" + std::to_string(n + i);
      m_tree.Add("P: " + usb + '/' + place +
                 "\nE: SUBSYSTEM=usb\nE: DEVTYPE=usb_interface\nA: bInterfaceNumber=0" + std::to_string(i) +
                 "\\n\n\n");
      const std::string data = "E: DEVLINKS=/dev/serial/by-id/" + id + " /dev/serial/by-path/" + place +
                               "\nE: ID_VENDOR_ID=0403\nE: ID_MODEL_ID=6010\nE: ID_SERIAL_SHORT=T1\n";
      lines.push_back(m_tree.AddTty(usb + '/' + place, node, 188, n + i,
                                    GetParam() == Names::InUdevsData ? data : std::string()));
      m_tree.LinkSerial("by-id", id, node);
      m_tree.LinkSerial("by-path", place, node);
    }
    return lines;
  };
  const std::vector<std::string> lines = plug("1-1", 0);
  EXPECT_EQ(Ports(), (QStringList{"COM1 ttyUSB0", "COM2 ttyUSB1"}));
  EXPECT_EQ(Target("COM2"), "/dev/serial/by-id/usb-0403_T1-if01");
  for (const std::string& line : lines) m_tree.Remove(line);
  m_tree.UnlinkSerial("by-path", "1-1:1.0");
  m_tree.UnlinkSerial("by-path", "1-1:1.1");
  plug("1-2", 4);
  EXPECT_EQ(Ports(), (QStringList{"COM1 ttyUSB4", "COM2 ttyUSB5"}));
}

TEST_P(PinnedDevices, AnOpenAsksAgainWhoHasTheName) {
  Plug(kCheap, "left", 0);
  Plug({"B2"}, "right", 1);
  Ports();
  EXPECT_EQ(ResolvePort(Folder(), QStringLiteral("COM1"), QuietRoots()), QStringLiteral("/dev/ttyUSB0"));
  // Nobody has listed since.
  GiveName(NameOf(kCheap), "right");
  EXPECT_EQ(ResolvePort(Folder(), QStringLiteral("COM1"), QuietRoots()), QString());
}

INSTANTIATE_TEST_SUITE_P(Of, PinnedDevices, testing::Values(Names::InUdevsData, Names::InFolders),
                         [](const testing::TestParamInfo<Names>& names) {
                           return std::string(names.param == Names::InFolders ? "Folders" : "UdevsData");
                         });

}  // namespace
}  // namespace quarn
