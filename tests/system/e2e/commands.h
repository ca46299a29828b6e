#pragma once

#include <QDir>
#include <QTemporaryDir>
#include <QtGlobal>
#include <functional>

#include "system/e2e/accessible_windows.h"

namespace quarn::test {

/// A pseudo-terminal that nobody answers. It reports when the program has closed it.
class FarEnd {
 public:
  FarEnd();
  ~FarEnd();
  FarEnd(const FarEnd&) = delete;
  FarEnd& operator=(const FarEnd&) = delete;

  [[nodiscard]] QString NodePath() const { return m_node; }
  /// True after the last program that had it open has closed it; false before any has opened it.
  [[nodiscard]] bool HungUp() const;

 private:
  int m_descriptor;
  QString m_node;
};

/// Records the values of a window's property, also short-lived ones.
class PropertyWatch {
 public:
  PropertyWatch(const Desktop& desktop, const QStringList& window, const QString& property);
  ~PropertyWatch() { End(m_process); }
  PropertyWatch(const PropertyWatch&) = delete;
  PropertyWatch& operator=(const PropertyWatch&) = delete;

  /// One line for each value so far, the one found at first included.
  QByteArray Lines();

 private:
  ChildProcess m_process;
  QByteArray m_lines;
};

/// An end-to-end test of the main window's commands: questions, messages and results.
class Commands : public AccessibleWindows {
 protected:
  explicit Commands(QSize screen = kUsualScreen);

  /// Starts with COM3 and no Terminal Screen, and waits for the main window.
  void StartWithoutTerminal(std::string_view rules);
  /// A user file: the defaults with these values.
  QString UserFile(const QString& name, const QList<QPair<QString, QString>>& values);
  [[nodiscard]] QString PathOf(const QString& name) const { return files.filePath(name); }
  static QByteArray BytesOf(const QString& path);
  /// Changes a current setting, as dialogs do.
  void ChangeSettings();

  /// Waits for a message that closes by itself, after two seconds.
  ::testing::AssertionResult Passes(const QString& text);
  /// Waits for a box with one button that says this, and presses the button.
  void Acknowledge(const QString& titlePattern, const QStringList& texts);
  /// Waits for a question that says this, and answers it with YES or NO.
  void Answer(const QStringList& texts, const QString& answer);
  /// Chooses from a menu when no message is shown.
  void Choose(const QString& menu, const QString& item);
  /// Types a path into a file dialog and presses Enter until `until`, else until the dialog is gone.
  void TypePath(const QString& titlePattern, const QString& path, std::function<bool()> until = {});
  QString NameInFileDialog(const QString& titlePattern);

  ::testing::AssertionResult StatusBecomes(const QString& status);
  ::testing::AssertionResult FileInForceBecomes(const QString& path);
  ::testing::AssertionResult MainTitleBecomes(const QString& title);
  ::testing::AssertionResult PortItemsBecome(bool connect, bool disconnect, bool reset);
  /// Adds this to the command line of the Terminal Screen, where the last command still stands, and sends it.
  void EnterCommand(const QString& command = {});

  const QString kError = QStringLiteral("^Quarn : Error$");
  const QString kInformation = QStringLiteral("^Quarn : Information$");
  const QString kConfirmation = QStringLiteral("^Quarn : Confirmation$");
  const QString kPassing = QStringLiteral("^Quarn : Infomation$");
  const QString kFile = QStringLiteral("File");
  const QString kPortMenu = QStringLiteral("Port");
  const QString kYes = QStringLiteral("YES");
  const QString kNo = QStringLiteral("NO");
  const QString kConnected = QStringLiteral("Successfully Connected to \"COM3\".");
  const QString kInternal = QStringLiteral("[ Internal Configuration State ]");
  const QStringList kNotAvailable{QStringLiteral("  \"COM3\" is not available."),
                                  QStringLiteral("Check \"Detailed COM Port List\".")};
  const QStringList kProceed{QStringLiteral("Settings have been changed."),
                             QStringLiteral("Proceed without saving?")};

  /// Short, so that the status line has room for the paths of its files.
  QTemporaryDir files{QDir::tempPath() + QStringLiteral("/q-XXXXXX")};
};

}  // namespace quarn::test
