#pragma once

#include "base/message_operations.h"

namespace quarn {

/// Messages as real boxes over the active window. That window may be closing, or closed, when the call
/// returns.
class WindowMessages final : public MessageOperations {
 public:
  void ShowErrorMessage(const QString& captionSuffix, const QString& line0, const QString& line1,
                        const QString& line2) override;
  void ShowInformationMessage(const QString& captionSuffix, const QString& line0, const QString& line1,
                              const QString& line2) override;
  bool AskConfirmation(const QString& captionSuffix, const QString& line0, const QString& line1,
                       const QString& line2, AnswerByDefault byDefault) override;
  bool AskYesNo(const QString& captionSuffix, const QString& line0, const QString& line1,
                const QString& line2, AnswerByDefault byDefault) override;
  bool AskSimple(const QString& text, AnswerByDefault byDefault) override;
  bool AskSimpleYesNo(const QString& text, AnswerByDefault byDefault) override;
  void ShowTransientMessage(const QString& text, std::optional<QPoint> position) override;
  void ShowPlainMessage(const QString& text) override;
};

}  // namespace quarn
