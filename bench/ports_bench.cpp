#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <stdlib.h>
#include <unistd.h>

#include <QTemporaryDir>
#include <stdexcept>
#include <string>
#include <vector>

#include "serial/file_descriptor.h"
#include "serial/port_connection.h"
#include "serial/port_list.h"
#include "serial/port_source_linux.h"

namespace quarn {
namespace {

/// A ports folder with the links COM1 to COM99, each to a pseudo-terminal of its own.
class FullFolder {
 public:
  FullFolder() {
    for (int number = 1; number <= 99; ++number) {
      FileDescriptor farEnd(::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC));
      char node[64] = {};
      const std::string link = m_folder.path().toStdString() + "/COM" + std::to_string(number);
      if (::grantpt(farEnd.Get()) != 0 || ::unlockpt(farEnd.Get()) != 0 ||
          ::ptsname_r(farEnd.Get(), node, sizeof node) != 0 || ::symlink(node, link.c_str()) != 0) {
        throw std::runtime_error("no pseudo-terminal");
      }
      m_farEnds.push_back(std::move(farEnd));
    }
  }
  [[nodiscard]] QString Path() const { return m_folder.path(); }

 private:
  QTemporaryDir m_folder;
  std::vector<FileDescriptor> m_farEnds;
};

/// Lists twice, as what is pinned by the first listing is a change for the second.
bool Settle(LinuxPortSource& source, PortConnection& connection) {
  return RefreshPortList(source, connection) && RefreshPortList(source, connection) &&
         connection.portNames.size() == 99;
}

/// All 99 numbers listed afresh: limit 5 ms.
void ListAfresh(benchmark::State& state) {
  const FullFolder folder;
  LinuxPortSource source(folder.Path());
  PortConnection connection;
  if (!Settle(source, connection)) {
    state.SkipWithError("the ports were not listed");
  }
  for (auto step : state) {
    source.Forget();
    benchmark::DoNotOptimize(RefreshPortList(source, connection));
  }
}
BENCHMARK(ListAfresh)->Unit(benchmark::kMillisecond);

/// The question of every tenth of a second when nothing has changed: limit 50 us.
void IdleTick(benchmark::State& state) {
  const FullFolder folder;
  LinuxPortSource source(folder.Path());
  PortConnection connection;
  if (!Settle(source, connection)) {
    state.SkipWithError("the ports were not listed");
  }
  for (auto step : state) {
    benchmark::DoNotOptimize(RefreshPortList(source, connection));
  }
}
BENCHMARK(IdleTick)->Unit(benchmark::kMicrosecond);

/// The same without the names. It is all that the port monitor needs each time.
void IdleCount(benchmark::State& state) {
  const FullFolder folder;
  LinuxPortSource source(folder.Path());
  PortConnection connection;
  if (!Settle(source, connection)) {
    state.SkipWithError("the ports were not listed");
  }
  for (auto step : state) {
    benchmark::DoNotOptimize(source.Ports());
  }
}
BENCHMARK(IdleCount)->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace quarn
