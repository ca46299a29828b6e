#pragma once

#include <QDialog>
#include <functional>
#include <ostream>

#include "app/main_dialog_fixture.h"

namespace quarn::test {

class EveryWindow;

/// A window of the program in one of its states: how it is brought up, looked at and sent away.
struct WindowCase {
  using Look = std::function<void(QWidget& window)>;
  const char* name;
  void (*show)(EveryWindow& stage, const Look& look);
};

inline std::ostream& operator<<(std::ostream& out, const WindowCase& each) { return out << each.name; }

/// Runs each test once for each window. The windows are the real ones, brought up from the real main dialog
/// where its menu does so.
class EveryWindow : public MainDialog, public ::testing::WithParamInterface<WindowCase> {
 public:
  void SetUp() override;

  /// Brings the window up, with the keyboard, and calls `look`.
  void Visit(const WindowCase::Look& look);

  // For the table of windows.

  CQuarnDlg& Main() { return dialog; }
  Program& TheProgram() { return program; }
  /// The ports COM1 and up, of which the second is in use where there is one.
  void ListPorts(int count);
  /// A window that a menu item opens.
  void FromMenu(int item, const char* name, const WindowCase::Look& look);
  /// The same for one that keeps the menu item waiting until it is gone.
  void ModalFromMenu(int item, const WindowCase::Look& look);
  /// A window of the test's own.
  static void Own(QDialog& window, const WindowCase::Look& look);
  /// One that `call` brings up and waits for.
  static void Modal(const std::function<void()>& call, const WindowCase::Look& look);
  static void Menu(QWidget& window, QMenu& menu, const WindowCase::Look& look);
};

/// All of them.
const std::vector<WindowCase>& WindowCases();

inline std::string NameOfCase(const ::testing::TestParamInfo<WindowCase>& info) { return info.param.name; }

/// The desktop's colours for as long as it lives: bright ones or dark ones, in a style that uses them.
class Desktop {
 public:
  enum Kind { Bright, Dark };
  explicit Desktop(Kind kind) { Be(kind); }
  ~Desktop();
  Desktop(const Desktop&) = delete;
  Desktop& operator=(const Desktop&) = delete;
  static void Be(Kind kind);

 private:
  QPalette m_before = QApplication::palette();
};

}  // namespace quarn::test
