#pragma once

#include <QApplication>
#include <QPointer>
#include <QPushButton>
#include <QTest>
#include <functional>
#include <memory>

#include "app/app_fixture.h"
#include "dialogs/dialog_context.h"
#include "serial/port_list.h"
#include "settings/settings_table.h"
#include "support/dialog_controls.h"
#include "support/noted_pause.h"
#include "support/waits.h"
#include "ui/polled_dialog.h"

namespace quarn::test {

/// The objects that the port dialogs use: ports with real lines, and a working settings file.
class PortDialogTest : public AppTest {
 protected:
  void SetUp() override {
    MakeFolders();
    WriteSettings(program.workingSettingsFile, {});
    program.settings = DefaultSettings();
  }
  ~PortDialogTest() override { delete window.data(); }

  DialogContext Context() {
    return {program.settings,    program.workingSettingsFile, program.connection, program.state,
            *program.portSource, program.Environment(),       std::ref(pause)};
  }
  /// Adds a port with a real line, and lists the ports.
  void Plug(const QString& port) {
    terminals.push_back(std::make_unique<PseudoTerminal>());
    PlugIn(port, *terminals.back());
    List();
  }
  void Unplug(const QString& port) {
    ports.present.removeAll(Adapter(port));
    UnplugPort(PortsFolder(m_folder), port);
    List();
  }
  /// Lists ports that have no line.
  void ListOnly(int count) {
    ports.present = Adapters(count);
    List();
  }
  void List() { ASSERT_TRUE(RefreshPortList(ports, program.connection)); }
  /// Makes this the configured port, also in the file, and opens it.
  void ConnectTo(const QString& port) {
    Configure(port);
    ASSERT_TRUE(UpdateValue(program.workingSettingsFile, keys::kComPort, port));
    ASSERT_TRUE(ConnectPort(program.settings, program.connection, program.Environment()));
    program.connection.connected.Update(PortChange::Opened);
  }
  std::string WorkingFile() { return Bytes(program.workingSettingsFile); }
  /// The file of the defaults with these values.
  std::string FileWith(const QList<std::pair<QString, QString>>& values) {
    const QString path = m_folder + QStringLiteral("expected.ini");
    WriteSettings(path, values);
    return Bytes(path);
  }

  template <typename Dialog>
  Dialog& Show() {
    auto* dialog = new Dialog(nullptr, Context());
    window = dialog;
    ShowActive(*dialog);
    return *dialog;
  }
  QPushButton& Button(int id) { return *Control<QPushButton>(*window, id); }
  void Click(int id) {
    if (window) QTest::mouseClick(&Button(id), Qt::LeftButton);
  }
  bool IsGone() {
    return WaitUntil([this] { return window.isNull(); });
  }
  /// Waits until the dialog has had a tick.
  void WaitForATick() { QTest::qWait(PolledDialog::kTickMs * 3 / 2); }

  NotedPause pause{journal, {}};
  QPointer<QDialog> window;
  std::vector<std::unique_ptr<PseudoTerminal>> terminals;  ///< in the order of plugging in

 private:
  static std::string Bytes(const QString& path) {
    return ReadWholeBytes(path).value_or(QByteArray()).toStdString();
  }
};

inline QString ChoiceConnected(const char* port) {
  return QStringLiteral("information/: Information//Successfully connected to  \"%1\"/")
      .arg(QLatin1String(port));
}
/// `end`: the full stop, where there is one.
inline QString ChoiceFailed(const char* port, const char* end) {
  return QStringLiteral("error/: Error//Failed to connect to \"%1\"%2/Check \"Detailed COM Port List\".")
      .arg(QLatin1String(port), QLatin1String(end));
}

}  // namespace quarn::test
