#include "serial/port_source_linux.h"

#include <grp.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>

#include <QDir>
#include <algorithm>
#include <cstdio>
#include <cstring>
#include <functional>
#include <ostream>
#include <string_view>
#include <tuple>

#include "serial/platform_serial.h"
#include "serial/port_use_linux.h"
#include "serial_fixtures.h"

// The machine's own serial lines, if it has any, are listed too. They get low numbers of their own, so that
// these tests look only at the numbers from 50 on.

namespace quarn {
namespace {

constexpr const char* kPort = "COM57";

/// The description of the port with this name, or the empty text if it is not listed.
QString DescriptionIn(LinuxPortSource& source, const QString& name) {
  const std::optional<QList<Port>> ports = source.Ports();
  EXPECT_TRUE(ports);
  for (const Port& port : ports.value_or(QList<Port>())) {
    if (port.name == name) return port.description;
  }
  return {};
}

QString TerminalDescription(const std::string& node) {
  return QStringLiteral("Pseudo-terminal - %1 (%2)").arg(QString::fromStdString(node), kPort);
}

std::vector<DeviceNode> NodesOf(const std::string& path) {
  DeviceNode node{path, {}};
  EXPECT_EQ(::stat(path.c_str(), &node.status), 0);
  return {node};
}

class LinuxPortSourceTest : public testing::TestWithParam<ChangeWatch::Mode> {
 protected:
  ScratchFolder m_scratch;
  LinuxPortSource m_source{QString::fromStdString(m_scratch.At("ports")), {}, GetParam()};
};

INSTANTIATE_TEST_SUITE_P(Watching, LinuxPortSourceTest,
                         testing::Values(ChangeWatch::Mode::Events, ChangeWatch::Mode::PollingOnly),
                         [](const auto& mode) {
                           return mode.param == ChangeWatch::Mode::Events ? "Events" : "PollingOnly";
                         });

TEST_P(LinuxPortSourceTest, NoticesTheFolderAndItsLinks) {
  const PseudoTerminal terminal;
  EXPECT_EQ(DescriptionIn(m_source, kPort), "");
  ::mkdir(m_scratch.At("ports").c_str(), 0700);
  EXPECT_EQ(DescriptionIn(m_source, kPort), "");
  m_scratch.Link("ports/COM57", terminal.Node());
  EXPECT_EQ(DescriptionIn(m_source, kPort), TerminalDescription(terminal.Node()));
  ASSERT_EQ(::rename(m_scratch.At("ports/COM57").c_str(), m_scratch.At("ports/COM58").c_str()), 0);
  EXPECT_EQ(DescriptionIn(m_source, kPort), "");
  EXPECT_NE(DescriptionIn(m_source, "COM58"), "");
  m_scratch.Remove("ports/COM58");
  EXPECT_EQ(DescriptionIn(m_source, "COM58"), "");
}

TEST_P(LinuxPortSourceTest, APseudoTerminalsEndIsSeenAtTheNextListing) {
  m_scratch.Folder("own");
  LinuxPortSource source(QString::fromStdString(m_scratch.At("own")), {}, GetParam());
  constexpr int kMostAttempts = 100;
  for (int attempt = 0; attempt < kMostAttempts; ++attempt) {
    PseudoTerminal terminal = TerminalOfHighNumber();
    m_scratch.Link("own/COM57", terminal.Node());
    ASSERT_NE(DescriptionIn(source, kPort), "");
    terminal.Close();
    ASSERT_EQ(DescriptionIn(source, kPort), "");
    // The kernel gives its number again after the lower ones, unless another process gets it.
    std::vector<PseudoTerminal> next;
    while (next.size() < 2 * kLowerNumbers) {
      if (next.emplace_back().Node() != terminal.Node()) continue;
      EXPECT_NE(DescriptionIn(source, kPort), "");
      return;
    }
    m_scratch.Remove("own/COM57");
  }
  FAIL() << "others always were faster";
}

TEST_P(LinuxPortSourceTest, NoticesAChangeBehindALinkedFolder) {
  const PseudoTerminal terminal;
  m_scratch.Folder("own");
  m_scratch.Folder("a");
  m_scratch.Folder("b");
  m_scratch.Link("here", "a");
  m_scratch.Link("own/COM57", "../here/device");
  LinuxPortSource source(QString::fromStdString(m_scratch.At("own")), {}, GetParam());
  EXPECT_EQ(DescriptionIn(source, kPort), "");
  m_scratch.Link("b/device", terminal.Node());
  EXPECT_EQ(DescriptionIn(source, kPort), "");
  m_scratch.Remove("here");
  m_scratch.Link("here", "b");
  EXPECT_NE(DescriptionIn(source, kPort), "");
  m_scratch.Remove("b/device");
  EXPECT_EQ(DescriptionIn(source, kPort), "");
}

TEST_P(LinuxPortSourceTest, NoticesThatTheFolderWasReplaced) {
  const PseudoTerminal terminal;
  m_scratch.Folder("own");
  LinuxPortSource source(QString::fromStdString(m_scratch.At("own")), {}, GetParam());
  m_scratch.Link("own/COM57", terminal.Node());
  EXPECT_NE(DescriptionIn(source, kPort), "");
  ASSERT_EQ(::rename(m_scratch.At("own").c_str(), m_scratch.At("aside").c_str()), 0);
  EXPECT_EQ(DescriptionIn(source, kPort), "");
  // The listing itself made a new one if this machine has lines to pin.
  ::mkdir(m_scratch.At("own").c_str(), 0700);
  m_scratch.Link("own/COM57", terminal.Node());
  EXPECT_NE(DescriptionIn(source, kPort), "");
}

TEST_P(LinuxPortSourceTest, ListsAfreshOnlyAfterAChange) {
  const PseudoTerminal terminal;
  m_scratch.Folder("own");
  m_scratch.Link("own/COM57", terminal.Node());
  LinuxPortSource source(QString::fromStdString(m_scratch.At("own")), {}, GetParam());
  // Pins made for the machine's own lines are a change in their turn.
  source.Ports();
  source.Ports();
  const std::uint64_t before = source.ListingCount();
  for (int i = 0; i < 100; ++i) {
    EXPECT_EQ(DescriptionIn(source, kPort), TerminalDescription(terminal.Node()));
  }
  EXPECT_EQ(source.ListingCount(), before);
  source.Forget();
  source.Ports();
  EXPECT_EQ(source.ListingCount(), before + 1);
}

TEST_P(LinuxPortSourceTest, HasNoListWhileTheFolderCannotBeRead) {
  m_scratch.File("ports");
  EXPECT_EQ(m_source.Ports(), std::nullopt);
  EXPECT_EQ(m_source.Ports(), std::nullopt);
  m_scratch.Remove("ports");
  EXPECT_NE(m_source.Ports(), std::nullopt);
}

/// Notes what the serial room warns of while it lives.
class Warnings {
 public:
  Warnings() {
    Texts().clear();
    m_former =
        qInstallMessageHandler([](QtMsgType type, const QMessageLogContext& context, const QString& text) {
          if (type == QtWarningMsg && std::string_view(context.category) == "quarn.serial")
            Texts().append(text);
        });
  }
  ~Warnings() { qInstallMessageHandler(m_former); }
  Warnings(const Warnings&) = delete;
  Warnings& operator=(const Warnings&) = delete;
  static QStringList& Texts() {
    static QStringList texts;
    return texts;
  }

 private:
  QtMessageHandler m_former = nullptr;
};

/// Ways in which what stands in the place of the ports folder is no use.
struct Unusable {
  const char* name;
  void (*make)(const ScratchFolder&);
  const char* reason;
  /// For GoogleTest's output.
  friend void PrintTo(const Unusable& way, std::ostream* out) { *out << way.name; }
};

class UnusableFolder : public testing::TestWithParam<std::tuple<ChangeWatch::Mode, Unusable>> {
 protected:
  [[nodiscard]] QString Warning() const {
    return QStringLiteral("the ports folder cannot be used: \"%1\": %2")
        .arg(QString::fromStdString(m_scratch.At("ports")), QString(std::get<1>(GetParam()).reason));
  }
  void Break() const { std::get<1>(GetParam()).make(m_scratch); }

  ScratchFolder m_scratch;
  Warnings m_warnings;
  LinuxPortSource m_source{QString::fromStdString(m_scratch.At("ports")), {}, std::get<0>(GetParam())};
};

INSTANTIATE_TEST_SUITE_P(
    Watching, UnusableFolder,
    testing::Combine(
        testing::Values(ChangeWatch::Mode::Events, ChangeWatch::Mode::PollingOnly),
        testing::Values(Unusable{"ALinkLoop",
                                 [](const ScratchFolder& scratch) { scratch.Link("ports", "ports"); },
                                 "Too many levels of symbolic links"},
                        Unusable{"APlainFile", [](const ScratchFolder& scratch) { scratch.File("ports"); },
                                 "Not a directory"})),
    [](const auto& way) {
      return std::string(std::get<1>(way.param).name) +
             (std::get<0>(way.param) == ChangeWatch::Mode::Events ? "Events" : "PollingOnly");
    });

TEST_P(UnusableFolder, IsFoundOutOnceAndToldOnce) {
  Break();
  EXPECT_EQ(m_source.Ports(), std::nullopt);
  const std::uint64_t before = m_source.ListingCount();
  for (int i = 0; i < 100; ++i) {
    EXPECT_EQ(m_source.Ports(), std::nullopt);
  }
  EXPECT_EQ(m_source.ListingCount(), before);
  EXPECT_EQ(Warnings::Texts(), QStringList(Warning()));
}

TEST(PortSourceWarning, SpellsOutWhatAFolderIsCalled) {
  const ScratchFolder scratch;
  const Warnings warnings;
  scratch.File("\x1b[2Jports");
  LinuxPortSource source(QString::fromStdString(scratch.At("\x1b[2Jports")));
  EXPECT_EQ(source.Ports(), std::nullopt);
  ASSERT_EQ(Warnings::Texts().size(), 1);
  EXPECT_TRUE(Warnings::Texts()[0].contains(QStringLiteral("\\u001B[2Jports")))
      << Warnings::Texts()[0].toStdString();
  EXPECT_FALSE(Warnings::Texts()[0].contains(QChar(0x1b)));
}

TEST_P(UnusableFolder, IsSeenWhenItIsMended) {
  const PseudoTerminal terminal;
  for (int time = 1; time <= 2; ++time) {
    Break();
    EXPECT_EQ(m_source.Ports(), std::nullopt);
    EXPECT_EQ(Warnings::Texts().size(), time) << "each failure is told";
    m_scratch.Remove("ports");
    m_scratch.Folder("ports");
    m_scratch.Link("ports/COM57", terminal.Node());
    EXPECT_EQ(DescriptionIn(m_source, kPort), TerminalDescription(terminal.Node()));
    ASSERT_EQ(::rename(m_scratch.At("ports").c_str(), m_scratch.At("aside" + std::to_string(time)).c_str()),
              0);
  }
}

TEST_P(UnusableFolder, IsNotToldAgainWhenItIsListedAgain) {
  Break();
  EXPECT_EQ(m_source.Ports(), std::nullopt);
  const std::uint64_t before = m_source.ListingCount();
  m_source.Forget();
  EXPECT_EQ(m_source.Ports(), std::nullopt);
  EXPECT_GT(m_source.ListingCount(), before);
  EXPECT_EQ(Warnings::Texts().size(), 1);
}

/// What a user without privileges sees of a folder that only its mode keeps shut; as no such user, by
/// becoming one in a process of its own.
int InUnprivilegedProcess(const std::function<bool()>& work) {
  const pid_t child = ::fork();
  if (child == 0) {
    constexpr uid_t kNobody = 65534;
    const bool unprivileged = ::geteuid() != 0 || (::setgroups(0, nullptr) == 0 && ::setgid(kNobody) == 0 &&
                                                   ::setuid(kNobody) == 0);
    ::_exit(unprivileged && work() ? 0 : 1);
  }
  int status = -1;
  EXPECT_EQ(::waitpid(child, &status, 0), child);
  return status;
}

TEST(LinuxPortSource, CachesAndTellsThatTheFolderMayNotBeRead) {
  const ScratchFolder scratch;
  scratch.Folder("ports");
  ASSERT_EQ(::chmod(scratch.Path().c_str(), 0755), 0);
  ASSERT_EQ(::chmod(scratch.At("ports").c_str(), 0), 0);
  EXPECT_EQ(InUnprivilegedProcess([&] {
              const Warnings warnings;
              LinuxPortSource source(QString::fromStdString(scratch.At("ports")));
              const bool failed = !source.Ports();
              const std::uint64_t before = source.ListingCount();
              const bool failedAgain = !source.Ports();
              return failed && failedAgain && source.ListingCount() == before &&
                     Warnings::Texts().size() == 1 &&
                     Warnings::Texts().constFirst().endsWith(QStringLiteral("Permission denied"));
            }),
            0);
}

TEST(LinuxPortSource, NotesWhenALinkWasLastSeen) {
  const ScratchFolder scratch;
  PseudoTerminal terminal;
  // By way of a name of its own: another process may get the terminal's number.
  scratch.Link("device", terminal.Node());
  scratch.Link("COM57", "device");
  scratch.Link("COM58", "nowhere");
  const timespec longAgo[2] = {{1000, 0}, {1000, 0}};
  const auto makeOld = [&](const char* name) {
    ASSERT_EQ(::utimensat(AT_FDCWD, scratch.At(name).c_str(), longAgo, AT_SYMLINK_NOFOLLOW), 0);
  };
  const auto secondsOf = [&](const char* name) {
    struct stat status {};
    EXPECT_EQ(::lstat(scratch.At(name).c_str(), &status), 0);
    return status.st_mtim.tv_sec;
  };
  makeOld("COM57");
  makeOld("COM58");
  LinuxPortSource source(QString::fromStdString(scratch.Path()));
  source.Ports();
  EXPECT_GT(secondsOf("COM57"), 1000);
  EXPECT_EQ(secondsOf("COM58"), 1000);
  // It may have been there for long since the last listing; absent it is only from now on.
  makeOld("COM57");
  terminal.Close();
  scratch.Remove("device");
  EXPECT_EQ(DescriptionIn(source, kPort), "");
  EXPECT_GT(secondsOf("COM57"), 1000);
  makeOld("COM57");
  source.Forget();
  source.Ports();
  EXPECT_EQ(secondsOf("COM57"), 1000);
}

TEST(LinuxPortSource, SaysWhoUsesThePort) {
  const ScratchFolder scratch;
  const PseudoTerminal terminal;
  scratch.Link("COM57", terminal.Node());
  LinuxPortSource source(QString::fromStdString(scratch.Path()));
  EXPECT_EQ(DescriptionIn(source, kPort), TerminalDescription(terminal.Node()));
  OtherProcess user([&] {
    const int line = ::open(terminal.Node().c_str(), O_RDWR | O_NOCTTY);
    return line >= 0 && ::flock(line, LOCK_EX | LOCK_NB) == 0;
  });
  EXPECT_EQ(DescriptionIn(source, kPort),
            QStringLiteral("Pseudo-terminal - %1, in use by port_source_tes (PID %2) (COM57)")
                .arg(QString::fromStdString(terminal.Node()))
                .arg(user.Pid()));
  user.End();
  EXPECT_EQ(DescriptionIn(source, kPort), TerminalDescription(terminal.Node()));
}

TEST(UsersOf, FindsWhoHoldsALock) {
  // The lock alone: what the process has open is not looked into.
  SystemRoots roots;
  const ScratchFolder scratch;
  const PseudoTerminal terminal;
  roots.proc = scratch.Path();
  roots.lockFiles = scratch.Path();
  const auto nodes = NodesOf(terminal.Node());
  char place[64];
  std::snprintf(place, sizeof place, "%02x:%02x:%lu", major(nodes[0].status.st_dev),
                minor(nodes[0].status.st_dev), static_cast<unsigned long>(nodes[0].status.st_ino));
  const auto userWith = [&](const std::string& lines) {
    scratch.File("locks", lines);
    return UsersOf(nodes, roots).at(0);
  };
  EXPECT_EQ(userWith(std::string("1: FLOCK  ADVISORY  WRITE 4711 ") + place + " 0 EOF\n"), 4711);
  EXPECT_EQ(userWith(std::string("1: POSIX  ADVISORY  READ 4712 ") + place + " 0 EOF\n"), 4712);
  EXPECT_EQ(userWith(std::string("1: -> FLOCK  ADVISORY  WRITE 4711 ") + place + " 0 EOF\n"), 0);
  EXPECT_EQ(userWith(std::string("1: OFDLCK ADVISORY  WRITE -1 ") + place + " 0 EOF\n"), 0);
  EXPECT_EQ(userWith("1: FLOCK  ADVISORY  WRITE 4711 00:00:1 0 EOF\nbroken\n\n1: FLOCK\n"), 0);
  EXPECT_EQ(userWith("1: FLOCK  ADVISORY  WRITE " + std::to_string(::getpid()) + " " + place + " 0 EOF\n"),
            0);
}

TEST(UsersOf, FindsWhomALockFileNames) {
  SystemRoots roots;
  const ScratchFolder scratch;
  const PseudoTerminal terminal;
  roots.proc = scratch.At("none");
  roots.lockFiles = scratch.Path();
  OtherProcess user([] { return true; });
  std::string name = "LCK.." + terminal.Node().substr(std::strlen("/dev/"));
  std::replace(name.begin(), name.end(), '/', '_');
  const auto nodes = NodesOf(terminal.Node());
  const auto userWith = [&](const std::string& text) {
    scratch.File(name, text);
    return UsersOf(nodes, roots).at(0);
  };
  EXPECT_EQ(UsersOf(nodes, roots).at(0), 0);
  EXPECT_EQ(userWith("     " + std::to_string(user.Pid()) + "\n"), user.Pid());
  EXPECT_EQ(userWith("-1\n"), 0);
  EXPECT_EQ(userWith("nonsense"), 0);
  EXPECT_EQ(userWith(std::to_string(::getpid())), 0);
  const pid_t gone = user.Pid();
  user.End();
  EXPECT_EQ(userWith(std::to_string(gone)), 0);
}

TEST(UsersOf, FindsWhoHasTheNodeOpenButNotItsFarEnd) {
  const PseudoTerminal terminal;
  const auto nodes = NodesOf(terminal.Node());
  EXPECT_EQ(UsersOf(nodes, {}).at(0), 0);
  {
    // This process holds the far end; its child inherits that only if it does not let go of it.
    const OtherProcess visitor([&] {
      for (int i = 3; i < 64; ++i) {
        char path[64] = {};
        const std::string entry = "/proc/self/fd/" + std::to_string(i);
        if (::readlink(entry.c_str(), path, sizeof path - 1) > 0 &&
            std::string(path).find("ptmx") != std::string::npos) {
          ::close(i);
        }
      }
      return ::open(terminal.Node().c_str(), O_RDWR | O_NOCTTY) >= 0;
    });
    EXPECT_EQ(UsersOf(nodes, {}).at(0), visitor.Pid());
  }
  const OtherProcess instrument([&] { return ::open(terminal.Node().c_str(), O_RDWR | O_NOCTTY) >= 0; });
  EXPECT_EQ(UsersOf(nodes, {}).at(0), 0);
  const FileDescriptor own(::open(terminal.Node().c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC));
  EXPECT_EQ(UsersOf(nodes, {}).at(0), 0);
}

TEST(UseText, NamesTheProgramWhateverItCallsItself) {
  const ScratchFolder scratch;
  SystemRoots roots;
  roots.proc = scratch.Path();
  scratch.Folder("7");
  EXPECT_EQ(UseText(7, roots), "in use by PID 7");
  scratch.File("7/comm", "minicom\n");
  EXPECT_EQ(UseText(7, roots), "in use by minicom (PID 7)");
  EXPECT_EQ(UserText(7, roots), "minicom (PID 7)");
  EXPECT_EQ(UseText(0, roots), "");
  EXPECT_EQ(UserText(0, roots), "");
  scratch.File("7/comm", "\x1b[31m(COM3) \xc3\xa4");
  EXPECT_EQ(UseText(7, roots), "in use by ?[31m(COM3) ?? (PID 7)");
  scratch.File("7/comm", std::string(100, 'x'));
  EXPECT_EQ(UseText(7, roots), "in use by " + std::string(15, 'x') + " (PID 7)");
  scratch.File("7/comm", "");
  EXPECT_EQ(UseText(7, roots), "in use by PID 7");
}

/// What NoPermissionReason says to a user without rights on the node and without groups.
std::string HindranceForStranger(const DeviceNode& node) {
  int ends[2] = {-1, -1};
  EXPECT_EQ(::pipe(ends), 0);
  const FileDescriptor in(ends[0]);
  FileDescriptor out(ends[1]);
  const pid_t child = ::fork();
  if (child == 0) {
    // Only root can become somebody else; its owner is refused by the owner's own bits.
    const bool stranger =
        ::geteuid() != 0 || (::setgroups(0, nullptr) == 0 && ::setgid(65534) == 0 && ::setuid(65534) == 0);
    const std::string text = stranger ? NoPermissionReason(node) : "could not become a stranger";
    ::_exit(::write(ends[1], text.data(), text.size()) == static_cast<ssize_t>(text.size()) ? 0 : 1);
  }
  out = FileDescriptor();
  char text[256] = {};
  EXPECT_GE(::read(in.Get(), text, sizeof text - 1), 0);
  EXPECT_EQ(::waitpid(child, nullptr, 0), child);
  return text;
}

TEST(NoPermissionReason, NamesTheGroupThatWouldHelp) {
  const PseudoTerminal terminal;
  ASSERT_EQ(::chmod(terminal.Node().c_str(), 0060), 0);
  const DeviceNode node = NodesOf(terminal.Node()).at(0);
  const struct group* group = ::getgrgid(node.status.st_gid);
  const std::string name = group != nullptr ? group->gr_name : std::to_string(node.status.st_gid);
  EXPECT_EQ(HindranceForStranger(node), "no permission: group " + name);
}

TEST(NoPermissionReason, NamesNoGroupThatWouldNotHelp) {
  const PseudoTerminal terminal;
  ASSERT_EQ(::chmod(terminal.Node().c_str(), 0020), 0);
  EXPECT_EQ(HindranceForStranger(NodesOf(terminal.Node()).at(0)), "no permission");
}

TEST(NoPermissionReason, IsEmptyForWhoMayOpenTheNode) {
  const PseudoTerminal terminal;
  ASSERT_EQ(::chmod(terminal.Node().c_str(), 0666), 0);
  EXPECT_EQ(HindranceForStranger(NodesOf(terminal.Node()).at(0)), "");
}

TEST(ResolvePort, LeadsToTheDeviceNode) {
  const ScratchFolder scratch;
  PseudoTerminal terminal = TerminalOfHighNumber();
  scratch.Link("COM7", "COM8");
  scratch.Link("COM8", terminal.Node());
  scratch.Link("COM9", "/dev/null");
  scratch.File("COM10");
  const QString folder = QString::fromStdString(scratch.Path());
  EXPECT_EQ(ResolvePort(folder, "COM7"), QString::fromStdString(terminal.Node()));
  EXPECT_EQ(ResolvePort(folder + "/", "COM8"), QString::fromStdString(terminal.Node()));
  EXPECT_EQ(ResolvePort(folder, "COM9"), "");
  EXPECT_EQ(ResolvePort(folder, "COM10"), "");
  EXPECT_EQ(ResolvePort(folder, "COM11"), "");
  EXPECT_EQ(ResolvePort(folder + "/none", "COM7"), "");
  terminal.Close();
  EXPECT_EQ(ResolvePort(folder, "COM7"), "");
}

TEST(ResolvePort, NeverLeavesTheFolderByName) {
  const ScratchFolder scratch;
  const PseudoTerminal terminal;
  scratch.Folder("ports");
  scratch.Link("COM7", terminal.Node());
  scratch.Link("ports/COM7", terminal.Node());
  const QString folder = QString::fromStdString(scratch.At("ports"));
  for (const QString& name :
       {QString(), QString("."), QString(".."), QString("../COM7"), QString("./COM7"),
        QString::fromStdString(terminal.Node()), QString("COM7/"), QString("COM7") + QChar(u'\0')}) {
    EXPECT_EQ(ResolvePort(folder, name), "") << name.toStdString();
  }
  EXPECT_NE(ResolvePort(folder, "COM7"), "");
}

TEST(FindPortDevice, TakesANumberAPathOrANameInTheFolderOfDevices) {
  const ScratchFolder scratch;
  PseudoTerminal terminal;
  const QString node = QString::fromStdString(terminal.Node());
  scratch.Folder("ports");
  scratch.Link("ports/COM7", terminal.Node());
  scratch.Link("by-id", terminal.Node());
  scratch.File("text");
  const QString folder = QString::fromStdString(scratch.At("ports"));
  EXPECT_EQ(FindPortDevice(folder, "COM7"), node);
  EXPECT_EQ(FindPortDevice(folder, node), node);
  EXPECT_EQ(FindPortDevice(folder, QDir::current().relativeFilePath(node)), node);
  EXPECT_EQ(FindPortDevice(folder, "null"), QString()) << "is /dev/null, and no terminal";
  EXPECT_EQ(FindPortDevice(folder, QString::fromStdString(scratch.At("by-id"))), node);
  EXPECT_EQ(FindPortDevice(folder, "COM8"), QString());
  EXPECT_EQ(FindPortDevice(folder, "/dev/null"), QString());
  EXPECT_EQ(FindPortDevice(folder, QString::fromStdString(scratch.At("text"))), QString());
  EXPECT_EQ(FindPortDevice(folder, "/dev/there/is/none"), QString());
  EXPECT_EQ(FindPortDevice(folder, QString()), QString());
  terminal.Close();
  EXPECT_EQ(FindPortDevice(folder, "COM7"), QString());
}

}  // namespace
}  // namespace quarn
