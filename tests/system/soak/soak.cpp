// A long run of the real transaction engine over pseudo-terminals. The instrument sometimes answers late, in
// two bursts, not at all, or hangs up. Another process uses as much processor time as it can.
//
//   quarn-soak TRANSACTIONS [SEED]
//
// Every line of the log must belong to the command above it. Each command has its own number, and its
// response has the same one, so that a mix-up is noticed. Memory and descriptors must not grow. Ends with 0
// and prints the counts, or prints what went wrong and ends with 1.

#include <poll.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <QCoreApplication>
#include <QTemporaryDir>
#include <array>
#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <optional>
#include <random>
#include <string>
#include <thread>

#include "device/pseudo_terminal.h"
#include "serial/open_port.h"
#include "serial/platform_serial.h"
#include "support/counted_indicator.h"
#include "support/recorded_messages.h"
#include "support/transaction_hosts.h"
#include "terminal/execute_command.h"

namespace quarn {
namespace {

using device::PseudoTerminal;
using std::chrono::milliseconds;
using Clock = std::chrono::steady_clock;

constexpr char kPort[] = "COM7";
constexpr char kTimeoutLine[] = "Error: Response Timeout Error\r\r";
/// After the response time-out and the wait for a worker that still reads.
constexpr milliseconds kLate{1300};
constexpr milliseconds kBetweenBursts{3};
/// The silence that ends a response lasts 12 ms at this speed.
constexpr milliseconds kSurelyTogether{10};
/// If the instrument needs this long for an answer, the computer is too busy for this test.
constexpr milliseconds kHeldUp{300};
/// From this transaction on memory must not grow: everything has been used once.
constexpr int kWarmUp = 200;
constexpr long kGrowthAllowedKib = 2048;

enum class Fate { Answer, Late, TwoBursts, Missing, HangUp };
constexpr std::array kFateNames{"answered", "late", "in two bursts", "missing", "hung up"};

/// What happens to each command; the same for the same seed.
Fate FateOf(std::uint32_t seed, int number) {
  std::seed_seq sequence{seed, static_cast<std::uint32_t>(number)};
  std::mt19937 random(sequence);
  const auto perMille = std::uniform_int_distribution<int>(0, 999)(random);
  if (perMille < 1) return Fate::HangUp;
  if (perMille < 11) return Fate::Late;
  if (perMille < 21) return Fate::TwoBursts;
  if (perMille < 31) return Fate::Missing;
  return Fate::Answer;
}

std::string CommandOf(int number) { return "get " + std::to_string(number); }
std::string AnswerOf(int number) {
  return "value of " + std::to_string(number) + " is " + std::to_string(number * 7);
}

std::string FirstBurst(const std::string& answer) { return answer.substr(0, answer.size() / 2); }

/// The far end. It serves the commands one after the other, and makes a new line after it has hung up.
class SoakInstrument {
 public:
  SoakInstrument(const std::string& folder, std::uint32_t seed) : m_link(folder + "/" + kPort), m_seed(seed) {
    Lay();
    m_thread = std::thread([this] { Run(); });
  }
  ~SoakInstrument() {
    m_stop = true;
    m_thread.join();
  }
  SoakInstrument(const SoakInstrument&) = delete;
  SoakInstrument& operator=(const SoakInstrument&) = delete;

  /// The number of commands that it has finished with, in any way.
  [[nodiscard]] int Served() const { return m_served; }
  /// The first command that was not the one after the one before.
  [[nodiscard]] bool SawAllInOrder() const { return m_inOrder; }
  /// Whether this process was delayed between the last two bursts, so that they may be two responses.
  [[nodiscard]] bool BurstsCameApart() const { return m_burstsApart; }
  /// Whether this process was delayed before its last answer to the command sent at `start`.
  [[nodiscard]] bool WasHeldUp(Clock::time_point start) const { return m_sent.load() - start > kHeldUp; }

 private:
  void Lay() {
    m_line = std::make_unique<PseudoTerminal>();
    const std::string beside = m_link + ".new";
    std::filesystem::create_symlink(m_line->NodePath(), beside);
    std::filesystem::rename(beside, m_link);
  }

  void Run() {
    std::string received;
    while (!m_stop) {
      pollfd far{.fd = m_line->Descriptor(), .events = POLLIN, .revents = 0};
      if (::poll(&far, 1, 20) <= 0) continue;
      std::array<char, 256> bytes{};
      const ssize_t count = ::read(m_line->Descriptor(), bytes.data(), bytes.size());
      if (count > 0) received.append(bytes.data(), static_cast<std::size_t>(count));
      for (std::size_t end = received.find('\r'); end != std::string::npos; end = received.find('\r')) {
        const std::string command = received.substr(0, end);
        received.erase(0, end + 1);
        Serve(command);
      }
    }
  }

  void Serve(const std::string& command) {
    const int number = m_served + 1;
    if (command != CommandOf(number)) m_inOrder = false;
    const std::string answer = AnswerOf(number) + '\r';
    switch (FateOf(m_seed, number)) {
      case Fate::Answer:
        Send(answer);
        m_sent = Clock::now();
        break;
      case Fate::Late:
        std::this_thread::sleep_for(kLate);
        Send(answer);
        break;
      case Fate::TwoBursts:
        SendInTwoBursts(answer);
        break;
      case Fate::Missing:
        break;
      case Fate::HangUp:
        m_line->HangUp();
        Lay();
        break;
    }
    m_served = number;
  }

  void SendInTwoBursts(const std::string& answer) {
    const auto start = std::chrono::steady_clock::now();
    const std::string first = FirstBurst(answer);
    Send(first);
    std::this_thread::sleep_for(kBetweenBursts);
    Send(answer.substr(first.size()));
    m_burstsApart = std::chrono::steady_clock::now() - start > kSurelyTogether;
  }

  void Send(const std::string& bytes) {
    if (::write(m_line->Descriptor(), bytes.data(), bytes.size()) != static_cast<ssize_t>(bytes.size())) {
      std::perror("the instrument cannot answer");
      std::exit(EXIT_FAILURE);
    }
  }

  const std::string m_link;
  const std::uint32_t m_seed;
  std::unique_ptr<PseudoTerminal> m_line;
  std::atomic<bool> m_stop = false;
  std::atomic<bool> m_inOrder = true;
  std::atomic<bool> m_burstsApart = false;
  std::atomic<Clock::time_point> m_sent;
  std::atomic<int> m_served = 0;
  std::thread m_thread;
};

/// A process that never waits; it ends with this one.
class Load {
 public:
  Load() : m_process(::fork()) {
    if (m_process == 0) {
      ::prctl(PR_SET_PDEATHSIG, SIGKILL);
      for (volatile unsigned spin = 0;;) spin = spin + 1;
    }
  }
  ~Load() {
    ::kill(m_process, SIGKILL);
    ::waitpid(m_process, nullptr, 0);
  }
  Load(const Load&) = delete;
  Load& operator=(const Load&) = delete;

 private:
  const pid_t m_process;
};

long DescriptorCount() {
  const std::filesystem::directory_iterator folder("/proc/self/fd");
  return static_cast<long>(std::distance(begin(folder), end(folder)));
}

long ResidentKib() {
  std::ifstream file("/proc/self/statm");
  long all = 0;
  long resident = 0;
  file >> all >> resident;
  return resident * ::sysconf(_SC_PAGESIZE) / 1024;
}

class Soak {
 public:
  Soak(int transactions, std::uint32_t seed)
      : m_transactions(transactions), m_seed(seed), m_instrument(m_folder.path().toStdString(), seed) {
    m_settings.comPort = QString::fromLatin1(kPort);
    m_settings.comBps = QStringLiteral("115200");
    m_settings.comBits = QStringLiteral("8");
    m_settings.comParity = QStringLiteral("None");
    m_settings.comStop = QStringLiteral("1");
    m_settings.comBuf = QStringLiteral("6K");
    m_settings.portSpeed = QStringLiteral("HIGH");
    m_settings.delimiter = QStringLiteral("CR");
    m_settings.rTimeout = QStringLiteral("ON");
  }

  bool Run() {
    if (!Open()) return false;
    long descriptors = 0;
    long memory = 0;
    for (m_number = 1; m_number <= m_transactions; ++m_number) {
      if (!RunOne()) return false;
      if (m_number == kWarmUp) {
        descriptors = DescriptorCount();
        memory = ResidentKib();
      }
    }
    if (!m_instrument.SawAllInOrder()) return Complain("the instrument did not get every command once");
    for (std::size_t i = 0; i < m_counts.size(); ++i)
      std::printf("%-14s%d\n", kFateNames.at(i), m_counts.at(i));
    std::printf("parted        %d of the two bursts, by a hold-up of the instrument\n", m_parted);
    std::printf("too late      %d answers, by a hold-up of the instrument\n", m_heldUp);
    if (m_transactions <= kWarmUp) return true;
    const long grown = ResidentKib() - memory;
    std::printf("descriptors   %ld, then %ld\nmemory        %ld KiB, then %+ld\n", descriptors,
                DescriptorCount(), memory, grown);
    if (DescriptorCount() != descriptors) return Complain("descriptors were left open");
    return grown <= kGrowthAllowedKib || Complain("memory has grown");
  }

 private:
  bool Complain(const std::string& what) const {
    std::fprintf(stderr, "command %d (%s): %s\n", m_number,
                 kFateNames.at(static_cast<std::size_t>(FateOf(m_seed, m_number))), what.c_str());
    for (int i = m_firstLine; i < m_log.LineCount(); ++i) {
      std::fprintf(stderr, "  %s\n", m_log.Line(i).chopped(1).constData());
    }
    return false;
  }

  bool Open() {
    if (OpenPort(m_settings, m_connection, {*m_opener, m_messages, m_indicator})) return true;
    return Complain(m_connection.lastFailure.reason.toStdString());
  }

  bool RunOne() {
    if (m_log.LineCount() > LogLineCapacity - 10) m_log.ResetLog();
    m_firstLine = m_log.LineCount();
    const Fate fate = FateOf(m_seed, m_number);
    m_start = Clock::now();
    const TransactionResult result = ExecuteCommand({m_engine, m_settings, m_log, m_commandLine}, m_host,
                                                    QString::fromStdString(CommandOf(m_number)))
                                         .result;
    ++m_counts.at(static_cast<std::size_t>(fate));
    // After a time-out, waits until the instrument is done before the next command.
    while (m_instrument.Served() < m_number) std::this_thread::sleep_for(milliseconds(1));
    if (!IsAsItShould(fate, result)) return Complain("result " + std::to_string(static_cast<int>(result)));
    if (fate != Fate::HangUp) return true;
    ClosePort(m_connection);
    return Open();
  }

  [[nodiscard]] bool IsAsItShould(Fate fate, TransactionResult result) {
    const std::string head = '[' + CommandOf(m_number) + "]\r";
    const std::string answer = AnswerOf(m_number) + '\r';
    switch (fate) {
      case Fate::TwoBursts:
        if (m_instrument.BurstsCameApart() && LoggedText() == head + FirstBurst(answer) + '\r') {
          m_lastAnswer = FirstBurst(answer) + '\r';
          ++m_parted;
          return true;
        }
        [[fallthrough]];
      case Fate::Answer:
        if (m_instrument.WasHeldUp(m_start) && result == TransactionResult::Timeout) {
          ++m_heldUp;
          return LoggedText() == head + kTimeoutLine;
        }
        m_lastAnswer = answer;
        return result == TransactionResult::Received && LoggedText() == head + answer;
      case Fate::Late:
      case Fate::Missing:
        return result == TransactionResult::Timeout && LoggedText() == head + kTimeoutLine;
      case Fate::HangUp:
        // A failed read reports nothing of its own: the former content of the buffer is shown again.
        return result == TransactionResult::Received ? LoggedText() == head + m_lastAnswer
                                                     : LoggedText().starts_with(head);
    }
    return false;
  }

  [[nodiscard]] std::string LoggedText() const {
    std::string text;
    for (int i = m_firstLine; i < m_log.LineCount(); ++i) text += m_log.Line(i).toStdString();
    return text;
  }

  const int m_transactions;
  const std::uint32_t m_seed;
  const QTemporaryDir m_folder;
  SoakInstrument m_instrument;
  SettingsRecord m_settings;
  test::RecordedMessages m_messages;
  test::CountedIndicator m_indicator;
  const std::unique_ptr<SerialLineOpener> m_opener = CreateLineOpener(m_folder.path());
  PortConnection m_connection;
  TransactionEngine m_engine{m_connection};
  OperationLog m_log;
  CommandLine m_commandLine;
  SilentHost m_host;
  std::array<int, kFateNames.size()> m_counts{};
  std::string m_lastAnswer;
  Clock::time_point m_start;
  int m_heldUp = 0;
  int m_parted = 0;
  int m_number = 0;
  int m_firstLine = 0;
};

}  // namespace
}  // namespace quarn

int main(int argc, char** argv) {
  const QCoreApplication application(argc, argv);
  const int transactions = argc > 1 ? std::atoi(argv[1]) : 0;
  if (transactions < 1 || argc > 3) {
    std::fputs("usage: quarn-soak TRANSACTIONS [SEED]\n", stderr);
    return EXIT_FAILURE;
  }
  const auto seed = static_cast<std::uint32_t>(argc > 2 ? std::atoi(argv[2]) : 1);
  const quarn::Load load;
  return quarn::Soak(transactions, seed).Run() ? EXIT_SUCCESS : EXIT_FAILURE;
}
