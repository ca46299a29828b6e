#include "serial/line_failure_linux.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <utility>
#include <vector>

namespace quarn {
namespace {

TEST(LineFailureLinux, EveryErrorHasItsKind) {
  const std::pair<LineError, std::vector<int>> kinds[] = {
      {LineError::NotFound, {ENOENT, ENXIO, ENODEV, ELOOP, EISDIR, ENOTDIR, ENOTTY}},
      {LineError::NoPermission, {EACCES, EPERM}},
      {LineError::InUse, {EBUSY, EWOULDBLOCK}},
      {LineError::Refused, {EINVAL}},
      {LineError::Disconnected, {EIO, EPIPE, EBADF}},
      {LineError::Cancelled, {ECANCELED}},
      {LineError::Other, {ENOMEM, EMFILE, 0}}};
  for (const auto& [kind, errors] : kinds) {
    for (const int error : errors) EXPECT_EQ(LineErrorFromErrno(error), kind) << error;
  }
}

TEST(LineFailureLinux, TheReasonNamesTheDeviceAndGivesTheSystemsWords) {
  const LineFailure failure = FailureOf(QStringLiteral("/dev/ttyX"), EACCES);
  EXPECT_EQ(failure.kind, LineError::NoPermission);
  EXPECT_EQ(failure.reason, QStringLiteral("/dev/ttyX: ") + SystemText(EACCES));
  EXPECT_EQ(FailureOf(QStringLiteral("/dev/ttyX"), EBADF).reason, QStringLiteral("/dev/ttyX: closed"));
}

}  // namespace
}  // namespace quarn
