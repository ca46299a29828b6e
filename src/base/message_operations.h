#pragma once

#include <QPoint>
#include <QString>
#include <optional>

namespace quarn {

/// The answer that Enter gives to a question unless its person chooses the other: the one that loses nothing.
enum class AnswerByDefault {
  Agree,
  Refuse,         ///< agreeing can lose something
  AgreeUncalled,  ///< the question comes by itself: a letter in its first half second is no answer to it
};

/// Everything the program ever tells or asks its user in a box of its own. Plain Qt Core, so that every
/// layer may call it and every test may answer it. All calls are made on the user-interface thread and
/// return when the box is gone.
///
/// A caption is made of the program's name, one blank and `captionSuffix` (": Error", ": Information",
/// ": Warning", ": Confirmation"). On screen the lines stand in the order line1, line0, line2.
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
  /// One line that goes away by itself after 2000 ms; centred, or at `position` (screen coordinates).
  virtual void ShowTransientMessage(const QString& text, std::optional<QPoint> position = {}) = 0;
  /// A plain box with the program's name as caption and one OK button.
  virtual void ShowPlainMessage(const QString& text) = 0;
};

}  // namespace quarn
