#pragma once

#include <QStringList>
#include <chrono>
#include <functional>

#include "terminal/transaction.h"

namespace quarn {

/// Waits for a transaction: counts its calls, and answers as the test sets it.
class ScriptedHost final : public TransactionHost {
 public:
  int caret = -1;
  /// The check at which the ESC key is pressed; 0: never.
  int escapeAtLook = 0;
  /// Called once, at the first call to paint.
  std::function<void()> whilePainting;

  int begun = 0;
  int ended = 0;
  int painted = 0;
  std::chrono::steady_clock::duration paintingTime{};  ///< how long windows could paint
  int looks = 0;
  QStringList texts;
  bool outsideWait = false;  ///< there was a call outside a wait

  [[nodiscard]] bool IsWaiting() const { return begun == ended + 1; }

  void BeginWait() override { ++begun; }
  void EndWait() override { ++ended; }
  bool PaintUntilClear(const WaitableFlag& flag, std::chrono::steady_clock::time_point until) override {
    NoteOrder();
    ++painted;
    if (whilePainting) std::exchange(whilePainting, nullptr)();
    const auto from = std::chrono::steady_clock::now();
    const bool clear = flag.WaitClear(until);
    paintingTime += std::chrono::steady_clock::now() - from;
    return clear;
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

/// Records nothing, so that a long run needs no memory for it.
class SilentHost final : public TransactionHost {
 public:
  void BeginWait() override {}
  void EndWait() override {}
  bool PaintUntilClear(const WaitableFlag& flag, std::chrono::steady_clock::time_point until) override {
    return flag.WaitClear(until);
  }
  void ShowWaitingText(const QString& /*text*/) override {}
  [[nodiscard]] int CaretPosition() const override { return -1; }
  bool EscapePressed() override { return false; }
};

}  // namespace quarn
