#pragma once

#include <QByteArray>
#include <QMargins>
#include <functional>

#include "system/e2e/accessible_windows.h"

namespace quarn::test {

/// An end-to-end test that watches the program come up and go: the boxes on the way, the settings files, the
/// main window's frame, how the process ends.
class Starts : public AccessibleWindows {
 protected:
  using Values = QList<QPair<QString, QString>>;

  /// For the program, and for whatever else is started in its account.
  void SetVariable(const char* name, const QString& value);
  /// Writes a settings file, the defaults with these values, under this name in the home folder. Returns its
  /// path.
  QString WriteUserFile(const QString& name, const Values& values);
  static QByteArray Bytes(const QString& path);
  static void WriteBytes(const QString& path, const QByteArray& bytes);
  /// What a settings file with the defaults and these values holds, byte for byte.
  QByteArray BytesWith(const Values& values);

  /// Waits for a box with these texts and an OK button, and ends it with Enter.
  void Acknowledge(const QString& titlePattern, const QStringList& texts);
  void AcknowledgeWarning(const char* first, const char* second);
  void AcknowledgeDefaults(const char* why);
  void AcknowledgeNoPort();
  /// Waits for a box that goes by itself to say this.
  ::testing::AssertionResult Passing(const QString& text);
  ::testing::AssertionResult MainTitleBecomes(const QString& title);
  /// The main window's last line.
  ::testing::AssertionResult StatusBecomes(const QString& status);
  ::testing::AssertionResult SplashIsThere();
  ::testing::AssertionResult SwitchBecomes(const char* text);
  ::testing::AssertionResult BecomesActive(const QString& window);
  /// Waits for the program to end by itself with this status.
  ::testing::AssertionResult EndsWith(int exitCode);

  /// What the window manager adds on each side; waits for it.
  QMargins Frame(const QString& window);
  /// On the screen, with the frame; waits for it.
  QRect Outer(const QString& window);
  /// Clicks on the close box in the window's title bar, again as long as `until` does not hold.
  void ClickCloseBox(const QString& window, const std::function<bool()>& until);

  const QString kWarning = QStringLiteral("^Quarn : Warning$");
  const QString kInformation = QStringLiteral("^Quarn : Information$");
  const QString kError = QStringLiteral("^Quarn : Error$");
  const QString kConfirmation = QStringLiteral("^Quarn : Confirmation$");
  const QString kTransient = QStringLiteral("^Quarn : Infomation$");
  const QString kPlain = QStringLiteral("^Quarn$");
  const QString kInternal = QStringLiteral("[ Internal Configuration State ]");
};

}  // namespace quarn::test
