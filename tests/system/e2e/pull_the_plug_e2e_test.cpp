#include <sys/ptrace.h>
#include <sys/wait.h>
#include <unistd.h>

#include <QSet>
#include <algorithm>
#include <array>
#include <cstdio>
#include <random>

#include "system/e2e/answer_probe.h"
#include "system/e2e/opened_line.h"
#include "system/e2e/port_dialogs.h"

namespace quarn::test {
namespace {

using std::chrono::milliseconds;

/// The state of the program when the plug is pulled.
enum class Doing { Nothing, Writing, Waiting, Receiving, PortNumber, PortList, PortSettings };
constexpr std::array kDoings{Doing::Nothing,    Doing::Writing,  Doing::Waiting,     Doing::Receiving,
                             Doing::PortNumber, Doing::PortList, Doing::PortSettings};
constexpr std::array kDoingNames{"idle",        "writing",   "waiting",      "receiving",
                                 "port number", "port list", "port settings"};

constexpr milliseconds kLongestHang{1000};
constexpr int kLatestMomentMs = 500;
/// Everything has been used once.
constexpr int kPlugWarmUp = static_cast<int>(kDoings.size());
constexpr long kPlugGrowthAllowedKib = 6144;
/// At ten milliseconds a byte it may take ten seconds to be sent.
constexpr int kLongCommand = 1000;

/// An answer that lasts ten seconds, without a silence that ends it.
std::string EndlessAnswer() {
  std::string steps = "\"slow\" ->";
  for (int i = 0; i < 500; ++i) steps += " \"a\" 20";
  return steps;
}

const std::string& PlugRules() {
  static const std::string rules = "\"mute\" -> silence\n" + EndlessAnswer() + "\n* -> line \"OK\"";
  return rules;
}

class PullThePlug : public PortDialogs {
 protected:
  static int Number(const char* variable, int otherwise) {
    bool given = false;
    const int number = qEnvironmentVariableIntValue(variable, &given);
    return given ? number : otherwise;
  }

  /// The address sanitizer keeps what has been freed. So little that memory is full of it before it is first
  /// measured.
  void KeepLittleOfWhatIsFreed() {
    QProcessEnvironment environment = program.processEnvironment();
    const QString options = environment.value(QStringLiteral("ASAN_OPTIONS"));
    environment.insert(QStringLiteral("ASAN_OPTIONS"), options + QStringLiteral(":quarantine_size_mb=16"));
    program.setProcessEnvironment(environment);
  }

  void StartWatched() {
    KeepLittleOfWhatIsFreed();
    StartConnected(PlugRules(), {{QStringLiteral("AUTO_CLR"), QStringLiteral("ON")},
                                 {QStringLiteral("R_TIMEOUT"), QStringLiteral("OFF")},
                                 {QStringLiteral("MEM0"), QString(kLongCommand, QLatin1Char('w'))}});
    ASSERT_TRUE(MainTitleBecomes(kTitle));
    ASSERT_TRUE(WaitForNoWindow(QStringLiteral("^Quarn : ")));
    m_windows = std::make_unique<PropertyWatch>(desktop, QStringList{QStringLiteral("-root")},
                                                QStringLiteral("_NET_CLIENT_LIST"));
    m_expectedWindows = WindowsSeen();
    m_threads = Count("task");
    const std::optional<Control> window = FindWindow(kMain);
    ASSERT_TRUE(window);
    m_probe = std::make_unique<AnswerProbe>(bus.Address(), window->service, program.processId());
  }

  /// How many windows have come up since the watch began, whether they are still there or not.
  int WindowsSeen() {
    int seen = 0;
    QSet<QByteArray> before;
    for (const QByteArray& line : m_windows->Lines().split('\n')) {
      if (!line.contains('#')) continue;
      QSet<QByteArray> now;
      for (const QByteArray& id : line.mid(line.indexOf('#') + 1).split(',')) now.insert(id.trimmed());
      for (const QByteArray& id : std::as_const(now)) seen += before.contains(id) ? 0 : 1;
      before = now;
    }
    return seen;
  }

  [[nodiscard]] int Count(const char* what) const {
    return static_cast<int>(
        QDir(QStringLiteral("/proc/%1/%2").arg(program.processId()).arg(QLatin1String(what)))
            .entryList(QDir::NoDotAndDotDot | QDir::AllEntries | QDir::System)
            .size());
  }
  [[nodiscard]] long ResidentKib() const {
    QFile file(QStringLiteral("/proc/%1/statm").arg(program.processId()));
    EXPECT_TRUE(file.open(QIODevice::ReadOnly));
    return file.readAll().split(' ').value(1).toLong() * ::sysconf(_SC_PAGESIZE) / 1024;
  }

  void Send(const char* command) {
    EnterCommand(QLatin1String(command));
    const std::string sent = std::string(command) + '\r';
    EXPECT_TRUE(Eventually([&] { return instrument->Received().ends_with(sent); })) << instrument->Received();
  }

  /// Nothing gets through on the way from the program, as where the far end is not ready.
  void BeginWriting() {
    m_stopped = std::make_unique<OpenedLine>(instrument->NodePath());
    ASSERT_TRUE(m_stopped->Stop());
    Focus(WaitForWindow(kTerminal));
    Press({QStringLiteral("F1"), QStringLiteral("Return")});
    EXPECT_TRUE(Eventually([this] { return Count("task") > m_threads; }));
  }

  void Begin(Doing doing) {
    switch (doing) {
      case Doing::Nothing:
        return;
      case Doing::Writing:
        return BeginWriting();
      case Doing::Waiting:
        return Send("mute");
      case Doing::Receiving:
        return Send("slow");
      case Doing::PortNumber:
        return OpenNumber();
      case Doing::PortList:
        return OpenList();
      case Doing::PortSettings:
        return OpenSettings();
    }
  }

  /// The program is still at it. A transaction has a thread of its own.
  void ExpectStill(Doing doing, const std::string& receivedBefore, int answersBefore) {
    const bool transaction = doing == Doing::Writing || doing == Doing::Waiting || doing == Doing::Receiving;
    EXPECT_EQ(Count("task") > m_threads, transaction);
    if (doing == Doing::Writing) {
      EXPECT_EQ(instrument->Received(), receivedBefore) << "it has been sent";
    }
    if (doing == Doing::Receiving) {
      EXPECT_EQ(instrument->Answers(), answersBefore) << "it has been answered";
    }
  }

  void ExpectDialogSays(Doing doing, const QString& port) {
    if (doing == Doing::PortSettings) {
      EXPECT_TRUE(SettingsTitleBecomes("9600, 8, None, 1"));
    } else if (const QString dialog = DialogOf(doing); !dialog.isEmpty()) {
      const QString title = doing == Doing::PortNumber
                                ? QStringLiteral("Quarn - COM Port Number (%1)  ")
                                : QStringLiteral("Quarn - Detailed COM Port List  (%1)  ");
      EXPECT_TRUE(TitleBecomes(dialog, title.arg(port)));
    }
  }

  QString DialogOf(Doing doing) const {
    if (doing == Doing::PortNumber) return kNumber;
    if (doing == Doing::PortList) return kList;
    return doing == Doing::PortSettings ? kSettings : QString();
  }

  void ExpectOneMoreWindow() {
    ++m_expectedWindows;
    EXPECT_TRUE(Eventually([this] { return WindowsSeen() >= m_expectedWindows; }));
  }

  void Sees(const QString& titlePattern, const QStringList& texts) {
    EXPECT_TRUE(BoxSays(titlePattern, texts));
    ExpectOneMoreWindow();
  }

  void PullAndPlugIn(Doing doing, milliseconds moment) {
    const int answers = instrument->Answers();
    const std::string received = instrument->Received();
    Begin(doing);
    if (!DialogOf(doing).isEmpty()) ExpectOneMoreWindow();
    // A moment at random is what this is about.
    std::this_thread::sleep_for(moment);
    ExpectStill(doing, received, answers);
    const auto pulled = AnswerProbe::Clock::now();
    UnplugPort();
    Sees(kPassing, {kUpdated});
    m_firstWord = AnswerProbe::Clock::now() - pulled;
    Sees(kError, kNotAvailable);
    Acknowledge(kError, kNotAvailable);
    EXPECT_TRUE(MainTitleBecomes(QStringLiteral("Quarn   (COM3-NC)")));
    ExpectDialogSays(doing, QStringLiteral("COM3-NC"));
    m_stopped.reset();
    PlugIn(PlugRules());
    Sees(kPassing, {kUpdated});
    Sees(kConfirmation, kQuestion);
    Answer(kQuestion, kYes);
    Sees(kInformation, kConnectedAgain);
    Acknowledge(kInformation, kConnectedAgain);
    EXPECT_TRUE(MainTitleBecomes(kTitle));
    ExpectDialogSays(doing, kPort);
    if (const QString dialog = DialogOf(doing); !dialog.isEmpty()) PressOk(dialog);
    EnterCommand(QStringLiteral("id"));
    EXPECT_TRUE(WireBecomes("id\r"));
    EXPECT_TRUE(Eventually([this] { return Count("task") == m_threads; })) << "a thread is left";
    EXPECT_EQ(WindowsSeen(), m_expectedWindows) << "another box has come up";
    ++m_cycles;
  }

  void PullOften(int cycles) {
    std::mt19937 random(static_cast<std::uint32_t>(Number("QUARN_PLUG_SEED", 1)));
    std::array order = kDoings;
    while (m_cycles < cycles && !HasFailure()) {
      const auto place = static_cast<std::size_t>(m_cycles) % order.size();
      if (place == 0) std::shuffle(order.begin(), order.end(), random);
      const Doing doing = order.at(place);
      const milliseconds moment{std::uniform_int_distribution<int>(0, kLatestMomentMs)(random)};
      const std::string what = std::string(kDoingNames.at(static_cast<std::size_t>(doing))) + " for " +
                               std::to_string(moment.count()) + " ms";
      SCOPED_TRACE("cycle " + std::to_string(m_cycles + 1) + ", " + what);
      PullAndPlugIn(doing, moment);
      Measure(what);
    }
  }

  void Measure(const std::string& what) {
    const int descriptors = Count("fd");
    const long memory = ResidentKib();
    if (m_cycles <= kPlugWarmUp) {
      m_descriptors = descriptors;
      m_memory = memory;
    }
    EXPECT_EQ(descriptors, m_descriptors) << "a descriptor was left open";
    EXPECT_LE(memory - m_memory, kPlugGrowthAllowedKib) << "memory has grown";
    EXPECT_LT(m_probe->LongestOfItsOwn(), kLongestHang);
    const auto ms = [](auto time) {
      return static_cast<int>(std::chrono::duration_cast<milliseconds>(time).count());
    };
    std::printf(
        "%3d  %-24s  told after %4d ms; %d descriptors, %ld KiB; longest answer %d ms, of its own %d ms\n",
        m_cycles, what.c_str(), ms(m_firstWord), descriptors, memory, ms(m_probe->Longest()),
        ms(m_probe->LongestOfItsOwn()));
    std::fflush(stdout);
  }

  const QString kUpdated = QStringLiteral("COM port list has been updated.");
  const QStringList kQuestion{QStringLiteral("Do you want to connect to \"COM3\" ?")};
  const QStringList kConnectedAgain{QStringLiteral("Successfully connected to  \"COM3\"")};
  std::unique_ptr<PropertyWatch> m_windows;
  std::unique_ptr<OpenedLine> m_stopped;
  std::unique_ptr<AnswerProbe> m_probe;
  /// From the plug pulled to the first word about it, as the test has read it.
  AnswerProbe::Clock::duration m_firstWord{};
  int m_descriptors = 0;
  long m_memory = 0;
  int m_expectedWindows = 0;
  int m_threads = 0;
  int m_cycles = 0;
};

TEST_F(PullThePlug, AtRandomMoments) {
  ASSERT_NO_FATAL_FAILURE(StartWatched());
  PullOften(Number("QUARN_PLUG_CYCLES", 12));
  EXPECT_EQ(m_probe->Failures(), 0);
  EXPECT_GT(m_probe->Answers(), m_cycles);
}

TEST_F(PullThePlug, AHangIsMeasured) {
  ASSERT_NO_FATAL_FAILURE(StartWatched());
  ASSERT_TRUE(Eventually([this] { return m_probe->Answers() > 0; }));
  // Only the user-interface thread: it has the number of the process.
  const auto thread = static_cast<pid_t>(program.processId());
  ASSERT_EQ(ptrace(PTRACE_SEIZE, thread, nullptr, nullptr), 0);
  ASSERT_EQ(ptrace(PTRACE_INTERRUPT, thread, nullptr, nullptr), 0);
  ASSERT_EQ(waitpid(thread, nullptr, __WALL), thread);
  EXPECT_TRUE(Eventually([this] { return m_probe->Longest() > kLongestHang; }));
  const int answers = m_probe->Answers();
  ASSERT_EQ(ptrace(PTRACE_DETACH, thread, nullptr, nullptr), 0);
  EXPECT_TRUE(Eventually([&] { return m_probe->Answers() > answers; }));
  EXPECT_GT(m_probe->LongestOfItsOwn(), kLongestHang);
}

}  // namespace
}  // namespace quarn::test
