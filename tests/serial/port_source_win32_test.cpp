#include "serial/port_source_win32.h"

#include <gtest/gtest.h>
#include <windows.h>

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QString>
#include <memory>
#include <optional>
#include <vector>

#include "serial/platform_serial.h"

namespace quarn {
namespace {

void SetText(HKEY key, const wchar_t* name, const QString& text) {
  EXPECT_EQ(RegSetValueExW(key, name, 0, REG_SZ, reinterpret_cast<const BYTE*>(text.utf16()),
                           static_cast<DWORD>((text.size() + 1) * 2)),
            ERROR_SUCCESS);
}

void SetNumber(HKEY key, const wchar_t* name, DWORD number) {
  EXPECT_EQ(RegSetValueExW(key, name, 0, REG_DWORD, reinterpret_cast<const BYTE*>(&number), sizeof number),
            ERROR_SUCCESS);
}

/// A key of the system's registry, gone with the object.
class Key {
 public:
  explicit Key(const QString& path) : m_path(path.toStdWString()) {
    EXPECT_EQ(RegCreateKeyExW(HKEY_LOCAL_MACHINE, m_path.c_str(), 0, nullptr, 0, KEY_ALL_ACCESS, nullptr,
                              &m_key, nullptr),
              ERROR_SUCCESS);
  }
  ~Key() {
    RegCloseKey(m_key);
    RegDeleteTreeW(HKEY_LOCAL_MACHINE, m_path.c_str());
  }
  Key(const Key&) = delete;
  Key& operator=(const Key&) = delete;
  [[nodiscard]] HKEY Get() const { return m_key; }

 private:
  std::wstring m_path;
  HKEY m_key = nullptr;
};

/// A device that the system takes for a COM port, present or known from earlier.
class Device {
 public:
  explicit Device(const QString& name, bool present = true)
      : m_devicePath(QStringLiteral("System\\CurrentControlSet\\Enum\\ROOT\\%1\\0000").arg(name)),
        m_device(m_devicePath),
        m_interface(kClasses + kComPort + QStringLiteral("\\##?#ROOT#%1#0000#").arg(name) + kComPort),
        m_link(kClasses + kComPort + QStringLiteral("\\##?#ROOT#%1#0000#").arg(name) + kComPort +
               QStringLiteral("\\#")),
        m_control(kClasses + kComPort + QStringLiteral("\\##?#ROOT#%1#0000#").arg(name) + kComPort +
                  QStringLiteral("\\#\\Control")) {
    SetText(m_device.Get(), L"Class", QStringLiteral("Ports"));
    SetText(m_device.Get(), L"ClassGUID", QStringLiteral("{4d36e978-e325-11ce-bfc1-08002be10318}"));
    SetText(m_interface.Get(), L"DeviceInstance", QStringLiteral("ROOT\\%1\\0000").arg(name));
    SetText(m_link.Get(), L"SymbolicLink", QStringLiteral("\\\\?\\ROOT#%1#0000#").arg(name) + kComPort);
    SetNumber(m_control.Get(), L"Linked", present ? 1 : 0);
  }
  Device(const QString& name, const QString& friendlyName, bool present = true) : Device(name, present) {
    SetText(m_device.Get(), L"FriendlyName", friendlyName);
  }
  /// What the driver of an adapter keeps for itself.
  void SetDriverValues(const QString& portName, std::optional<DWORD> latency) {
    m_parameters.emplace(m_devicePath + QStringLiteral("\\Device Parameters"));
    SetText(m_parameters->Get(), L"PortName", portName);
    if (latency) SetNumber(m_parameters->Get(), L"LatencyTimer", *latency);
  }

 private:
  inline static const QString kClasses =
      QStringLiteral("System\\CurrentControlSet\\Control\\DeviceClasses\\");
  inline static const QString kComPort = QStringLiteral("{86e0d1e0-8089-11d0-9ce4-08003e301f73}");
  QString m_devicePath;
  Key m_device;
  std::optional<Key> m_parameters;  ///< below m_device, so it goes first
  Key m_interface;
  Key m_link;
  Key m_control;
};

QList<Port> Listed() {
  const std::optional<QList<Port>> ports = Win32PortSource().Ports();
  EXPECT_TRUE(ports);
  return ports.value_or(QList<Port>());
}

TEST(PortSourceWin32, ListsThePortsThatArePresent) {
  EXPECT_EQ(Listed(), QList<Port>());
  {
    const Device first(QStringLiteral("QUARN1"), QStringLiteral("Sim\u00fclator (COM3)"));
    EXPECT_EQ(Listed(), (QList<Port>{{"COM3", QStringLiteral("Sim\u00fclator (COM3)")}}));
    const Device second(QStringLiteral("QUARN2"), QStringLiteral("USB Serial Port (COM12)"));
    EXPECT_EQ(Listed(), (QList<Port>{{"COM3", QStringLiteral("Sim\u00fclator (COM3)")},
                                     {"COM12", "USB Serial Port (COM12)"}}));
  }
  EXPECT_EQ(Listed(), QList<Port>());
}

TEST(PortSourceWin32, ADeviceThatIsKnownAndAwayIsNotListed) {
  const Device away(QStringLiteral("QUARN1"), QStringLiteral("Serial (COM4)"), false);
  const Device there(QStringLiteral("QUARN2"), QStringLiteral("Serial (COM5)"));
  EXPECT_EQ(Listed(), (QList<Port>{{"COM5", "Serial (COM5)"}}));
}

TEST(PortSourceWin32, PassesOverWhatIsNoComPortOrHasNoName) {
  const Device printer(QStringLiteral("QUARN1"), QStringLiteral("Printer Port (LPT1)"));
  const Device nameless(QStringLiteral("QUARN2"));
  const Device small(QStringLiteral("QUARN3"), QStringLiteral("Serial (com4)"));
  const Device port(QStringLiteral("QUARN4"), QStringLiteral("Serial (COM5)"));
  EXPECT_EQ(Listed(), (QList<Port>{{"COM5", "Serial (COM5)"}}));
}

TEST(PortSourceWin32, ANameThatDoesNotFitIsPassedOver) {
  const QString longest = QStringLiteral("Serial (COM6)").leftJustified(259, u'x');
  const Device fits(QStringLiteral("QUARN1"), longest);
  const Device tooLong(QStringLiteral("QUARN2"), longest + u'x');
  EXPECT_EQ(Listed(), (QList<Port>{{"COM6", longest}}));
}

TEST(PortSourceWin32, AHundredPortsAreEnough) {
  std::vector<std::unique_ptr<Device>> devices;
  for (int i = 0; i < 105; ++i) {
    devices.push_back(std::make_unique<Device>(QStringLiteral("QUARN%1").arg(i),
                                               QStringLiteral("Serial %1 (COM%2)").arg(i).arg(i % 99 + 1)));
  }
  EXPECT_EQ(Listed().size(), 100);
}

TEST(PortSourceWin32, TheListIsInTheOrderOfTheNumbers) {
  const Device ten(QStringLiteral("QUARN1"), QStringLiteral("Serial (COM10)"));
  const Device two(QStringLiteral("QUARN2"), QStringLiteral("Serial (COM2)"));
  const Device nine(QStringLiteral("QUARN3"), QStringLiteral("Serial (COM9)"));
  EXPECT_EQ(Listed(),
            (QList<Port>{{"COM2", "Serial (COM2)"}, {"COM9", "Serial (COM9)"}, {"COM10", "Serial (COM10)"}}));
}

/// With an event loop, as in a program with windows.
class PortRevisionWin32 : public testing::Test {
 protected:
  /// Sleeps in the event loop until the revision is another one. Returns how often it was woken, or -1.
  int WakesUp(std::optional<std::uint64_t> revision, QDeadlineTimer end = QDeadlineTimer(30'000)) {
    for (int woken = 0; !end.hasExpired(); ++woken) {
      if (m_source.Revision() != revision) return woken;
      QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
    return -1;
  }

  int m_argc = 1;
  char m_name[6] = "ports";
  char* m_argv[2] = {m_name, nullptr};
  QCoreApplication m_loop{m_argc, m_argv};
  Win32PortSource m_source;
};

TEST_F(PortRevisionWin32, IsUnknownBeforeThePortsAreListed) {
  EXPECT_EQ(m_source.Revision(), std::nullopt);
  m_source.Ports();
  EXPECT_NE(m_source.Revision(), std::nullopt);
}

TEST_F(PortRevisionWin32, StaysWhileNothingHappensAndIsAnotherOneASecondLater) {
  m_source.Ports();
  const auto revision = m_source.Revision();
  for (int i = 0; i < 100; ++i) EXPECT_EQ(m_source.Revision(), revision);
  EXPECT_GE(WakesUp(revision), 1);
}

TEST_F(PortRevisionWin32, APortThatComesOrGoesWakesTheProgramAtOnce) {
  m_source.Ports();
  // Changes in the same second as the timer's say nothing, so one of several must be quick.
  constexpr int kAttempts = 20;
  int quick = 0;
  for (int i = 0; i < kAttempts && quick < 4; ++i) {
    const auto before = m_source.Revision();
    QElapsedTimer waited;
    std::optional<Device> port;
    port.emplace(QStringLiteral("QUARN1"), QStringLiteral("USB Serial Port (COM3)"));
    waited.start();
    ASSERT_GE(WakesUp(before), 0);
    if (waited.elapsed() < 100) ++quick;
    EXPECT_EQ(m_source.Ports().value_or(QList<Port>()).size(), 1);
    port.reset();
    while (m_source.Ports().value_or(QList<Port>()).size() != 0) {
      ASSERT_GE(WakesUp(m_source.Revision()), 0);
    }
  }
  EXPECT_GE(quick, 4);
}

TEST(LatencyTimerOf, IsTheOneOfThePortsOwnAdapter) {
  using std::chrono::milliseconds;
  Device first(QStringLiteral("QUARN1"), QStringLiteral("USB Serial Port (COM3)"));
  first.SetDriverValues(QStringLiteral("COM3"), 16);
  Device second(QStringLiteral("QUARN2"), QStringLiteral("USB Serial Port (COM12)"));
  second.SetDriverValues(QStringLiteral("COM12"), 1);
  EXPECT_EQ(LatencyTimerOf(QStringLiteral("COM3")), milliseconds(16));
  EXPECT_EQ(LatencyTimerOf(QStringLiteral("com12")), milliseconds(1));
  EXPECT_EQ(LatencyTimerOf(QStringLiteral("COM1")), std::nullopt);
}

TEST(LatencyTimerOf, IsNotKnownOfEveryDriver) {
  Device silent(QStringLiteral("QUARN1"), QStringLiteral("Communications Port (COM1)"));
  silent.SetDriverValues(QStringLiteral("COM1"), std::nullopt);
  const Device bare(QStringLiteral("QUARN2"), QStringLiteral("Communications Port (COM2)"));
  EXPECT_EQ(LatencyTimerOf(QStringLiteral("COM1")), std::nullopt);
  EXPECT_EQ(LatencyTimerOf(QStringLiteral("COM2")), std::nullopt);
}

TEST(FindPortDevice, TakesTheNamesOfPortsAlone) {
  EXPECT_EQ(FindPortDevice({}, QStringLiteral("COM4")), QStringLiteral("COM4"));
  EXPECT_EQ(FindPortDevice({}, QStringLiteral("COM12")), QStringLiteral("\\\\.\\COM12"));
  for (const char* name : {"", "COM", "COM0", "COM07", "com4", "COM4 ", "COM-4", "LPT1",
                           "C:", "PhysicalDrive0", "\\\\.\\COM4"}) {
    EXPECT_EQ(FindPortDevice({}, QString::fromLatin1(name)), QString()) << name;
  }
}

}  // namespace
}  // namespace quarn
