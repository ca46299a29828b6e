#pragma once

#include <QString>
#include <QStringList>

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

}  // namespace quarn
