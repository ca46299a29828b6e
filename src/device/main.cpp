#include <fcntl.h>
#include <pthread.h>
#include <signal.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <fstream>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <system_error>
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
    "  --link PATH    create the link PATH to the device, for example .../ports/COM7\n"
    "  --rules FILE   read the answers from FILE, one rule per line:\n"
    "                   \"id\"   -> line \"SIM-1\"         framed like the command\n"
    "                   \"slow\" -> \"one \" 30 \"two\\r\"    bytes, a pause in ms, bytes\n"
    "                   \"big\"  -> \"x\" * 1500 \"\\r\"     repeated bytes\n"
    "                   \"e\"    -> echo                 also: silence, flood, hangup\n"
    "                   *      -> line \"ERR\"           all other commands\n"
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
  constexpr std::size_t kMostBytes = 1 << 20;  // /dev/zero would fill the memory
  std::ifstream file(*path, std::ios::binary);
  std::string text(kMostBytes + 1, '\0');
  file.read(text.data(), static_cast<std::streamsize>(text.size()));
  if (!file.is_open() || file.bad()) throw std::runtime_error(*path + ": cannot be read");
  text.resize(static_cast<std::size_t>(file.gcount()));
  if (text.size() > kMostBytes) throw std::runtime_error(*path + ": more than 1 MiB");
  try {
    return quarn::device::ParseRules(text);
  } catch (const std::runtime_error& error) {
    throw std::runtime_error(*path + ": " + error.what());
  }
}

/// Ends the wait for the others.
constexpr int kWakeUp = SIGUSR1;

/// Blocks the signals that end the program in every thread, so that one thread can wait for them. Those that
/// are ignored, as nohup has it, stay so.
sigset_t BlockEndingSignals() {
  sigset_t signals;
  sigemptyset(&signals);
  sigaddset(&signals, kWakeUp);
  for (const int each : {SIGINT, SIGTERM, SIGHUP}) {
    struct sigaction present {};
    if (sigaction(each, nullptr, &present) != 0 || present.sa_handler != SIG_IGN) sigaddset(&signals, each);
  }
  pthread_sigmask(SIG_BLOCK, &signals, nullptr);
  return signals;
}

/// Text from an argument or a file must not control the terminal.
std::string SpelledOut(std::string_view text) {
  std::string spelled;
  for (const char each : text) {
    const unsigned byte = static_cast<unsigned char>(each);
    constexpr unsigned kFirstPrintable = 0x20;
    constexpr unsigned kLastPrintable = 0x7E;
    if (byte >= kFirstPrintable && byte <= kLastPrintable) {
      spelled += each;
    } else {
      std::array<char, sizeof "<0xff>"> number{};
      std::snprintf(number.data(), number.size(), "<0x%02x>", byte);
      spelled += number.data();
    }
  }
  return spelled;
}

/// On standard output, at once. Throws std::system_error.
void Print(const std::string& text) {
  if (std::fputs(text.c_str(), stdout) < 0 || std::fflush(stdout) != 0) {
    throw std::system_error(errno, std::generic_category(), "standard output");
  }
}

/// A standard stream that was closed before the start must not become the line's descriptor.
void OccupyStandardStreams() {
  for (const int stream : std::array{STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    if (fcntl(stream, F_GETFD) < 0) {
      (void)::open("/dev/null", (stream == STDIN_FILENO ? O_WRONLY : O_RDONLY) | O_CLOEXEC);
    }
  }
}

int Serve(const Options& options) {
  // First, because a pipe may keep it waiting.
  const quarn::device::Rules rules = LoadRules(options.rules);
  const sigset_t signals = BlockEndingSignals();
  quarn::device::Instrument instrument(rules);
  std::optional<quarn::device::NodeLink> link;
  if (options.link) link.emplace(*options.link, instrument.NodePath());
  Print(instrument.NodePath() + '\n');
  std::thread watcher([&] {
    int signal = 0;
    sigwait(&signals, &signal);
    instrument.Stop();
  });
  instrument.Run();
  // A rule may have hung up; wake the watcher then.
  pthread_kill(watcher.native_handle(), kWakeUp);
  watcher.join();
  return EXIT_SUCCESS;
}

}  // namespace

int main(int argc, char** argv) {
  OccupyStandardStreams();
  const std::string_view only = argc == 2 ? argv[1] : "";
  try {
    if (only == "--help") {
      Print(kUsage);
    } else if (only == "--version") {
      Print(std::string("quarn-device ") + quarn::identity::kShortVersion + '\n');
    } else {
      return Serve(ParseArguments(argc, argv));
    }
    return EXIT_SUCCESS;
  } catch (const std::invalid_argument& error) {
    std::fprintf(stderr, "quarn-device: %s\n%s", SpelledOut(error.what()).c_str(), kUsage);
    return kWrongUsage;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "quarn-device: %s\n", SpelledOut(error.what()).c_str());
    return EXIT_FAILURE;
  }
}
