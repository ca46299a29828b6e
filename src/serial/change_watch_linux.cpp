#include "serial/change_watch_linux.h"

#include <libudev.h>
#include <poll.h>
#include <sys/inotify.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <iterator>
#include <utility>

namespace quarn {

namespace {

constexpr std::uint32_t kComingAndGoing =
    IN_CREATE | IN_DELETE | IN_MOVED_FROM | IN_MOVED_TO | IN_DELETE_SELF | IN_MOVE_SELF | IN_ONLYDIR;
constexpr std::uint32_t kUse = IN_OPEN | IN_CLOSE_WRITE | IN_CLOSE_NOWRITE;

}  // namespace

ChangeWatch::ChangeWatch(Mode mode) {
  if (mode == Mode::PollingOnly) {
    return;
  }
  m_inotify = FileDescriptor(::inotify_init1(IN_NONBLOCK | IN_CLOEXEC));
  m_udev.reset(udev_new());
  if (!m_udev) {
    return;
  }
  m_monitor.reset(udev_monitor_new_from_netlink(m_udev.get(), "udev"));
  if (m_monitor && (udev_monitor_filter_add_match_subsystem_devtype(m_monitor.get(), "tty", nullptr) < 0 ||
                    udev_monitor_enable_receiving(m_monitor.get()) < 0)) {
    m_monitor.reset();
  }
}

bool ChangeWatch::Follow(const WatchPlan& plan) {
  DropOthers(plan);
  bool added = false;
  std::map<std::string, Look> polled;
  const auto poll = [&](const std::string& path) {
    const auto known = m_polled.find(path);
    added = added || known == m_polled.end();
    polled.emplace(path, known != m_polled.end() ? known->second : LookAt(path));
  };
  for (const auto& [path, interest] : plan.folders) {
    const std::uint32_t attributes = interest.names.empty() ? 0 : IN_ATTRIB;
    const Outcome outcome = Watch(path, kComingAndGoing | attributes, interest);
    added = added || outcome == Outcome::Added;
    if (outcome == Outcome::Refused) {
      poll(path);
      // The time stamp of the folder /dev/pts never changes.
      for (const std::string& name : interest.names) {
        poll(path + '/' + name);
      }
    }
  }
  for (const std::string& node : plan.nodes) {
    // Programs that opened a node before it was watched affect only the text; no need to list again.
    if (Watch(node, kUse, {}) == Outcome::Refused && !m_inotify.IsValid()) {
      poll(node);
    }
  }
  m_polled = std::move(polled);
  return added;
}

ChangeWatch::Outcome ChangeWatch::Watch(const std::string& path, std::uint32_t events,
                                        const WatchPlan::FolderInterest& interest) {
  const auto known = m_watched.find(path);
  if (known != m_watched.end() && known->second.events == events) {
    known->second.interest = interest;
    return Outcome::Kept;
  }
  const int descriptor =
      m_inotify.IsValid() ? ::inotify_add_watch(m_inotify.Get(), path.c_str(), events) : -1;
  if (descriptor < 0) {
    return Outcome::Refused;
  }
  m_watched[path] = {descriptor, events, interest};
  return Outcome::Added;
}

void ChangeWatch::DropOthers(const WatchPlan& plan) {
  for (auto it = m_watched.begin(); it != m_watched.end();) {
    if (plan.folders.find(it->first) != plan.folders.end() ||
        plan.nodes.find(it->first) != plan.nodes.end()) {
      ++it;
      continue;
    }
    ::inotify_rm_watch(m_inotify.Get(), it->second.descriptor);
    it = m_watched.erase(it);
  }
}

bool ChangeWatch::Changed() {
  std::array<pollfd, 2> sources{
      {{m_inotify.Get(), POLLIN, 0}, {m_monitor ? udev_monitor_get_fd(m_monitor.get()) : -1, POLLIN, 0}}};
  bool changed = false;
  if (::poll(sources.data(), sources.size(), 0) > 0) {
    changed = sources[0].revents != 0 && DrainFileEvents();
    changed = (sources[1].revents != 0 && DrainDeviceEvents()) || changed;
  }
  return PolledChanged() || changed;
}

std::vector<int> ChangeWatch::Descriptors() const {
  std::vector<int> descriptors{m_inotify.Get()};
  if (m_monitor) descriptors.push_back(udev_monitor_get_fd(m_monitor.get()));
  return descriptors;
}

bool ChangeWatch::DrainDeviceEvents() {
  // Bounded, because a broken socket must not block the caller.
  constexpr int kMostAtOnce = 1000;
  for (int i = 0; i < kMostAtOnce; ++i) {
    if (!UdevDevice(udev_monitor_receive_device(m_monitor.get()))) {
      break;
    }
  }
  // Also without a device: if events were lost, no device is returned.
  return true;
}

bool ChangeWatch::DrainFileEvents() {
  alignas(inotify_event) std::array<char, 16384> buffer{};
  bool changed = false;
  for (;;) {
    const ssize_t length = ::read(m_inotify.Get(), buffer.data(), buffer.size());
    if (length <= 0) {
      return changed || (length < 0 && errno != EAGAIN && errno != EINTR);
    }
    std::size_t at = 0;
    while (at < static_cast<std::size_t>(length)) {
      inotify_event event{};
      std::memcpy(&event, buffer.data() + at, sizeof event);
      const char* name = buffer.data() + at + sizeof event;
      changed = TakeFileEvent(event.wd, event.mask, event.len > 0 ? name : "") || changed;
      at += sizeof event + event.len;
    }
  }
}

bool ChangeWatch::TakeFileEvent(int descriptor, std::uint32_t events, const std::string& name) {
  if ((events & IN_Q_OVERFLOW) != 0) {
    return true;
  }
  bool matters = false;
  for (auto it = m_watched.begin(); it != m_watched.end();) {
    if (it->second.descriptor != descriptor) {
      ++it;
      continue;
    }
    const WatchPlan::FolderInterest& interest = it->second.interest;
    const bool named = interest.names.find(name) != interest.names.end();
    const bool onlyAttributes = (events & IN_ATTRIB) != 0;
    // Without a name the event is about the watched folder or node itself.
    matters = matters || named || (name.empty() && !onlyAttributes) || (interest.anyName && !onlyAttributes);
    if ((events & IN_MOVE_SELF) != 0) {
      ::inotify_rm_watch(m_inotify.Get(), descriptor);
    }
    it = (events & (IN_IGNORED | IN_MOVE_SELF)) != 0 ? m_watched.erase(it) : std::next(it);
  }
  return matters;
}

bool ChangeWatch::PolledChanged() {
  bool changed = false;
  for (auto& [path, last] : m_polled) {
    const Look now = LookAt(path);
    changed = changed || now != last;
    last = now;
  }
  return changed;
}

ChangeWatch::Look ChangeWatch::LookAt(const std::string& path) {
  struct stat status {};
  Look look;
  if (::lstat(path.c_str(), &status) != 0) {
    look.error = errno;
    return look;
  }
  look.device = status.st_dev;
  look.inode = status.st_ino;
  look.number = status.st_rdev;
  look.mode = status.st_mode;
  if (S_ISDIR(status.st_mode)) {
    look.seconds = status.st_mtim.tv_sec;
    look.nanoseconds = status.st_mtim.tv_nsec;
  }
  return look;
}

}  // namespace quarn
