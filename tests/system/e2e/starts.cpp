#include "system/e2e/starts.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include "identity.h"
#include "settings/key_store.h"

namespace quarn::test {

void Starts::SetVariable(const char* name, const QString& value) {
  QProcessEnvironment environment = program.processEnvironment();
  environment.insert(QLatin1String(name), value);
  program.setProcessEnvironment(environment);
}

QString Starts::WriteUserFile(const QString& name, const Values& values) {
  QString path = home.filePath(name);
  EXPECT_TRUE(QDir().mkpath(QFileInfo(path).path()));
  EXPECT_TRUE(WriteDefaultFile(path));
  for (const auto& [key, value] : values) {
    const QString whole = key + QLatin1Char('=');
    EXPECT_TRUE(UpdateValue(path, SettingsKey(whole), value));
  }
  return path;
}

QByteArray Starts::Bytes(const QString& path) {
  QFile file(path);
  EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << path.toStdString();
  return file.readAll();
}

void Starts::WriteBytes(const QString& path, const QByteArray& bytes) {
  QFile file(path);
  ASSERT_TRUE(file.open(QIODevice::WriteOnly)) << path.toStdString();
  ASSERT_EQ(file.write(bytes), bytes.size());
}

QByteArray Starts::BytesWith(const Values& values) {
  return Bytes(WriteUserFile(QStringLiteral("expected"), values));
}

void Starts::Acknowledge(const QString& titlePattern, const QStringList& texts) {
  EXPECT_TRUE(BoxSays(titlePattern, texts));
  EXPECT_EQ(Buttons(titlePattern), QStringList{QStringLiteral("OK")});
  AnswerBox(titlePattern, QStringLiteral("Return"));
}

void Starts::AcknowledgeWarning(const char* first, const char* second) {
  Acknowledge(kWarning, {QLatin1String(first), QLatin1String(second)});
}

void Starts::AcknowledgeDefaults(const char* why) {
  AcknowledgeWarning(why, "Starting with default settings.");
  AcknowledgeNoPort();
}

void Starts::AcknowledgeNoPort() {
  Acknowledge(kInformation,
              {QStringLiteral("COM port is undefined."), QStringLiteral("Sellect a COM port to connect.")});
}

::testing::AssertionResult Starts::Passing(const QString& text) { return BoxSays(kTransient, {text}); }

::testing::AssertionResult Starts::MainTitleBecomes(const QString& title) {
  return Becomes(title, [this] { return Title(desktop.Windows(kMain).value(0)); });
}

::testing::AssertionResult Starts::StatusBecomes(const QString& status) {
  return Becomes(status, [this] { return Texts(kMain).value(2); });
}

::testing::AssertionResult Starts::SplashIsThere() {
  return BoxSays(kPlain, {QStringLiteral("Quarn  (Ver. 1.00)"), QStringLiteral("Serial Port Terminal"),
                          QString::fromLatin1(identity::kBuildLine), QStringLiteral("Halvo")});
}

::testing::AssertionResult Starts::SwitchBecomes(const char* text) {
  return Becomes(QLatin1String(text), [this] { return Buttons(kMain).join(QLatin1Char('|')); });
}

::testing::AssertionResult Starts::BecomesActive(const QString& window) {
  return Becomes(window, [this] {
    return QString::fromLatin1(
        desktop.Run(QStringLiteral("xdotool"), {QStringLiteral("getactivewindow")}).trimmed());
  });
}

::testing::AssertionResult Starts::EndsWith(int exitCode) {
  if (program.state() != QProcess::NotRunning && !program.waitForFinished(kLongestWaitMs))
    return ::testing::AssertionFailure() << "still running";
  if (program.exitStatus() != QProcess::NormalExit) return ::testing::AssertionFailure() << "crashed";
  if (program.exitCode() == exitCode) return ::testing::AssertionSuccess();
  return ::testing::AssertionFailure() << "ended with " << program.exitCode();
}

QMargins Starts::Frame(const QString& window) {
  std::optional<QMargins> frame;
  EXPECT_TRUE(Eventually([&] { return (frame = desktop.Frame(window)).has_value(); }));
  return frame.value_or(QMargins());
}

QRect Starts::Outer(const QString& window) {
  std::optional<QRect> outer;
  EXPECT_TRUE(Eventually([&] { return (outer = desktop.Outer(window)).has_value(); }));
  return outer.value_or(QRect());
}

void Starts::ClickCloseBox(const QString& window, const std::function<bool()>& until) {
  const QRect outer = Outer(window);
  const QMargins frame = Frame(window);
  // The last one in the title bar, about as wide as that is high.
  const int half = frame.top() / 2;
  EXPECT_TRUE(Eventually([&] {
    ClickOnScreen({outer.right() - frame.right() - half, outer.top() + half});
    return Eventually(until, kOneTryMs);
  })) << "the close box has no effect";
}

}  // namespace quarn::test
