#pragma once

#include <QSocketNotifier>
#include <QString>
#include <QStringList>
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

/// The ports of a Linux system: the links COM1 to COM99 of the ports folder behind which a terminal
/// device stands, in number order. New devices get a number on the way.
///
/// The result of a listing is kept and handed out again until something has changed. So is a failure for
/// which the ports folder is to blame; a warning says once what is wrong with it.
class LinuxPortSource final : public PortSource {
 public:
  /// `portsFolder` need not exist. The rest is for tests.
  explicit LinuxPortSource(const QString& portsFolder, SystemRoots roots = {},
                           ChangeWatch::Mode mode = ChangeWatch::Mode::Events);

  bool FriendlyNames(QStringList& names) override;
  /// From the first call on the thread's event loop wakes when something may have changed.
  std::optional<std::uint64_t> Revision() override;

  /// Makes the next call list afresh.
  void Forget() { m_last = Listing::None; }
  /// How often the ports have been listed afresh.
  [[nodiscard]] std::uint64_t ListingCount() const { return m_listings; }

 private:
  enum class Listing {
    None,      ///< out of date, or the devices could not be listed: worth another attempt at once
    Good,      ///< m_names holds the result
    NoFolder,  ///< the ports folder cannot be read
  };

  Listing List(WatchPlan& plan);
  void Notify();
  void Tell(const std::error_code& problem);
  void StampLinks(const std::vector<PortLink>& links);
  [[nodiscard]] QStringList NamesOf(const std::vector<PortLink>& links,
                                    const std::vector<SerialDevice>& devices) const;
  void PlanWatch(const std::vector<PortLink>& links, const std::vector<FolderEntry>& restsOn,
                 WatchPlan& plan) const;

  std::string m_folderPath;
  SystemRoots m_roots;
  PortFolder m_folder;
  ChangeWatch m_watch;
  QStringList m_names;
  std::vector<int> m_presentBefore;
  Listing m_last = Listing::None;
  std::error_code m_told;  ///< what is wrong with the folder, as told last
  std::uint64_t m_listings = 0;
  std::uint64_t m_stirs = 0;  ///< how often the watch had something to say
  bool m_stirred = false;     ///< it has, and was not asked since
  std::vector<std::unique_ptr<QSocketNotifier>> m_notifiers;
};

/// The device node behind a port name, or the empty text when no terminal device is there, or another one
/// than the port stands for. A name that is not a plain file name (empty, ".", "..", with a "/" or a NUL)
/// never leads anywhere.
QString ResolvePort(const QString& portsFolder, const QString& name, const SystemRoots& roots = {});

}  // namespace quarn
