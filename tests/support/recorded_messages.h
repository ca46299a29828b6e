#pragma once

#include <QStringList>
#include <deque>
#include <functional>
#include <initializer_list>
#include <vector>

#include "base/message_operations.h"
#include "support/readable_text.h"

namespace quarn::test {

/// Records messages instead of showing them, one text each: kind, suffix and lines, separated by "/".
/// Questions get the prepared answers, and then No. `defaults` has the default answer of each question.
class RecordedMessages final : public MessageOperations {
 public:
  QStringList shown;
  std::deque<bool> answers;
  std::vector<AnswerByDefault> defaults;
  /// Called while a message is shown, as a timer of another window would be.
  std::function<void()> whileShown;

  void ShowErrorMessage(const QString& captionSuffix, const QString& line0, const QString& line1,
                        const QString& line2) override {
    Record(QStringLiteral("error"), {captionSuffix, line0, line1, line2});
  }
  void ShowInformationMessage(const QString& captionSuffix, const QString& line0, const QString& line1,
                              const QString& line2) override {
    Record(QStringLiteral("information"), {captionSuffix, line0, line1, line2});
  }
  bool AskConfirmation(const QString& captionSuffix, const QString& line0, const QString& line1,
                       const QString& line2, AnswerByDefault byDefault) override {
    defaults.push_back(byDefault);
    Record(QStringLiteral("question"), {captionSuffix, line0, line1, line2});
    return NextAnswer();
  }
  bool AskYesNo(const QString& captionSuffix, const QString& line0, const QString& line1,
                const QString& line2, AnswerByDefault byDefault) override {
    defaults.push_back(byDefault);
    Record(QStringLiteral("yes or no"), {captionSuffix, line0, line1, line2});
    return NextAnswer();
  }
  bool AskSimple(const QString& text, AnswerByDefault byDefault) override {
    defaults.push_back(byDefault);
    Record(QStringLiteral("simple question"), {text});
    return NextAnswer();
  }
  bool AskSimpleYesNo(const QString& text, AnswerByDefault byDefault) override {
    defaults.push_back(byDefault);
    Record(QStringLiteral("simple yes or no"), {text});
    return NextAnswer();
  }
  void ShowTransientMessage(const QString& text, std::optional<QPoint> /*position*/) override {
    Record(QStringLiteral("transient"), {text});
  }
  void ShowPlainMessage(const QString& text) override { Record(QStringLiteral("plain"), {text}); }

 private:
  /// In a way that ends in an exception if there is no memory.
  void Record(const QString& kind, std::initializer_list<QStringView> texts) {
    QString entry = kind;
    for (const QStringView text : texts) entry.append(u'/').append(text);
    shown.append(entry);
    if (whileShown) whileShown();
  }
  bool NextAnswer() {
    if (answers.empty()) return false;
    const bool answer = answers.front();
    answers.pop_front();
    return answer;
  }
};

}  // namespace quarn::test
