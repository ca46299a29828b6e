#pragma once

#include <QStringList>
#include <functional>

#include "terminal/transaction.h"

namespace quarn {

/// Whoever waits for a transaction: counts what it is asked for, and answers as a test says.
class ScriptedHost final : public TransactionHost {
 public:
  int caret = -1;
  /// Looks at the ESC key before it is found pressed; 0: never pressed.
  int escapeAtLook = 0;
  /// Run once, at the first chance to paint.
  std::function<void()> whilePainting;

  int begun = 0;
  int ended = 0;
  int painted = 0;
  int looks = 0;
  QStringList texts;
  bool outsideWait = false;  ///< something was asked for while no wait was on

  [[nodiscard]] bool IsWaiting() const { return begun == ended + 1; }

  void BeginWait() override { ++begun; }
  void EndWait() override { ++ended; }
  void KeepPainting() override {
    NoteOrder();
    ++painted;
    if (whilePainting) std::exchange(whilePainting, nullptr)();
  }
  void ShowWaitingText(const QString& text) override {
    NoteOrder();
    texts.append(text);
  }
  [[nodiscard]] int CaretPosition() const override { return caret; }
  bool EscapePressed() override {
    NoteOrder();
    return ++looks == escapeAtLook;
  }

 private:
  void NoteOrder() { outsideWait = outsideWait || !IsWaiting(); }
};

/// Keeps nothing, so that a long run needs no memory for it.
class SilentHost final : public TransactionHost {
 public:
  void BeginWait() override {}
  void EndWait() override {}
  void KeepPainting() override {}
  void ShowWaitingText(const QString& /*text*/) override {}
  [[nodiscard]] int CaretPosition() const override { return -1; }
  bool EscapePressed() override { return false; }
};

}  // namespace quarn
