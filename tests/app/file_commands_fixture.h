#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <memory>

#include "app/file_commands.h"
#include "serial/port_list.h"
#include "settings/key_store.h"
#include "settings/settings_load_save.h"
#include "settings/settings_table.h"
#include "settings/settings_test_support.h"
#include "support/counted_indicator.h"
#include "support/listed_ports.h"
#include "support/message_texts.h"
#include "support/recorded_messages.h"
#include "support/recorded_window.h"
#include "support/scripted_chooser.h"
#include "support/scripted_line.h"

namespace quarn::test {

inline const QString kProceed =
    QStringLiteral("yes or no/: Confirmation//Settings have been changed./Proceed without saving?");
inline const QString kExit =
    QStringLiteral("yes or no/: Confirmation//Settings have been changed./Exit program without saving?");
inline const QString kRestore =
    QStringLiteral("yes or no/: Confirmation//Are you sure you want to restore the default settings?/");
inline const QString kRestored = QStringLiteral("transient/Loaded the initial default settings.");
inline const QString kNotSaved =
    QStringLiteral("error/: Error//Could not save to the QRN file!/Destination folder error.");

/// A program that is connected to COM7 in the internal configuration state.
class FileCommandsTest : public SettingsFileTest {
 protected:
  FileCommandsTest() {
    auto recorded = std::make_unique<RecordedMessages>();
    messages = recorded.get();
    program = std::make_unique<Program>(Path(QString()) + QLatin1Char('/'),
                                        std::make_unique<ScriptedOpener>(journal),
                                        std::make_unique<ListedPorts>(Adapters({"COM3", "COM7"})),
                                        std::move(recorded), std::make_unique<CountedIndicator>());
    window.userFile = [this] { return program->userFile; };
    commands = std::make_unique<FileCommands>(*program, window, chooser);
  }
  void SetUp() override {
    WithPort("COM7", QStringLiteral("Quarn.ini"));
    ASSERT_EQ(LoadSettings(program->workingSettingsFile, program->settings), LoadResult::Loaded);
    ASSERT_TRUE(RefreshPortList(*program->portSource, program->connection));
    program->state.currentPortName = QStringLiteral("COM7");
    ASSERT_TRUE(OpenPort(program->settings, program->connection, program->Environment()));
    program->connection.connected.Update(PortChange::Opened);
  }

  /// A default file that names this port.
  QString WithPort(const char* port, const QString& name = QStringLiteral("user.qrn")) const {
    return WithBytes(
        NormalisedBytes(SortedDefaults()).replace("COM_PORT=NONE", QByteArray("COM_PORT=") + port), name);
  }
  /// Puts a user file in force, with a change or two that are not saved to it.
  QString InForceAndChanged() const {
    program->userFile = WithPort("COM3", QStringLiteral("in-force.qrn"));
    return program->userFile;
  }
  QString InForce() const {
    program->userFile = WithPort("COM7", QStringLiteral("in-force.qrn"));
    return program->userFile;
  }
  [[nodiscard]] QByteArray WorkingBytes() const { return BytesOf(program->workingSettingsFile); }
  [[nodiscard]] bool WasClosed() const {
    const auto entries = journal.Entries();
    return std::find(entries.begin(), entries.end(), "close") != entries.end();
  }
  [[nodiscard]] WindowRequests& Requests() const { return program->state.requests; }
  [[nodiscard]] bool AllWindowsAreToldOfTheSettings() const {
    const WindowRequests& asked = Requests();
    return asked.refresh.Contains(Window::MainDialog) && asked.refresh.Contains(Window::TerminalScreen) &&
           asked.refresh.Contains(Window::PortNumber) && asked.refresh.Contains(Window::DetailedPortList) &&
           asked.refresh.Contains(Window::PortSettings) && asked.refresh.Contains(Window::CommandFormat) &&
           asked.refresh.Contains(Window::ScreenOption) && asked.refresh.Contains(Window::MainOption) &&
           asked.refresh.Contains(Window::FunctionKeyTable);
  }

  Journal journal;
  RecordedMessages* messages = nullptr;
  std::unique_ptr<Program> program;
  QStringList calls;  ///< of the window
  RecordedWindow window{calls};
  ScriptedChooser chooser;
  std::unique_ptr<FileCommands> commands;
};

}  // namespace quarn::test
