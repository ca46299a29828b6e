#pragma once

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QStringList>
#include <QTemporaryDir>
#include <functional>
#include <memory>
#include <utility>

#include "app/program.h"
#include "serial/platform_serial.h"
#include "settings/data_folder.h"
#include "settings/key_store.h"
#include "settings/settings_load_save.h"
#include "support/counted_indicator.h"
#include "support/listed_ports.h"
#include "support/message_texts.h"
#include "support/plugged_port.h"
#include "support/recorded_messages.h"
#include "support/recorded_window.h"

namespace quarn::test {

/// The program's objects with a folder of their own. The links in its ports folder lead to real lines.
/// Messages, window and port list are doubles. One journal notes all events in order.
class AppTest : public ::testing::Test {
 protected:
  AppTest()
      : m_folder(m_scratch.filePath(QStringLiteral("config/"))),
        program(m_folder, CreateLineOpener(PortsFolder(m_folder)), std::make_unique<ListedPorts>(),
                std::make_unique<RecordedMessages>(), std::make_unique<CountedIndicator>()),
        ports(static_cast<ListedPorts&>(*program.portSource)),
        messages(static_cast<RecordedMessages&>(*program.messages)),
        indicator(static_cast<CountedIndicator&>(*program.waitIndicator)) {
    messages.whileShown = [this] {
      journal.append(messages.shown.last());
      if (whileShown) whileShown();
    };
  }

  /// Makes the data folder with the ports folder in it.
  void MakeFolders() { ASSERT_TRUE(QDir().mkpath(PortsFolder(m_folder))); }
  /// Writes the working settings file: the defaults with these values.
  void WriteSettings(const QString& path, const QList<std::pair<QString, QString>>& values) {
    ASSERT_TRUE(WriteDefaultFile(path));
    for (const auto& [key, value] : values) {
      const QString text = key + QLatin1Char('=');
      ASSERT_TRUE(UpdateValue(path, SettingsKey(text), value));
    }
  }
  /// Makes the pseudo-terminal reachable as this port, and lists it.
  void PlugIn(const QString& port, const PseudoTerminal& terminal) {
    PlugPort(PortsFolder(m_folder), port, terminal);
    ports.present.append(Adapter(port));
  }
  void Configure(const QString& port) {
    program.settings.comPort = port;
    program.state.currentPortName = port;
  }
  /// Returns the journal and empties it.
  QStringList Happened() { return std::exchange(journal, {}); }

 private:
  QTemporaryDir m_scratch;

 protected:
  const QString m_folder;
  QStringList journal;
  Program program;
  ListedPorts& ports;
  RecordedMessages& messages;
  CountedIndicator& indicator;
  RecordedWindow window{journal};
  std::function<void()> whileShown;
};

}  // namespace quarn::test
