#include <pthread.h>
#include <signal.h>

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <fstream>
#include <optional>
#include <sstream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <thread>

#include "device/instrument.h"
#include "identity.h"

namespace {

constexpr int kWrongUsage = 64;
constexpr char kUsage[] =
    "usage: quarn-device [--link PATH] [--rules FILE]\n"
    "\n"
    "A simulated instrument on a pseudo-terminal. Prints the device node to open, answers\n"
    "commands until it is interrupted, and removes its link at the end.\n"
    "\n"
    "  --link PATH    also reachable under PATH, for instance .../ports/COM7\n"
    "  --rules FILE   answers from FILE, one rule a line:\n"
    "                   \"id\"   -> line \"SIM-1\"         framed as the command was\n"
    "                   \"slow\" -> \"one \" 30 \"two\\r\"    bytes, a pause in ms, bytes\n"
    "                   \"big\"  -> \"x\" * 1500 \"\\r\"     bytes repeated\n"
    "                   \"e\"    -> echo                 also: silence, flood, hangup\n"
    "                   *      -> line \"ERR\"           every other command\n"
    "  --help, --version\n";

struct Options {
  std::optional<std::string> link;
  std::optional<std::string> rules;
};

Options ParseArguments(int argc, char** argv) {
  Options options;
  for (int i = 1; i < argc; ++i) {
    const std::string_view name = argv[i];
    if (name != "--link" && name != "--rules") {
      throw std::invalid_argument("unknown argument: " + std::string(name));
    }
    if (++i == argc) throw std::invalid_argument(std::string(name) + " takes a value");
    (name == "--link" ? options.link : options.rules) = argv[i];
  }
  return options;
}

quarn::device::Rules LoadRules(const std::optional<std::string>& path) {
  if (!path) return quarn::device::BuiltInRules();
  std::ifstream file(*path, std::ios::binary);
  std::ostringstream text;
  if (file.peek() != std::ifstream::traits_type::eof()) text << file.rdbuf();
  if (!file.is_open() || file.bad() || text.bad()) throw std::runtime_error(*path + ": cannot be read");
  try {
    return quarn::device::ParseRules(text.str());
  } catch (const std::runtime_error& error) {
    throw std::runtime_error(*path + ": " + error.what());
  }
}

/// Blocks the signals that end the program in every thread, so that one thread can wait for them.
sigset_t BlockEndingSignals() {
  sigset_t signals;
  sigemptyset(&signals);
  for (const int each : {SIGINT, SIGTERM, SIGHUP}) sigaddset(&signals, each);
  pthread_sigmask(SIG_BLOCK, &signals, nullptr);
  return signals;
}

int Serve(const Options& options) {
  const sigset_t signals = BlockEndingSignals();
  quarn::device::Instrument instrument(LoadRules(options.rules));
  std::optional<quarn::device::NodeLink> link;
  if (options.link) link.emplace(*options.link, instrument.NodePath());
  std::printf("%s\n", instrument.NodePath().c_str());
  std::fflush(stdout);
  std::thread watcher([&] {
    int signal = 0;
    sigwait(&signals, &signal);
    instrument.Stop();
  });
  instrument.Run();
  // A rule may have hung up; wake the watcher then.
  pthread_kill(watcher.native_handle(), SIGHUP);
  watcher.join();
  return EXIT_SUCCESS;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc == 2 && std::string_view(argv[1]) == "--help") {
    std::fputs(kUsage, stdout);
    return EXIT_SUCCESS;
  }
  if (argc == 2 && std::string_view(argv[1]) == "--version") {
    std::printf("quarn-device %s\n", quarn::identity::kShortVersion);
    return EXIT_SUCCESS;
  }
  try {
    return Serve(ParseArguments(argc, argv));
  } catch (const std::invalid_argument& error) {
    std::fprintf(stderr, "quarn-device: %s\n%s", error.what(), kUsage);
    return kWrongUsage;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "quarn-device: %s\n", error.what());
    return EXIT_FAILURE;
  }
}
