#pragma once

#include <QString>
#include <QStringList>
#include <functional>

#include "base/message_operations.h"

class QFileDialog;
class QWidget;

namespace quarn {

/// The content of a file dialog. A filter has the form "displayed text (patterns)": the last pair of brackets
/// has the patterns and is not displayed.
struct FileQuestion {
  QString title;
  QStringList filters;
  QString suffix;       ///< added to a typed name that has none
  QString initialName;  ///< a path or a bare name; may be empty
  QString folder;       ///< the first folder; empty: the folder used last
};

/// Asks the user for a file, on the user-interface thread. An empty text means that they cancelled.
class FileChooser {
 public:
  virtual ~FileChooser() = default;

  /// An existing file.
  virtual QString AskOpenFile(const FileQuestion& question) = 0;
  /// A file to write; an existing one only after the user agreed to overwrite it.
  virtual QString AskSaveFile(const FileQuestion& question) = 0;
};

/// Asks for a file to write with `dialog`, which takes a name as it was typed, and has asked only whether the
/// file of that name may be replaced. The suffix is added here, and the question put for the file with it.
/// After a no the dialog is shown again. An empty text means that the person cancelled.
QString AskSaveFileAndAddSuffix(const FileQuestion& question,
                                const std::function<QString(const FileQuestion&)>& dialog,
                                MessageOperations& messages);

/// The system's file dialog if there is one, otherwise Qt's. It starts in the requested folder, else in the
/// folder used last, else in the working folder, or, for a program that was started in its own folder, in the
/// user's documents folder.
class FileChooserDialog final : public FileChooser {
 public:
  /// The dialogs are modal to the window `owner` (not owned; may be null), which outlives them.
  FileChooserDialog(QWidget* owner, MessageOperations& messages) : m_owner(owner), m_messages(messages) {}

  QString AskOpenFile(const FileQuestion& question) override;
  QString AskSaveFile(const FileQuestion& question) override;

 private:
  QString Ask(QFileDialog& dialog, const FileQuestion& question);
  QString AskSaveFileOnce(const FileQuestion& question);

  QWidget* m_owner;
  MessageOperations& m_messages;
  QString m_lastFolder;  ///< of the last file that was chosen
};

}  // namespace quarn
