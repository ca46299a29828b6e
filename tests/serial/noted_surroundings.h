#pragma once

#include <QString>
#include <optional>
#include <string>

#include "base/message_operations.h"
#include "base/wait_indicator.h"
#include "serial/scripted_line.h"

namespace quarn {

class NotedMessages final : public MessageOperations {
 public:
  explicit NotedMessages(Journal& journal) : m_journal(journal) {}
  void ShowErrorMessage(const QString&, const QString&, const QString&, const QString&) override {
    m_journal.Note("error box");
  }
  void ShowInformationMessage(const QString&, const QString&, const QString&, const QString&) override {
    m_journal.Note("information box");
  }
  bool AskConfirmation(const QString&, const QString&, const QString&, const QString&,
                       AnswerByDefault) override {
    m_journal.Note("question");
    return false;
  }
  bool AskYesNo(const QString&, const QString&, const QString&, const QString&, AnswerByDefault) override {
    m_journal.Note("yes or no");
    return false;
  }
  bool AskSimple(const QString&, AnswerByDefault) override {
    m_journal.Note("simple question");
    return false;
  }
  bool AskSimpleYesNo(const QString&, AnswerByDefault) override {
    m_journal.Note("simple yes or no");
    return false;
  }
  void ShowTransientMessage(const QString&, std::optional<QPoint>) override { m_journal.Note("transient"); }
  void ShowPlainMessage(const QString& text) override { m_journal.Note("plain: " + text.toStdString()); }

 private:
  Journal& m_journal;
};

class NotedIndicator final : public WaitIndicator {
 public:
  explicit NotedIndicator(Journal& journal) : m_journal(journal) {}
  void Show() override { m_journal.Note("wait shown"); }
  void Restore() override { m_journal.Note("wait restored"); }

 private:
  Journal& m_journal;
};

}  // namespace quarn
