#pragma once

#include <QSocketNotifier>
#include <QString>
#include <cstdint>
#include <memory>
#include <optional>
#include <system_error>
#include <vector>

#include "serial/change_watch_linux.h"
#include "serial/device_list_linux.h"
#include "serial/port_folder_linux.h"
#include "serial/port_source.h"

namespace quarn {

/// The ports of a Linux system, in number order: the links COM1 to COM99 of the ports folder that lead to a
/// terminal device. A listing gives numbers to new devices.
///
/// The result is cached until something changes, and so is a failure caused by the ports folder; one warning
/// says what is wrong with the folder.
class LinuxPortSource final : public PortSource {
 public:
  /// `portsFolder` need not exist. The other parameters are for tests.
  explicit LinuxPortSource(const QString& portsFolder, SystemRoots roots = {},
                           ChangeWatch::Mode mode = ChangeWatch::Mode::Events);

  std::optional<QList<Port>> Ports() override;
  /// After the first call, the thread's event loop wakes when something may have changed.
  std::optional<std::uint64_t> Revision() override;

  /// Makes the next call list the ports again.
  void Forget() { m_last = Listing::None; }
  /// How often the ports have been listed without the cache.
  [[nodiscard]] std::uint64_t ListingCount() const { return m_listings; }

 private:
  enum class Listing {
    None,      ///< out of date, or the devices could not be listed: try again at once
    Good,      ///< m_ports holds the result
    NoFolder,  ///< the ports folder cannot be read
  };

  Listing List(WatchPlan& plan);
  void Notify();
  void Tell(const std::error_code& problem);
  void StampLinks(const std::vector<PortLink>& links);
  [[nodiscard]] QList<Port> PortsOf(const std::vector<PortLink>& links,
                                    const std::vector<SerialDevice>& devices) const;
  void PlanWatch(const std::vector<PortLink>& links, const std::vector<FolderEntry>& dependencies,
                 WatchPlan& plan) const;

  std::string m_folderPath;
  SystemRoots m_roots;
  PortFolder m_folder;
  ChangeWatch m_watch;
  QList<Port> m_ports;
  std::vector<int> m_presentBefore;
  Listing m_last = Listing::None;
  std::error_code m_told;  ///< the last reported problem of the folder
  std::uint64_t m_listings = 0;
  std::uint64_t m_stirs = 0;     ///< how often the watch has reported a change
  bool m_changePending = false;  ///< it has, since the last query
  bool m_awaitsNames = false;    ///< a device is listed later, whether anything changes or not
  std::vector<std::unique_ptr<QSocketNotifier>> m_notifiers;
};

/// The device node of a port name. Empty if there is no terminal device, or a different one than the port
/// stands for. A name that is not a plain file name (empty, ".", "..", with a "/" or a NUL) gives an empty
/// text.
QString ResolvePort(const QString& portsFolder, const QString& name, const SystemRoots& roots = {});

}  // namespace quarn
