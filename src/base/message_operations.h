#pragma once

#include <QPoint>
#include <QString>
#include <optional>

namespace quarn {

/// The answer to a question that Enter gives by default: the one that loses nothing.
enum class AnswerByDefault {
  Agree,
  Refuse,         ///< agreeing can lose data
  AgreeUncalled,  ///< opens without a user action: letters in the first half second do not answer it
};

/// All messages and questions that the program shows in boxes. Plain Qt Core, so that every layer may call it
/// and every test may answer it. Call on the user-interface thread; calls return when the box is closed.
///
/// A caption is the program's name, one blank and `captionSuffix` (": Error", ": Information", ": Warning",
/// ": Confirmation"). The lines are shown in the order line1, line0, line2.
class MessageOperations {
 public:
  virtual ~MessageOperations() = default;

  virtual void ShowErrorMessage(const QString& captionSuffix, const QString& line0, const QString& line1,
                                const QString& line2) = 0;
  virtual void ShowInformationMessage(const QString& captionSuffix, const QString& line0,
                                      const QString& line1, const QString& line2) = 0;
  /// OK and CANCEL. True only when OK was pressed.
  virtual bool AskConfirmation(const QString& captionSuffix, const QString& line0, const QString& line1,
                               const QString& line2, AnswerByDefault byDefault = AnswerByDefault::Agree) = 0;
  /// YES and NO. True only when YES was pressed.
  virtual bool AskYesNo(const QString& captionSuffix, const QString& line0, const QString& line1,
                        const QString& line2, AnswerByDefault byDefault = AnswerByDefault::Agree) = 0;
  /// One line with OK and CANCEL, under a caption of its own. True only when OK was pressed.
  virtual bool AskSimple(const QString& text, AnswerByDefault byDefault = AnswerByDefault::Agree) = 0;
  /// One line with YES and NO, under a caption of its own. True only when YES was pressed.
  virtual bool AskSimpleYesNo(const QString& text, AnswerByDefault byDefault = AnswerByDefault::Agree) = 0;
  /// One line that closes automatically after 2000 ms; centred, or at `position` (screen coordinates).
  virtual void ShowTransientMessage(const QString& text, std::optional<QPoint> position = {}) = 0;
  /// A plain box with the program's name as caption and one OK button.
  virtual void ShowPlainMessage(const QString& text) = 0;
};

}  // namespace quarn
