#include "serial/udev_objects_linux.h"

#include <libudev.h>

namespace quarn {

void ReleaseUdev::operator()(udev* object) const { udev_unref(object); }
void ReleaseUdev::operator()(udev_device* object) const { udev_device_unref(object); }
void ReleaseUdev::operator()(udev_enumerate* object) const { udev_enumerate_unref(object); }
void ReleaseUdev::operator()(udev_monitor* object) const { udev_monitor_unref(object); }

}  // namespace quarn
