#pragma once

#include "app/file_chooser.h"

class QFileDialog;
class QWidget;

namespace quarn {

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
