#pragma once

#include <gtest/gtest.h>

#include <QDateTime>
#include <QFile>
#include <QPointer>
#include <QTemporaryDir>
#include <QTest>
#include <functional>
#include <memory>

#include "dialogs/dialog_context.h"
#include "settings/key_store.h"
#include "settings/settings_table.h"
#include "support/counted_indicator.h"
#include "support/dialog_controls.h"
#include "support/listed_ports.h"
#include "support/recorded_messages.h"
#include "support/scripted_line.h"
#include "support/waits.h"
#include "ui/polled_dialog.h"

namespace quarn::test {

/// The objects that dialogs use, without the rest of the program: the default settings, a working settings
/// file with them, and doubles for lines, messages and waits.
class DialogFixture : public ::testing::Test {
 protected:
  DialogFixture() {
    m_opener.open = [](const QString& /*path*/) { return OpenResult(); };
    EXPECT_TRUE(WriteDefaultFile(m_file));
    settings = DefaultSettings();
    before = File();
    Written();
  }

  [[nodiscard]] DialogContext Context() {
    return {.settings = settings,
            .workingSettingsFile = m_file,
            .connection = connection,
            .state = state,
            .portSource = m_source,
            .environment = {m_opener, messages, m_indicator},
            .pause = [](int /*ms*/) {}};
  }
  /// The working settings file, byte for byte.
  [[nodiscard]] QByteArray File() const { return ReadWholeBytes(m_file).value_or("no file"); }
  /// The file as it was at the start with this line for that one.
  [[nodiscard]] QByteArray FileWith(const QByteArray& line, const QByteArray& changed) const {
    const auto whole = [](const QByteArray& text) { return "\r\n" + text + "\r\n"; };
    EXPECT_EQ(before.count(whole(line)), 1) << line.constData();
    return QByteArray(before).replace(whole(line), whole(changed));
  }
  /// Whether the file has been written since this was last asked; a rewrite of the same bytes counts.
  bool Written() {
    const QDateTime longAgo(QDate(2001, 1, 1), QTime(12, 0));
    QFile file(m_file);
    EXPECT_TRUE(file.open(QIODevice::ReadWrite));
    const bool written = file.fileTime(QFileDevice::FileModificationTime) != longAgo;
    EXPECT_TRUE(file.setFileTime(longAgo, QFileDevice::FileModificationTime));
    return written;
  }
  /// A port is open on this line.
  std::shared_ptr<ScriptedLine> Connect() {
    auto line = std::make_shared<ScriptedLine>(journal);
    connection.handle = PortHandle(line);
    connection.connected.Update(PortChange::Opened);
    settings.comPort = QStringLiteral("COM3");
    state.currentPortName = settings.comPort;
    return line;
  }
  template <typename Condition>
  static bool Until(Condition condition) {
    return WaitUntil(condition);
  }

  SettingsRecord settings;
  PortConnection connection;
  SharedState state;
  RecordedMessages messages;
  Journal journal;
  QByteArray before;  ///< the file at the start

 private:
  QTemporaryDir m_folder;
  const QString m_file = m_folder.filePath(QStringLiteral("Quarn.ini"));
  ListedPorts m_source;
  ScriptedOpener m_opener{journal};
  CountedIndicator m_indicator;
};

}  // namespace quarn::test
