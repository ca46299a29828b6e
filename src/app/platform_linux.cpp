#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QAction>
#include <QApplication>
#include <QDir>
#include <QEvent>
#include <QFile>
#include <QFontInfo>
#include <QScreen>
#include <QWidget>
#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <optional>
#include <system_error>
#include <utility>

#include "app/file_argument.h"
#include "app/platform.h"
#include "app/scaling.h"
#include "app/user_folders_linux.h"
#include "app/wayland_output.h"
#include "settings/data_folder.h"
#include "ui/showable_text.h"
#include "ui/window_system.h"

namespace quarn {
namespace {

constexpr mode_t kPrivateFile = 0600;
constexpr char kScaleFactor[] = "QT_SCALE_FACTOR";

InstanceLock LockFile(const QByteArray& path) {
  const int descriptor = ::open(path.constData(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, kPrivateFile);
  if (descriptor < 0) return InstanceLock::Failed;
  int result = 0;
  do {
    result = ::flock(descriptor, LOCK_EX | LOCK_NB);
  } while (result != 0 && errno == EINTR);
  if (result == 0) return InstanceLock::Taken;  // the descriptor stays open: it is the lock
  const int error = errno;
  ::close(descriptor);
  errno = error;
  return error == EWOULDBLOCK ? InstanceLock::TakenByAnother : InstanceLock::Failed;
}

InstanceLock LockIn(const QString& folder, QString& reason) {
  const QString path = QDir(folder).filePath(QStringLiteral("Quarn.exe.lock"));
  const InstanceLock lock = LockFile(QFile::encodeName(path));
  if (lock == InstanceLock::Failed) {
    // A folder that is missing could not be made, and that has another reason.
    const int error = errno;
    const bool folderFailed = error == ENOENT && !MakeDataFolder(folder);
    reason = (folderFailed ? folder : path) + QStringLiteral(": ") +
             QString::fromStdString(std::generic_category().message(folderFailed ? errno : error));
  }
  return lock;
}

/// Gives an item of a window's context menu its plain text if no font can show the other one. The fonts are
/// asked when the menu is first opened, not at the start, because it takes time.
class PlainWhereNeeded final : public QObject {
 public:
  PlainWhereNeeded(QWidget& window, QAction& item, QString plainText)
      : QObject(&window), m_item(item), m_plainText(std::move(plainText)) {
    window.installEventFilter(this);
  }

 protected:
  bool eventFilter(QObject* window, QEvent* event) override {
    if (event->type() == QEvent::ContextMenu) {
      if (!CanShow(QApplication::font("QMenu"), m_item.text())) m_item.setText(m_plainText);
      window->removeEventFilter(this);
    }
    return false;
  }

 private:
  QAction& m_item;
  const QString m_plainText;
};

}  // namespace

QString ReadFileArgument(const QStringList& arguments) { return WithinPathLimit(arguments.value(1)); }

QString FileArgumentNote() { return {}; }

// The lock protects the settings, and all programs that use them see a lock beside them, also those in
// sessions without a runtime folder. The lock in the session's folder covers settings that cannot be written.
InstanceLock TakeInstanceLock(QString& reason) {
  const QString session = SessionFolder();
  const InstanceLock first = session.isEmpty() ? InstanceLock::Taken : LockIn(session, reason);
  if (first != InstanceLock::Taken) return first;
  const QString settings = SettingsFolder();
  if (settings.isEmpty()) reason = WhyNoDataFolder();
  const InstanceLock second = settings.isEmpty() ? InstanceLock::Failed : LockIn(settings, reason);
  return second == InstanceLock::Failed && !session.isEmpty() ? InstanceLock::Taken : second;
}

bool WriteOnTerminal(const QString& text, TerminalStream stream) {
  std::FILE* const file = stream == TerminalStream::Output ? stdout : stderr;
  if (std::fputs(text.toLocal8Bit().constData(), file) >= 0 && std::fflush(file) == 0) return true;
  if (file == stdout) std::fprintf(stderr, "quarn: standard output: %s\n", std::strerror(errno));
  return false;
}

bool IsTerminal(TerminalStream stream) {
  return ::isatty(stream == TerminalStream::Output ? STDOUT_FILENO : STDERR_FILENO) == 1;
}

int WindowDpi(const QWidget& window) {
  const QScreen* screen = window.screen();
  if (screen == nullptr) return 0;
  // A desktop scales windows partly by larger fonts, partly by larger pixels.
  const double drawn = screen->logicalDotsPerInch() * screen->devicePixelRatio();
  if (!IsOnWayland()) return static_cast<int>(std::lround(drawn));
  const std::optional<OutputSize> output = WaylandOutput(screen->name());
  return static_cast<int>(std::lround(drawn * (output ? ShownShare(*output) : 1)));
}

QString HowToStartAtScaling(int percent) {
  if (percent <= 0) return {};
  // A factor that is set already is part of the scaling.
  bool isSet = false;
  const double present = qEnvironmentVariable(kScaleFactor).toDouble(&isSet);
  const int wanted = SubstituteScaling(percent);
  const double factor = (isSet && present > 0 ? present : 1) * wanted / percent;
  constexpr int kDigits = 4;
  return QStringLiteral(
             "quarn: it does not start at a scaling of %1 per cent; to start it at %2: "
             "QT_SCALE_FACTOR=%3 quarn\n")
      .arg(percent)
      .arg(wanted)
      .arg(QString::number(factor, 'g', kDigits));
}

int MessageFontHeight() { return QFontInfo(QApplication::font("QMessageBox")).pixelSize(); }

void AddWindowMenuItem(QWidget& window, const QString& text, const QString& plainText,
                       std::function<void()> chosen) {
  auto* item = new QAction(text, &window);
  new PlainWhereNeeded(window, *item, plainText);
  QObject::connect(item, &QAction::triggered, &window, std::move(chosen));
  window.addAction(item);
  window.setContextMenuPolicy(Qt::ActionsContextMenu);
}

void TakeSystemKeys(QWidget& /*window*/, const std::function<bool()>& /*take*/) {}

/// That of GTK does not know of it; Qt adds it afterwards.
bool SystemFileDialogAddsSuffix() { return false; }

}  // namespace quarn
