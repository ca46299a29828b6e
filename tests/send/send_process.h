#pragma once

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <functional>
#include <map>

#include "settings/settings_table.h"
#include "terminal/transaction_fixture.h"

namespace quarn {

inline constexpr int kPatienceMs = 90'000;

inline constexpr char kSendRules[] =
    "\"id\" -> line \"SIM-1\"\n"
    "\"mute\" -> silence\n"
    "\"late\" -> 1000 line \"SIM-1\"\n"
    "\"drop\" -> hangup\n"
    "\"half\" -> \"SIM\" 500 hangup\n"
    "\"empty\" -> \"\\n\"\n"
    "\"nul\" -> \"A\\x00B\\n\"\n"
    "\"big\" -> \"x\" * 1501\n"
    "\"bytes\" -> \"\\x02A\\x05\\r\\n\\x7f\\xff\\r\\n\"\n"
    "* -> line \"ERR\"";

struct Outcome {
  int exitCode = -1;
  QByteArray out;
  QByteArray err;
};

/// The program with a settings folder of its own, in which COM7 leads to a simulated instrument.
class SendProcess : public testing::Test {
 protected:
  using Values = std::map<QByteArray, QByteArray>;

  void SetUp() override {
    ASSERT_TRUE(QDir().mkpath(Path("Halvo/Quarn/ports")));
    ASSERT_TRUE(QFile::link(m_instrument.NodePath(), Path("Halvo/Quarn/ports/COM7")));
    WriteSettings(Path("Halvo/Quarn/Quarn.ini"), {});
  }

  [[nodiscard]] QString Path(const char* name) const { return m_home.filePath(QString::fromLatin1(name)); }

  /// A complete settings file: the defaults but for COM7, a fast line with a lasting silence, CRLF, and
  /// what `values` say ("COM_BUF=" -> "1K").
  void WriteSettings(const QString& path, Values values) const {
    values.insert(
        {{"COM_PORT=", "COM7"}, {"COM_BPS=", "4800"}, {"DELIMITER=", "CRLF"}, {"R_TIMEOUT=", "OFF"}});
    QByteArray text = "\xEF\xBB\xBF.VER=Quarn  (Ver. 1.00)\r\n.BEGIN\r\n";
    for (const QString& line : DefaultLines()) {
      const QByteArray key = line.left(line.indexOf(u'=') + 1).toUtf8();
      const auto own = values.find(key);
      text += (own == values.end() ? line.toUtf8() : key + own->second) + "\r\n";
    }
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
    file.write(text + ".END\r\n");
  }
  void UseSettings(const Values& values) const { WriteSettings(Path("Halvo/Quarn/Quarn.ini"), values); }

  /// `inChild` runs between fork and exec.
  void Start(QProcess& process, const QString& program, const QStringList& arguments,
             const std::function<void()>& inChild = {}) const {
    QProcessEnvironment surroundings = environment;
    surroundings.insert(QStringLiteral("XDG_CONFIG_HOME"), m_home.path());
    process.setProcessEnvironment(surroundings);
    if (inChild) process.setChildProcessModifier(inChild);
    process.start(program, arguments);
  }
  [[nodiscard]] Outcome Run(const QString& program, const QStringList& arguments,
                            const std::function<void()>& inChild = {}) const {
    QProcess process;
    Start(process, program, arguments, inChild);
    EXPECT_TRUE(process.waitForFinished(kPatienceMs));
    EXPECT_EQ(process.exitStatus(), QProcess::NormalExit);
    return {process.exitCode(), process.readAllStandardOutput(), process.readAllStandardError()};
  }
  [[nodiscard]] Outcome Send(const QStringList& arguments) const {
    return Run(QStringLiteral(QUARN_SEND), arguments);
  }
  /// Runs a line of the shell, in which "$0" is the program: for bytes that are no text, and redirections.
  [[nodiscard]] Outcome Shell(const char* line, const std::function<void()>& inChild = {}) const {
    return Run(QStringLiteral("/bin/sh"),
               {QStringLiteral("-c"), QString::fromLatin1(line), QStringLiteral(QUARN_SEND)}, inChild);
  }
  [[nodiscard]] Outcome Send(const char* line) const {
    return Send(QString::fromLatin1(line).split(u' ', Qt::SkipEmptyParts));
  }

  QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
  QTemporaryDir m_home;
  ServedInstrument m_instrument{std::string_view(kSendRules)};
};

}  // namespace quarn
