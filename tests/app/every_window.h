#pragma once

#include <QDialog>
#include <functional>
#include <ostream>

#include "app/main_dialog_fixture.h"

namespace quarn::test {

class EveryWindow;

/// A window of the program in one of its states: how it is opened, checked and closed.
struct WindowCase {
  using Look = std::function<void(QWidget& window)>;
  const char* name;
  void (*show)(EveryWindow& stage, const Look& look);
};

inline std::ostream& operator<<(std::ostream& out, const WindowCase& each) { return out << each.name; }

/// Runs each test once for each window. The windows are real, and opened by the real main dialog if its
/// menu opens them.
class EveryWindow : public MainDialog, public ::testing::WithParamInterface<WindowCase> {
 public:
  void SetUp() override;

  /// Opens the window, gives it the keyboard, and calls `look`.
  void Visit(const WindowCase::Look& look);

  // For the table of windows.

  CQuarnDlg& Main() { return dialog; }
  Program& TheProgram() { return program; }
  /// The ports COM1 and up, of which the second is in use where there is one.
  void ListPorts(int count);
  /// A window that a menu item opens.
  void FromMenu(int item, const char* name, const WindowCase::Look& look);
  /// The same for a window whose menu item returns only when it is closed.
  void ModalFromMenu(int item, const WindowCase::Look& look);
  /// A window that the test creates.
  static void Own(QDialog& window, const WindowCase::Look& look);
  /// A window that `call` opens and waits for.
  static void Modal(const std::function<void()>& call, const WindowCase::Look& look);
  static void Menu(QWidget& window, QMenu& menu, const WindowCase::Look& look);
};

/// All of them.
const std::vector<WindowCase>& WindowCases();

inline std::string NameOfCase(const ::testing::TestParamInfo<WindowCase>& info) { return info.param.name; }

/// While it exists, the desktop's colours are bright or dark, in a style that uses them.
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
