#include <QAction>
#include <QLayout>
#include <QMenuBar>
#include <QUrl>

#include "app/about_box.h"
#include "app/connection_commands.h"
#include "app/main_dialog.h"
#include "app/menu_state.h"
#include "app/platform.h"
#include "settings/setting_values.h"
#include "ui/box.h"
#include "ui/controls.h"

namespace quarn {

struct CQuarnDlg::MenuItem {
  enum Group { Same, Next };  // a line is drawn before the next group
  int menu;
  Group group;
  int commandId;
  const char* text;
  const char* name;
  void (*run)(CQuarnDlg&);
};

const std::vector<CQuarnDlg::MenuItem>& CQuarnDlg::MenuItems() {
  enum { File, Port, Tools, Option, Help };
  using Dlg = CQuarnDlg;
  using enum MenuItem::Group;
  static const std::vector<MenuItem> items{
      {File, Same, command::kOpen, "&Open", "open", [](Dlg& d) { d.m_files.Open(); }},
      {File, Same, command::kSave, "&Save", "save", [](Dlg& d) { d.m_files.Save(); }},
      {File, Same, command::kSaveAs, "Save &As", "saveAs", [](Dlg& d) { d.m_files.SaveAs(); }},
      {File, Same, command::kCloseFile, "&Close File", "closeFile", [](Dlg& d) { d.m_files.CloseFile(); }},
      {File, Next, command::kRestoreDefaults, "&Restore Defaults", "restoreDefaults",
       [](Dlg& d) { d.m_files.RestoreDefaults(); }},
      {File, Next, command::kExit, "E&xit", "exit", [](Dlg& d) { d.close(); }},
      {Port, Same, command::kPortNumber, "COM Port &Number", "portNumber",
       [](Dlg& d) { d.OpenPortNumber(); }},
      {Port, Same, command::kDetailedPortList, "Detailed COM Port &List", "detailedPortList",
       [](Dlg& d) { d.OpenDetailedPortList(); }},
      {Port, Next, command::kConnect, "&Connect COM Port", "connectPort",
       [](Dlg& d) { Connect(d.m_program); }},
      {Port, Same, command::kDisconnect, "&Disconnect COM Port", "disconnectPort",
       [](Dlg& d) { Disconnect(d.m_program); }},
      {Port, Next, command::kPortSettings, "COM Port &Settings", "portSettings",
       [](Dlg& d) { d.OpenPortSettings(); }},
      {Port, Same, command::kReset, "&Reset Current COM Port", "resetPort",
       [](Dlg& d) { Reset(d.m_program, d, d.PauseHoldingInput()); }},
      {Tools, Same, command::kTerminalScreen, "&Terminal Screen", "terminalScreen",
       [](Dlg& d) { d.OpenTerminalScreen(); }},
      {Tools, Same, command::kFunctionKeyTable, "&Function Key Table", "functionKeyTable",
       [](Dlg& d) { d.OpenFunctionKeyTable(); }},
      {Option, Same, command::kCommandFormat, "Command Format  (&F)", "commandFormat",
       [](Dlg& d) { d.OpenCommandFormat(); }},
      {Option, Same, command::kScreenOption, "Terminal Screen Option  (&T)", "screenOption",
       [](Dlg& d) { d.OpenScreenOption(); }},
      {Option, Same, command::kMainOption, "Main Dialog Option (&M)", "mainOption",
       [](Dlg& d) { d.OpenMainOption(); }},
      {Help, Same, command::kAbout, "&About", "about", [](Dlg& d) { d.ShowAbout(); }},
  };
  return items;
}

void CQuarnDlg::CreateMenus() {
  m_menuBar = new QMenuBar(this);
  // In the window, even if the desktop would show it elsewhere: the start checks its width.
  m_menuBar->setNativeMenuBar(false);
  std::vector<QMenu*> menus;
  for (const char* title : {"&File", "&Port", "&Tools", "&Option", "&Help"}) {
    menus.push_back(m_menuBar->addMenu(QString::fromLatin1(title)));
    menus.back()->setAccessibleName(QString::fromLatin1(title + 1));
  }
  for (const MenuItem& item : MenuItems()) {
    QMenu* menu = menus.at(static_cast<std::size_t>(item.menu));
    if (item.group == MenuItem::Next) menu->addSeparator();
    QAction* action = menu->addAction(QString::fromLatin1(item.text), this,
                                      [this, &item] { RunWhenFree([this, &item] { item.run(*this); }); });
    action->setObjectName(QString::fromLatin1(item.name));
    m_actions.push_back(WithControlId(action, item.commandId));
  }
  layout()->setMenuBar(m_menuBar);
  AddWindowMenuItem(*this, QStringLiteral("Quarnについて(&A)..."), QStringLiteral("About Quarn(&A)..."),
                    [this] { RunWhenFree([this] { ShowAbout(); }); });
}

void CQuarnDlg::UpdateMenuState() {
  const MenuFacts facts{
      .userFileInForce = !m_program.userFile.isEmpty(),
      .connected = m_program.connection.connected.IsSet(),
      .portConfigured = m_program.state.currentPortName != kNoPort,
      .terminalScreenOpen = m_program.state.open.Contains(Window::TerminalScreen),
      .functionKeyTableOpen = m_program.state.open.Contains(Window::FunctionKeyTable),
  };
  for (std::size_t i = 0; i < m_actions.size(); ++i) {
    m_actions[i]->setEnabled(IsCommandEnabled(MenuItems()[i].commandId, facts));
  }
}

bool CQuarnDlg::MenuBarWraps() {
  layout()->activate();
  const QList<QAction*> titles = m_menuBar->actions();
  const QRect first = m_menuBar->actionGeometry(titles.first());
  const QRect last = m_menuBar->actionGeometry(titles.last());
  // A hidden item does not fit on the line.
  const bool cutOff = !m_menuBar->rect().contains(last.center()) || last.isNull();
  return cutOff || first.top() != last.top();
}

void CQuarnDlg::ShowAbout() {
  CAboutBox box(&OpenPage, *m_program.messages);
  RunBox(box);
}

}  // namespace quarn
