#pragma once

#include <sys/types.h>

#include <compare>
#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "serial/file_descriptor.h"
#include "serial/udev_objects_linux.h"

namespace quarn {

/// The files on which a result depends.
struct WatchPlan {
  struct FolderInterest {
    bool anyName = false;         ///< every added or removed entry matters
    std::set<std::string> names;  ///< for these names, changes of owner or permission matter too
  };
  /// Existing folders by their path.
  std::map<std::string, FolderInterest> folders;
  /// Device nodes: opening or closing them matters.
  std::set<std::string> nodes;
};

/// Reports whether serial devices or files have changed, with one system call if nothing has. Sources: udev's
/// events for tty devices, if available, and inotify. A folder that cannot be watched is checked with lstat
/// at each query, and so are the names in it that matter; without inotify also the nodes.
class ChangeWatch {
 public:
  enum class Mode { Events, PollingOnly };
  explicit ChangeWatch(Mode mode = Mode::Events);

  /// Watches the files of this plan instead of the previous ones. Returns true if something is newly watched:
  /// a change of it just before this call was not seen.
  bool Follow(const WatchPlan& plan);

  /// Whether something has changed since the last query.
  bool Changed();

  /// Whether the descriptors report every change. False while something has to be polled.
  [[nodiscard]] bool TellsByItself() const { return m_inotify.IsValid() && m_polled.empty(); }
  /// They become readable when something changes. They stay the same for the life of the watch.
  [[nodiscard]] std::vector<int> Descriptors() const;

 private:
  struct Watched {
    int descriptor = -1;
    std::uint32_t events = 0;
    WatchPlan::FolderInterest interest;
  };
  /// The stat data of a file. The time of the last change is used only for folders, because every byte sent
  /// changes that of a device.
  struct Look {
    int error = 0;
    dev_t device = 0;
    ino_t inode = 0;
    dev_t number = 0;
    mode_t mode = 0;
    std::int64_t seconds = 0;
    std::int64_t nanoseconds = 0;
    auto operator<=>(const Look&) const = default;
  };

  enum class Outcome { Kept, Added, Refused };

  static Look LookAt(const std::string& path);
  Outcome Watch(const std::string& path, std::uint32_t events, const WatchPlan::FolderInterest& interest);
  void DropOthers(const WatchPlan& plan);
  bool DrainDeviceEvents();
  bool DrainFileEvents();
  bool TakeFileEvent(int descriptor, std::uint32_t events, const std::string& name);
  bool PolledChanged();

  UdevContext m_udev;
  UdevMonitor m_monitor;
  FileDescriptor m_inotify;
  std::map<std::string, Watched> m_watched;
  std::map<std::string, Look> m_polled;
};

}  // namespace quarn
