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

/// On which files a result rests.
struct WatchPlan {
  struct FolderInterest {
    bool anyName = false;         ///< every entry that comes or goes matters
    std::set<std::string> names;  ///< of these, a change of owner or permission too
  };
  /// Existing folders by their path.
  std::map<std::string, FolderInterest> folders;
  /// Device nodes: somebody's opening or closing them matters.
  std::set<std::string> nodes;
};

/// Tells whether anything has changed among serial devices and files, with one system call when nothing
/// has. Sources: udev's events for tty devices where there are any, and inotify. A folder that cannot
/// be watched is looked at with lstat at each question, and so are the names in it that matter; without
/// inotify the nodes are, too.
class ChangeWatch {
 public:
  enum class Mode { Events, PollingOnly };
  explicit ChangeWatch(Mode mode = Mode::Events);

  /// Watches what the plan names in place of what was watched before. True when something is watched that
  /// was not: a change of it just before now has gone unseen.
  bool Follow(const WatchPlan& plan);

  /// Whether something has changed since the last question.
  bool Changed();

  /// Whether the descriptors tell of every change; false while some of what is watched has to be looked at.
  [[nodiscard]] bool TellsByItself() const { return m_inotify.IsValid() && m_polled.empty(); }
  /// They become readable when something changes, and stay the same for the life of the watch.
  [[nodiscard]] std::vector<int> Descriptors() const;

 private:
  struct Watched {
    int descriptor = -1;
    std::uint32_t events = 0;
    WatchPlan::FolderInterest interest;
  };
  /// What stat sees of a file; the time of last change for folders only, as every byte sent touches
  /// that of a device.
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
