#pragma once

#include <QString>
#include <QStringList>

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

/// The system's file dialog if there is one, otherwise Qt's. It starts in the requested folder, else in the
/// folder used last, else in the working folder, or, for a program that was started in its own folder, in the
/// user's documents folder.
class FileChooserDialog final : public FileChooser {
 public:
  /// The dialogs are modal to the window `owner` (not owned; may be null), which outlives them.
  explicit FileChooserDialog(QWidget* owner) : m_owner(owner) {}

  QString AskOpenFile(const FileQuestion& question) override;
  QString AskSaveFile(const FileQuestion& question) override;

 private:
  QString Ask(QFileDialog& dialog, const FileQuestion& question);

  QWidget* m_owner;
  QString m_lastFolder;  ///< of the last file that was chosen
};

}  // namespace quarn
