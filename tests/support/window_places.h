#pragma once

#include <gtest/gtest.h>

#include <QGuiApplication>
#include <QPoint>
#include <QRect>
#include <QScreen>
#include <QTest>
#include <QWidget>

#include "support/waits.h"
#include "ui/placement.h"

namespace quarn::test {

/// The frame comes when the system has time for it; places that count it are looked at after that only.
inline bool FrameIsThere(const QWidget& window) {
  return WaitUntil([&] { return IsFrameKnown(window); });
}

/// Waits until the window, with its frame, stands where `place` says it belongs; `place` is asked again and
/// again, as the frame may change it.
template <typename Place>
::testing::AssertionResult StandsAt(const QWidget& window, Place place) {
  if (WaitUntil([&] { return IsFrameKnown(window) && window.pos() == place(); })) {
    return ::testing::AssertionSuccess();
  }
  return ::testing::AssertionFailure()
         << "it stands at " << window.pos().x() << ',' << window.pos().y() << " instead of " << place().x()
         << ',' << place().y() << (IsFrameKnown(window) ? "" : ", without a frame");
}

/// The same for a place on the primary screen, which need not begin at 0, 0: `place` takes its size.
template <typename Place>
::testing::AssertionResult StandsOnScreen(const QWidget& window, Place place) {
  const QRect screen = QGuiApplication::primaryScreen()->geometry();
  return StandsAt(window, [&] { return screen.topLeft() + place(screen.size()); });
}

}  // namespace quarn::test
