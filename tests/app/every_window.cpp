#include "app/every_window.h"

#include <QMenu>
#include <QMenuBar>
#include <QTimer>

#include "app/menu_state.h"
#include "app/splash_page.h"
#include "dialogs/terminal/terminal_screen.h"
#include "serial/port_list.h"
#include "settings/settings_table.h"
#include "support/dialog_controls.h"
#include "support/waits.h"
#include "ui/control_style.h"
#include "ui/message_dialogs.h"
#include "ui/whole_pixels.h"
#include "ui/window_messages.h"

namespace quarn::test {
namespace {

using Look = WindowCase::Look;

constexpr int kLongMs = 600000;
const QString kPlain = QStringLiteral("\"Quarn\" is already open !");
const QString kOneLine = QStringLiteral("Check \"Detailed COM Port List\".");

void ShowMenu(EveryWindow& stage, int number, const Look& look) {
  const auto* bar = stage.Main().findChild<QMenuBar*>();
  EveryWindow::Menu(stage.Main(), *bar->actions().at(number)->menu(), look);
}

void ShowTerminal(EveryWindow& stage, const char* colour, const Look& look) {
  stage.TheProgram().settings.bkColor = QLatin1String(colour);
  stage.TheProgram().log.AppendLogText("[id]\rSIM-1\r");
  stage.TheProgram().commandLine.Paste(QStringLiteral("meas?"), 48);
  stage.FromMenu(command::kTerminalScreen, "CTerminalScreen", look);
}

void ShowTerminalMenu(EveryWindow& stage, const Look& look) {
  stage.FromMenu(command::kTerminalScreen, "CTerminalScreen", [&](QWidget& window) {
    EveryWindow::Menu(window, dynamic_cast<CTerminalScreen&>(window).ContextMenu(), look);
  });
}

void ShowTable(EveryWindow& stage, bool editing, const Look& look) {
  stage.FromMenu(command::kFunctionKeyTable, "CSetMem", [&](QWidget& window) {
    auto* edit = window.findChild<QPushButton*>(QStringLiteral("EDIT"));
    if (editing) QTest::mouseClick(edit, Qt::LeftButton);
    look(window);
    if (editing) QTest::mouseClick(edit, Qt::LeftButton);
  });
}

void ShowWithPorts(EveryWindow& stage, int ports, int item, const char* name, const Look& look) {
  stage.ListPorts(ports);
  stage.FromMenu(item, name, look);
}

template <typename Box>
void ShowBox(const QString& line0, const QString& line1, const QString& line2, const Look& look) {
  Box box(nullptr, QStringLiteral(": Information"), line0, line1, line2);
  EveryWindow::Own(box, look);
}

template <typename Box>
void ShowQuestion(const Look& look) {
  Box box(nullptr);
  EveryWindow::Own(box, look);
}

void ShowTransient(const Look& look) {
  COneshotMsgPos box(nullptr, kOneLine, {}, kLongMs);
  EveryWindow::Own(box, look);
}

void ShowSplash(const Look& look) {
  CSplashPage splash(nullptr, kLongMs);
  EveryWindow::Own(splash, look);
}

}  // namespace

const std::vector<WindowCase>& WindowCases() {
  using E = EveryWindow;
  using L = Look;
  static const std::vector<WindowCase> cases{
      {"MainDialog", [](E& e, const L& look) { E::Own(e.Main(), look); }},
      {"FileMenu", [](E& e, const L& look) { ShowMenu(e, 0, look); }},
      {"PortMenu", [](E& e, const L& look) { ShowMenu(e, 1, look); }},
      {"ToolsMenu", [](E& e, const L& look) { ShowMenu(e, 2, look); }},
      {"OptionMenu", [](E& e, const L& look) { ShowMenu(e, 3, look); }},
      {"HelpMenu", [](E& e, const L& look) { ShowMenu(e, 4, look); }},
      {"TerminalScreenNavy", [](E& e, const L& look) { ShowTerminal(e, "NAVY", look); }},
      {"TerminalScreenBlack", [](E& e, const L& look) { ShowTerminal(e, "BLACK", look); }},
      {"TerminalScreenSystem", [](E& e, const L& look) { ShowTerminal(e, "SYSTEM", look); }},
      {"TerminalMenu", ShowTerminalMenu},
      {"FunctionKeyTable", [](E& e, const L& look) { ShowTable(e, false, look); }},
      {"FunctionKeyTableInEditMode", [](E& e, const L& look) { ShowTable(e, true, look); }},
      {"CommandFormat",
       [](E& e, const L& look) { e.FromMenu(command::kCommandFormat, "CCommandFormat", look); }},
      {"TerminalScreenOption",
       [](E& e, const L& look) { e.FromMenu(command::kScreenOption, "CScreenOption", look); }},
      {"MainDialogOption",
       [](E& e, const L& look) { e.FromMenu(command::kMainOption, "CMainOption", look); }},
      {"PortNumber",
       [](E& e, const L& look) { ShowWithPorts(e, 3, command::kPortNumber, "CPortNum", look); }},
      {"PortNumberWithoutPorts",
       [](E& e, const L& look) { ShowWithPorts(e, 0, command::kPortNumber, "CPortNum", look); }},
      {"DetailedPortList",
       [](E& e, const L& look) { ShowWithPorts(e, 3, command::kDetailedPortList, "CPortDetails", look); }},
      {"DetailedPortListFull",
       [](E& e, const L& look) { ShowWithPorts(e, 30, command::kDetailedPortList, "CPortDetails", look); }},
      {"DetailedPortListEmpty",
       [](E& e, const L& look) { ShowWithPorts(e, 0, command::kDetailedPortList, "CPortDetails", look); }},
      {"PortSettings",
       [](E& e, const L& look) { e.FromMenu(command::kPortSettings, "CPortSettings", look); }},
      {"About", [](E& e, const L& look) { e.ModalFromMenu(command::kAbout, look); }},
      {"Splash", [](E&, const L& look) { ShowSplash(look); }},
      {"Error", [](E&, const L& look) { ShowBox<CConfirmErr>({}, "\"COM3\"", kOneLine, look); }},
      {"Information", [](E&, const L& look) { ShowBox<CConfirmOK>({}, "\"COM3\"", kOneLine, look); }},
      {"Confirmation", [](E&, const L& look) { ShowBox<CConfirmYesCancel>({}, kOneLine, {}, look); }},
      {"YesNo", [](E&, const L& look) { ShowBox<CConfirmYesNo>(kOneLine, {}, {}, look); }},
      {"SimpleConfirmation", [](E&, const L& look) { ShowQuestion<CConfirmSimple>(look); }},
      {"SimpleYesNo", [](E&, const L& look) { ShowQuestion<CYesNo>(look); }},
      {"TextThatScrolls", [](E&, const L& look) { ShowBox<CConfirmOK>({}, QString(8000, u'w'), {}, look); }},
      {"Transient", [](E&, const L& look) { ShowTransient(look); }},
      {"PlainMessage",
       [](E&, const L& look) { E::Modal([] { WindowMessages().ShowPlainMessage(kPlain); }, look); }},
  };
  return cases;
}

void EveryWindow::SetUp() {
  UseVisibleOutlines();
  KeepControlsWhole();
  program.settings = DefaultSettings();
  MainDialog::SetUp();
}

void EveryWindow::Visit(const Look& look) {
  int looked = 0;
  GetParam().show(*this, [&](QWidget& shown) {
    ++looked;
    look(shown);
  });
  EXPECT_EQ(looked, 1) << "the window did not come up";
}

void EveryWindow::ListPorts(int count) {
  ports.present = Adapters(count);
  ASSERT_TRUE(RefreshPortList(ports, program.connection));
  Configure(QStringLiteral("COM2"));
  program.connection.connected.Update(count > 1 ? PortChange::Opened : PortChange::Closed);
}

void EveryWindow::FromMenu(int item, const char* name, const Look& look) {
  Action(item)->trigger();
  ASSERT_EQ(Shown(name).size(), 1) << name;
  auto& opened = dynamic_cast<QDialog&>(*Shown(name).first());
  Own(opened, look);
  opened.close();
  // A window that deletes itself does so in the event loop.
  ASSERT_TRUE(WaitUntil([&] { return Shown(name).isEmpty(); }));
}

void EveryWindow::ModalFromMenu(int item, const Look& look) {
  Modal([&] { Action(item)->trigger(); }, look);
}

void EveryWindow::Own(QDialog& window, const Look& look) {
  ASSERT_NO_FATAL_FAILURE(ShowActive(window));
  // A window counts as active while its owner is active. One of them has the keyboard.
  ASSERT_TRUE(WaitUntil([&] { return QApplication::activeWindow() == &window; }));
  look(window);
}

void EveryWindow::Modal(const std::function<void()>& call, const Look& look) {
  QTimer watch;
  watch.callOnTimeout([&] {
    auto* window = qobject_cast<QDialog*>(QApplication::activeModalWidget());
    if (window == nullptr || !window->isVisible()) return;
    watch.stop();
    Own(*window, look);
    window->close();
  });
  watch.start(1);
  call();
}

void EveryWindow::Menu(QWidget& window, QMenu& menu, const Look& look) {
  menu.popup(window.mapToGlobal(QPoint(20, 20)));
  ASSERT_TRUE(QTest::qWaitForWindowExposed(&menu, kLongestWaitMs));
  look(menu);
  menu.close();
}

Desktop::~Desktop() { QApplication::setPalette(m_before); }

void Desktop::Be(Kind kind) {
  // A palette made from one colour would not change the link and the disabled texts.
  const bool dark = kind == Dark;
  QPalette colours;
  const QColor window = dark ? QColor(50, 50, 54) : QColor(239, 239, 239);
  const QColor base = dark ? QColor(30, 30, 33) : QColor(255, 255, 255);
  const QColor text = dark ? QColor(238, 238, 238) : QColor(0, 0, 0);
  const QColor faint = dark ? QColor(130, 130, 130) : QColor(150, 150, 150);
  for (const auto role : {QPalette::Window, QPalette::Button}) colours.setColor(role, window);
  for (const auto role : {QPalette::Base, QPalette::ToolTipBase}) colours.setColor(role, base);
  colours.setColor(QPalette::AlternateBase, window);
  for (const auto role :
       {QPalette::WindowText, QPalette::Text, QPalette::ButtonText, QPalette::ToolTipText}) {
    colours.setColor(role, text);
    colours.setColor(QPalette::Disabled, role, faint);
  }
  QApplication::setPalette(colours);
}

}  // namespace quarn::test
