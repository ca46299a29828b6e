#include "serial/device_watch_win32.h"

#include <chrono>

namespace quarn {
namespace {

constexpr wchar_t kInterfaces[] = L"System\\CurrentControlSet\\Control\\DeviceClasses";
constexpr std::chrono::seconds kLongestRest{1};

}  // namespace

DeviceWatch::DeviceWatch() : m_changed(CreateEventW(nullptr, FALSE, FALSE, nullptr)) {
  if (m_changed == nullptr) return;
  if (RegOpenKeyExW(HKEY_LOCAL_MACHINE, kInterfaces, 0, KEY_NOTIFY, &m_list) != ERROR_SUCCESS) {
    m_list = nullptr;
    return;
  }
  QObject::connect(&m_notifier, &QWinEventNotifier::activated, &m_notifier, [this] {
    ++m_changes;
    // Awaited again before anybody looks at the ports, so that no change is missed.
    Await();
  });
  QObject::connect(&m_timer, &QTimer::timeout, &m_timer, [this] { ++m_changes; });
  m_notifier.setHandle(m_changed);
  m_notifier.setEnabled(true);
  m_timer.start(kLongestRest);
  Await();
}

DeviceWatch::~DeviceWatch() {
  m_notifier.setEnabled(false);
  if (m_list != nullptr) RegCloseKey(m_list);
  if (m_changed != nullptr) CloseHandle(m_changed);
}

/// The system reports one change for each call.
void DeviceWatch::Await() {
  m_watching = RegNotifyChangeKeyValue(m_list, TRUE, REG_NOTIFY_CHANGE_NAME | REG_NOTIFY_CHANGE_LAST_SET,
                                       m_changed, TRUE) == ERROR_SUCCESS;
}

std::optional<std::uint64_t> DeviceWatch::Changes() const {
  return m_watching ? std::optional(m_changes) : std::nullopt;
}

}  // namespace quarn
