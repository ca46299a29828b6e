#pragma once

#include <QComboBox>

#include "dialogs/port_dialog_fixture.h"
#include "dialogs/serial/port_settings_dialog.h"
#include "settings/settings_load_save.h"
#include "support/message_texts.h"

namespace quarn::test {

inline constexpr int kBps = 1066;
inline constexpr int kBits = 1006;
inline constexpr int kParity = 1007;
inline constexpr int kStop = 1008;
inline constexpr int kDefault = 1001;
inline constexpr int kSetLine = 1084;
inline constexpr int kOkLine = 1002;

inline const QString kDefaultQuestion =
    QStringLiteral("question/: Confirmation//Are you sure you want to restore the default settings? /");
inline const QString kSaveQuestion = QStringLiteral(
    "question/: Confirmation//Settings have been changed./Is it OK to save this configuration?");
inline const QString kReset = QStringLiteral("transient/Settings have been reset to default values.");

inline const QString kSetStateFailed = QStringLiteral("plain/Failed to set serial port state");

class PortSettingsDialog : public PortDialogTest {
 protected:
  CPortSettings& Open() { return Show<CPortSettings>(); }
  QComboBox& Box(int id) { return *Control<QComboBox>(*window, id); }
  QStringList Shown() {
    QStringList shown;
    for (const int id : {kBps, kBits, kParity, kStop}) shown.append(Box(id).currentText());
    return shown;
  }
  QStringList Choices(int id) {
    QStringList choices;
    for (int i = 0; i < Box(id).count(); ++i) choices.append(Box(id).itemText(i));
    return choices;
  }
  /// The file of the defaults with these values, after all settings were saved into it.
  std::string SavedFile(QList<std::pair<QString, QString>> values) {
    values.append({"FUNC_KEY", program.settings.enblNull});
    return FileWith(values);
  }
  /// The parameters of the open line; default values if none is open.
  LineState OpenLineState() {
    LineState state{};
    EXPECT_TRUE(program.connection.handle.IsOpen());
    if (program.connection.handle.IsOpen()) {
      EXPECT_TRUE(program.connection.handle.Line()->GetState(state));
    }
    return state;
  }
  /// Picks a choice with the keyboard.
  void Pick(int id, const QString& choice) {
    Box(id).setFocus();
    QTest::keyClick(&Box(id), Qt::Key_Home);
    for (int i = 0; i < Box(id).count() && Box(id).currentText() != choice; ++i) {
      QTest::keyClick(&Box(id), Qt::Key_Down);
    }
    ASSERT_EQ(Box(id).currentText(), choice);
  }
};

}  // namespace quarn::test
