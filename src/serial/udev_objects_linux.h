#pragma once

#include <memory>

struct udev;
struct udev_device;
struct udev_enumerate;
struct udev_monitor;

namespace quarn {

struct ReleaseUdev {
  void operator()(udev* object) const;
  void operator()(udev_device* object) const;
  void operator()(udev_enumerate* object) const;
  void operator()(udev_monitor* object) const;
};

using UdevContext = std::unique_ptr<udev, ReleaseUdev>;
using UdevDevice = std::unique_ptr<udev_device, ReleaseUdev>;
using UdevEnumerate = std::unique_ptr<udev_enumerate, ReleaseUdev>;
using UdevMonitor = std::unique_ptr<udev_monitor, ReleaseUdev>;

}  // namespace quarn
