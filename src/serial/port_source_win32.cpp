#include "serial/port_source_win32.h"

// windows.h comes before setupapi.h, which builds on it.
#include <windows.h>
//
#include <setupapi.h>

#include <QAbstractEventDispatcher>
#include <algorithm>
#include <array>
#include <cstddef>
#include <iterator>
#include <optional>
#include <vector>

#include "serial/device_watch_win32.h"
#include "serial/friendly_name.h"
#include "serial/platform_serial.h"

namespace quarn {

namespace {

/// GUID_DEVINTERFACE_COMPORT of the Windows driver kit.
constexpr GUID kComPortInterface = {
    0x86E0D1E0, 0x8089, 0x11D0, {0x9C, 0xE4, 0x08, 0x00, 0x3E, 0x30, 0x1F, 0x73}};

/// A friendly name is read into 520 bytes. A longer one cannot be read.
constexpr std::size_t kFriendlyNameUnits = 260;

/// More than any name of a port has.
constexpr std::size_t kPortNameUnits = 64;

class DeviceInfoList {
 public:
  DeviceInfoList()
      : m_list(SetupDiGetClassDevsW(&kComPortInterface, nullptr, nullptr,
                                    DIGCF_PRESENT | DIGCF_DEVICEINTERFACE)) {}
  DeviceInfoList(const DeviceInfoList&) = delete;
  DeviceInfoList& operator=(const DeviceInfoList&) = delete;
  ~DeviceInfoList() {
    if (IsValid()) {
      SetupDiDestroyDeviceInfoList(m_list);
    }
  }
  [[nodiscard]] bool IsValid() const { return m_list != INVALID_HANDLE_VALUE; }
  [[nodiscard]] HDEVINFO Get() const { return m_list; }

 private:
  HDEVINFO m_list;
};

/// The info record of the device behind an interface; the path that comes with it is not needed.
std::optional<SP_DEVINFO_DATA> DeviceOf(const DeviceInfoList& list, SP_DEVICE_INTERFACE_DATA& port) {
  DWORD size = 0;
  if (SetupDiGetDeviceInterfaceDetailW(list.Get(), &port, nullptr, 0, &size, nullptr) == FALSE &&
      GetLastError() != ERROR_INSUFFICIENT_BUFFER) {
    return std::nullopt;
  }
  std::vector<std::max_align_t> memory(size / sizeof(std::max_align_t) + 1);
  auto* detail = static_cast<SP_DEVICE_INTERFACE_DETAIL_DATA_W*>(static_cast<void*>(memory.data()));
  detail->cbSize = sizeof(SP_DEVICE_INTERFACE_DETAIL_DATA_W);
  SP_DEVINFO_DATA device{};
  device.cbSize = sizeof device;
  if (SetupDiGetDeviceInterfaceDetailW(list.Get(), &port, detail, size, nullptr, &device) == FALSE) {
    return std::nullopt;
  }
  return device;
}

std::optional<QString> FriendlyNameOf(const DeviceInfoList& list, SP_DEVINFO_DATA& device) {
  std::array<wchar_t, kFriendlyNameUnits> name{};
  if (SetupDiGetDeviceRegistryPropertyW(list.Get(), &device, SPDRP_FRIENDLYNAME, nullptr,
                                        static_cast<BYTE*>(static_cast<void*>(name.data())),
                                        static_cast<DWORD>(sizeof name), nullptr) == FALSE) {
    return std::nullopt;
  }
  // A registry text may lack a final NUL.
  const auto end = std::find(name.begin(), std::prev(name.end()), L'\0');
  return QString::fromWCharArray(name.data(), end - name.begin());
}

/// A value that the driver keeps for a device. `what` is the registry's type of it, RRF_RT_...
bool ReadDriverValue(const DeviceInfoList& list, SP_DEVINFO_DATA& device, const wchar_t* name, DWORD what,
                     void* value, DWORD size) {
  const HKEY key = SetupDiOpenDevRegKey(list.Get(), &device, DICS_FLAG_GLOBAL, 0, DIREG_DEV, KEY_QUERY_VALUE);
  if (key == INVALID_HANDLE_VALUE) return false;
  const LSTATUS status = RegGetValueW(key, nullptr, name, what, nullptr, value, &size);
  RegCloseKey(key);
  return status == ERROR_SUCCESS;
}

/// Calls `visit` with each COM port that is present. False if they cannot be listed.
template <typename Visit>
bool ForEachPresentPort(Visit visit) {
  const DeviceInfoList list;
  if (!list.IsValid()) return false;
  for (DWORD index = 0;; ++index) {
    SP_DEVICE_INTERFACE_DATA port{};
    port.cbSize = sizeof port;
    if (SetupDiEnumDeviceInterfaces(list.Get(), nullptr, &kComPortInterface, index, &port) == FALSE) {
      return true;
    }
    if (std::optional<SP_DEVINFO_DATA> device = DeviceOf(list, port)) visit(list, *device);
  }
}

}  // namespace

Win32PortSource::Win32PortSource() = default;
Win32PortSource::~Win32PortSource() = default;

std::optional<std::uint64_t> Win32PortSource::Revision() {
  return m_watch ? m_watch->Changes() : std::nullopt;
}

std::optional<QList<Port>> Win32PortSource::Ports() {
  // Before the ports are listed: a change in between is then seen.
  if (!m_watch && QAbstractEventDispatcher::instance() != nullptr) m_watch = std::make_unique<DeviceWatch>();
  QStringList names;
  const bool listed = ForEachPresentPort([&](const DeviceInfoList& list, SP_DEVINFO_DATA& device) {
    if (const std::optional<QString> name = FriendlyNameOf(list, device)) names.append(*name);
  });
  if (!listed) return std::nullopt;
  return PortsNamed(names);
}

std::optional<std::chrono::milliseconds> LatencyTimerOf(const QString& port) {
  std::optional<std::chrono::milliseconds> found;
  ForEachPresentPort([&](const DeviceInfoList& list, SP_DEVINFO_DATA& device) {
    std::array<wchar_t, kPortNameUnits> name{};
    DWORD milliseconds = 0;
    if (ReadDriverValue(list, device, L"PortName", RRF_RT_REG_SZ, name.data(), sizeof name) &&
        port.compare(QString::fromWCharArray(name.data()), Qt::CaseInsensitive) == 0 &&
        ReadDriverValue(list, device, L"LatencyTimer", RRF_RT_REG_DWORD, &milliseconds,
                        sizeof milliseconds)) {
      found = std::chrono::milliseconds(milliseconds);
    }
  });
  return found;
}

}  // namespace quarn
