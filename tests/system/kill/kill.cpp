// Ends a process at random moments, without a chance to clean up, while it writes settings without a pause
// as the windows of the program do. Then it checks the files.
//
//   quarn-kill KILLS [SEED]
//
// Both files must be, byte for byte, as before or after the current step; all earlier steps must be complete.
// The next start must accept the files without a message, whatever an interrupted write has left in the
// folder. Ends with 0 and prints the counts, or prints what went wrong and ends with 1.

#include <poll.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <algorithm>
#include <array>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <string>
#include <thread>
#include <utility>

#include "settings/key_store.h"
#include "settings/working_file.h"
#include "support/recorded_messages.h"
#include "system/kill/kill_steps.h"

namespace quarn::kill {
namespace {

constexpr std::array kDeedNames{"an option", "the commands", "save all", "save", "open", "defaults"};
constexpr char kWriterMark[] = "--write";
constexpr int kLatestMomentUs = 40000;
/// A writer that has not started by then never will.
constexpr int kLongestStartMs = 60000;

/// The process to kill. It prints one byte before each step.
int Write(const char* folder, std::uint32_t seed, int writer) {
  ::prctl(PR_SET_PDEATHSIG, SIGKILL);
  const Paths paths = PathsIn(QString::fromLocal8Bit(folder));
  for (int number = 0;; ++number) {
    if (::write(STDOUT_FILENO, ".", 1) != 1 || !Perform(StepOf(seed, writer, number), paths)) return 1;
  }
}

class Writer {
 public:
  Writer(const QString& folder, std::uint32_t seed, int number) {
    std::array<int, 2> ends{};
    if (::pipe(ends.data()) != 0) std::abort();
    const QByteArray folderName = folder.toLocal8Bit();
    const std::string seedText = std::to_string(seed);
    const std::string numberText = std::to_string(number);
    m_process = ::fork();
    if (m_process == 0) {
      ::dup2(ends[1], STDOUT_FILENO);
      ::close(ends[0]);
      ::close(ends[1]);
      ::execl("/proc/self/exe", "quarn-kill", kWriterMark, folderName.constData(), seedText.c_str(),
              numberText.c_str(), nullptr);
      ::_exit(EXIT_FAILURE);
    }
    ::close(ends[1]);
    m_progress = ends[0];
  }
  ~Writer() {
    Kill();
    ::close(m_progress);
  }
  Writer(const Writer&) = delete;
  Writer& operator=(const Writer&) = delete;

  [[nodiscard]] bool HasBegun() const {
    pollfd progress{.fd = m_progress, .events = POLLIN, .revents = 0};
    return ::poll(&progress, 1, kLongestStartMs) == 1 && (progress.revents & POLLIN) != 0;
  }
  /// Whether this killed it.
  bool Kill() {
    if (m_process < 0) return false;
    int status = 0;
    ::kill(m_process, SIGKILL);
    ::waitpid(std::exchange(m_process, -1), &status, 0);
    return WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL;
  }
  /// How many steps it had started. Call after the kill.
  [[nodiscard]] int StepsBegun() const {
    int steps = 0;
    std::array<char, 4096> bytes{};
    for (ssize_t count = 0; (count = ::read(m_progress, bytes.data(), bytes.size())) > 0;)
      steps += static_cast<int>(count);
    return steps;
  }

 private:
  pid_t m_process = -1;
  int m_progress = -1;
};

class KillRun {
 public:
  KillRun(int kills, std::uint32_t seed) : m_kills(kills), m_seed(seed), m_random(seed) {}

  bool Run() {
    if (!WriteDefaultFile(m_paths.working) || !WriteDefaultFile(m_paths.user))
      return Complain("the files cannot be written");
    m_state = Read();
    m_defaults = m_state.working;
    for (m_number = 1; m_number <= m_kills; ++m_number) {
      if (!RunOne()) return false;
    }
    Tell();
    return true;
  }

 private:
  bool RunOne() {
    Writer writer(m_paths.folder, m_seed, m_number);
    if (!writer.HasBegun()) return Complain("the writer does not begin");
    // The moment is random on purpose.
    std::this_thread::sleep_for(
        std::chrono::microseconds(std::uniform_int_distribution<int>(0, kLatestMomentUs)(m_random)));
    if (!writer.Kill()) return Complain("the writer has ended by itself");
    return IsWhole(writer.StepsBegun()) && NextStartTakesIt() && CountStrays();
  }

  /// The files must have their content from before or after the last step.
  bool IsWhole(int begun) {
    for (int number = 0; number < begun - 1; ++number)
      m_state = After(StepOf(m_seed, m_number, number), m_state, m_defaults);
    const Step last = StepOf(m_seed, m_number, begun - 1);
    const Contents found = Read();
    const auto deed = static_cast<std::size_t>(last.deed);
    if (found != m_state && found != After(last, m_state, m_defaults)) {
      return Complain("the files are not whole; the step was " + std::string(kDeedNames.at(deed)) +
                      ", number " + std::to_string(begun) + "; they have " +
                      std::to_string(found.working.size()) + " and " + std::to_string(found.user.size()) +
                      " bytes");
    }
    m_steps += begun;
    ++m_counts.at(deed);
    m_state = found;
    return true;
  }

  bool NextStartTakesIt() {
    test::RecordedMessages messages;
    SettingsRecord record;
    PrepareWorkingFile(m_paths.folder);
    LoadInitialSettings(m_paths.working, record, messages);
    if (!messages.shown.isEmpty()) return Complain("the next start has something to say");
    return Read() == m_state || Complain("the next start has changed the files");
  }

  bool CountStrays() {
    int strays = 0;
    for (const QString& name : QDir(m_paths.folder).entryList(QDir::Files | QDir::Hidden)) {
      const QString path = m_paths.folder + name;
      if (path == m_paths.working || path == m_paths.user) continue;
      if (!path.startsWith(m_paths.working + QLatin1Char('.')) &&
          !path.startsWith(m_paths.user + QLatin1Char('.')))
        return Complain("nobody knows what this file is: " + name.toStdString());
      ++strays;
    }
    if (strays > m_strays + 1) return Complain("one write has left several files behind");
    m_strays = strays;
    return true;
  }

  [[nodiscard]] Contents Read() const { return {BytesOf(m_paths.working), BytesOf(m_paths.user)}; }
  static QByteArray BytesOf(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
  }

  void Tell() const {
    std::printf("%d kills in %d steps; the step under way was\n", m_kills, m_steps);
    for (std::size_t i = 0; i < m_counts.size(); ++i)
      std::printf("  %-14s%d\n", kDeedNames.at(i), m_counts.at(i));
    std::printf("temporary files left behind  %d\n", m_strays);
  }

  [[nodiscard]] bool Complain(const std::string& what) const {
    std::fprintf(stderr, "kill %d, seed %u: %s\n", m_number, m_seed, what.c_str());
    return false;
  }

  const int m_kills;
  const std::uint32_t m_seed;
  const QTemporaryDir m_folder;
  const Paths m_paths = PathsIn(m_folder.path() + QLatin1Char('/'));
  std::mt19937 m_random;
  Contents m_state;
  QByteArray m_defaults;
  std::array<int, kDeedNames.size()> m_counts{};
  int m_number = 0;
  int m_steps = 0;
  int m_strays = 0;
};

}  // namespace
}  // namespace quarn::kill

int main(int argc, char** argv) {
  const auto number = [&](int index) { return argc > index ? std::atoi(argv[index]) : 0; };
  if (argc == 5 && std::string(argv[1]) == quarn::kill::kWriterMark)
    return quarn::kill::Write(argv[2], static_cast<std::uint32_t>(number(3)), number(4));
  if (number(1) < 1 || argc > 3) {
    std::fputs("usage: quarn-kill KILLS [SEED]\n", stderr);
    return EXIT_FAILURE;
  }
  const auto seed = static_cast<std::uint32_t>(argc > 2 ? number(2) : 1);
  return quarn::kill::KillRun(number(1), seed).Run() ? EXIT_SUCCESS : EXIT_FAILURE;
}
