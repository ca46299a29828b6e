#pragma once

#include <QString>
#include <QTemporaryDir>
#include <optional>

namespace quarn {

/// The data folder of one demo: a temporary one with settings of its own, removed with the object. Nothing of
/// the user's own is read or changed.
class DemoFolder {
 public:
  DemoFolder();
  /// Ends with a separator; empty if it could not be made.
  [[nodiscard]] const QString& Path() const { return m_path; }
  /// Why there is none, as one sentence for the user.
  [[nodiscard]] QString WhyNot() const;

 private:
  std::optional<QTemporaryDir> m_folder;
  QString m_path;
  QString m_whyNot;
};

}  // namespace quarn
