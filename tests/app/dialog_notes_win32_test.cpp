#include <windows.h>
//
#include <gtest/gtest.h>

#include <QApplication>
#include <QDialog>
#include <QSettings>
#include <QTemporaryDir>
#include <QTimer>

#include "app/dialog_notes.h"
#include "app/file_chooser.h"
#include "support/recorded_messages.h"

namespace quarn::test {
namespace {

constexpr wchar_t kKey[] = L"Software\\QtProject";

bool IsThere() {
  HKEY key = nullptr;
  if (RegOpenKeyExW(HKEY_CURRENT_USER, kKey, 0, KEY_READ, &key) != ERROR_SUCCESS) return false;
  RegCloseKey(key);
  return true;
}

/// What programs that use Qt have noted.
QStringList Notes() {
  const QSettings notes(QStringLiteral("HKEY_CURRENT_USER\\Software\\QtProject"), QSettings::NativeFormat);
  QStringList found;
  for (const QString& key : notes.allKeys()) {
    found.append(key + u'=' + notes.value(key).toStringList().join(u'|'));
  }
  return found;
}

/// Another program that uses Qt has notes.
void MakeNotesOfOthers() {
  RegDeleteTreeW(HKEY_CURRENT_USER, kKey);
  QSettings others(QSettings::UserScope, QStringLiteral("QtProject"));
  others.setValue(QStringLiteral("FileDialog/lastVisited"), QStringLiteral("file:///C:/elsewhere"));
  others.setValue(QStringLiteral("FileDialog/history"),
                  QStringList{QStringLiteral("file:///C:/one"), QStringLiteral("file:///C:/two")});
  others.setValue(QStringLiteral("Other/value"), 7);
}

/// Asks for a file, and is answered with Escape.
void AskAndCancel() {
  QApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
  const QTemporaryDir folder;
  RecordedMessages messages;
  FileChooserDialog chooser(nullptr, messages);
  QTimer timer;
  bool wasShown = false;
  QObject::connect(&timer, &QTimer::timeout, &timer, [&wasShown] {
    auto* dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget());
    if (dialog == nullptr || !dialog->isVisible()) return;
    wasShown = true;
    dialog->reject();
  });
  timer.start(20);
  EXPECT_EQ(chooser.AskOpenFile({QStringLiteral("A title"),
                                 {QStringLiteral("All Files (*.*) (*)")},
                                 QStringLiteral("qrn"),
                                 QString(),
                                 folder.path()}),
            QString());
  EXPECT_TRUE(wasShown);
}

// The tests have a registry of their own.

TEST(DialogNotes, AFileDialogLeavesNothingInTheRegistry) {
  RegDeleteTreeW(HKEY_CURRENT_USER, kKey);
  ASSERT_FALSE(IsThere());
  AskAndCancel();
  EXPECT_FALSE(IsThere()) << Notes().join(u'\n').toStdString();
}

TEST(DialogNotes, AFileDialogLeavesThoseOfOtherProgramsAsTheyAre) {
  MakeNotesOfOthers();
  const QStringList before = Notes();
  ASSERT_EQ(before.size(), 3);
  { const DialogNotesUndone noDialogCame; }
  EXPECT_EQ(Notes(), before);
  AskAndCancel();
  EXPECT_EQ(Notes(), before);
  RegDeleteTreeW(HKEY_CURRENT_USER, kKey);
}

}  // namespace
}  // namespace quarn::test
