#pragma once

#include <QString>
#include <QStringList>

namespace quarn {

/// What a file dialog shows. A filter reads "what is displayed (patterns)": the last pair of brackets
/// holds the patterns that count and is not displayed.
struct FileQuestion {
  QString title;
  QStringList filters;
  QString suffix;       ///< given to a typed name that has none
  QString initialName;  ///< a path or a bare name; may be empty
  QString folder;       ///< where to begin; empty: where the last file was chosen
};

/// Asks the person for a file, on the user-interface thread. An empty text means that they cancelled.
class FileChooser {
 public:
  virtual ~FileChooser() = default;

  /// A file that is there.
  virtual QString AskOpenFile(const FileQuestion& question) = 0;
  /// A file that may be written: one that is there only after the person agreed to overwrite it.
  virtual QString AskSaveFile(const FileQuestion& question) = 0;
};

}  // namespace quarn
