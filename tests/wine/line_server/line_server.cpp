// Gives programs that run under Wine COM ports with simulated instruments behind them. A program under Wine
// can neither make a pseudo-terminal nor use a pipe to a Linux process. It can use files:
//
//   FOLDER/port-com3.rules     written by the user of an instrument as COM3; removed to unplug it
//   FOLDER/port-com3.ready     written here when COM3 can be opened; if it cannot, with the reason
//   FOLDER/port-com3.received  written here: every byte that has come over the wire
//   FOLDER/port-com3.answers   written here: how many answers have been sent to their last byte
//
// (To Windows, com3.rules would be the port and no file.) Each file appears whole, by a rename. Empty rules
// are an instrument that never answers; "built-in" stands for the instrument's own rules.

#include <signal.h>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <fstream>
#include <map>
#include <memory>
#include <sstream>
#include <string>
#include <string_view>
#include <thread>

#include "device/instrument.h"

namespace {

namespace fs = std::filesystem;
using quarn::device::Instrument;

constexpr auto kPoll = std::chrono::milliseconds(2);
constexpr std::string_view kPrefix = "port-";

std::string Contents(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  std::ostringstream text;
  if (file.peek() != std::ifstream::traits_type::eof()) text << file.rdbuf();
  return text.str();
}

void Write(const fs::path& path, const std::string& text) {
  const fs::path beside = path.string() + ".new";
  std::ofstream(beside, std::ios::binary) << text;
  fs::rename(beside, path);
}

quarn::device::Rules RulesOf(const std::string& text) {
  return text == "built-in" ? quarn::device::BuiltInRules() : quarn::device::ParseRules(text);
}

/// One port with its instrument, served by a thread of its own.
class Port {
 public:
  Port(const fs::path& base, const fs::path& link)
      : m_base(base),
        m_instrument(RulesOf(Contents(File("rules")))),
        m_link(link.string(), m_instrument.NodePath()) {
    m_instrument.KeepRecord();
    m_instrument.OnAnswered([this] { ++m_answers; });
    m_thread = std::thread([this] { m_instrument.Run(); });
    Report();
    Write(File("ready"), {});
  }
  ~Port() {
    m_instrument.Stop();
    m_thread.join();
    for (const char* each : {"received", "answers", "ready"}) fs::remove(File(each));
  }
  Port(const Port&) = delete;
  Port& operator=(const Port&) = delete;

  /// Writes the files that have changed since the last call.
  void Report() {
    // The bytes first: when an answer is counted, its command must be in the file.
    const int answers = m_answers;
    const std::string received = m_instrument.Received();
    if (received.size() != m_reportedBytes) Write(File("received"), received);
    if (answers != m_reportedAnswers) Write(File("answers"), std::to_string(answers));
    m_reportedBytes = received.size();
    m_reportedAnswers = answers;
  }

 private:
  [[nodiscard]] fs::path File(const char* kind) const { return m_base.string() + "." + kind; }

  const fs::path m_base;
  Instrument m_instrument;
  quarn::device::NodeLink m_link;
  std::atomic<int> m_answers = 0;
  int m_reportedAnswers = -1;
  std::size_t m_reportedBytes = std::string::npos;
  std::thread m_thread;
};

class Server {
 public:
  Server(fs::path folder, fs::path links) : m_folder(std::move(folder)), m_links(std::move(links)) {}

  void Look() {
    std::erase_if(m_ports, [this](const auto& entry) {
      const std::string base = Base(entry.first).string();
      const bool wanted = fs::exists(base + ".rules");
      if (!wanted && !entry.second) fs::remove(base + ".ready");
      return !wanted;
    });
    for (const fs::directory_entry& entry : fs::directory_iterator(m_folder)) {
      const std::string stem = entry.path().stem().string();
      if (entry.path().extension() != ".rules" || !stem.starts_with(kPrefix)) continue;
      const std::string name = stem.substr(kPrefix.size());
      if (!m_ports.contains(name)) Open(name);
    }
    for (const auto& [name, port] : m_ports) {
      if (port) port->Report();
    }
  }

 private:
  [[nodiscard]] fs::path Base(const std::string& name) const {
    return m_folder / (std::string(kPrefix) + name);
  }
  void Open(const std::string& name) {
    try {
      fs::remove(m_links / name);
      m_ports[name] = std::make_unique<Port>(Base(name), m_links / name);
    } catch (const std::exception& error) {
      m_ports[name] = nullptr;
      Write(Base(name).string() + ".ready", error.what());
    }
  }

  const fs::path m_folder;
  const fs::path m_links;
  std::map<std::string, std::unique_ptr<Port>> m_ports;
};

volatile sig_atomic_t g_end = 0;

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) {
    std::fputs("usage: quarn-line-server FOLDER DOSDEVICES\n", stderr);
    return EXIT_FAILURE;
  }
  for (const int each : {SIGINT, SIGTERM, SIGHUP}) signal(each, [](int) { g_end = 1; });
  try {
    Server server(argv[1], argv[2]);
    while (g_end == 0) {
      server.Look();
      std::this_thread::sleep_for(kPoll);
    }
  } catch (const std::exception& error) {
    std::fprintf(stderr, "quarn-line-server: %s\n", error.what());
    return EXIT_FAILURE;
  }
  return EXIT_SUCCESS;
}
