#pragma once

#include <QStringList>
#include <functional>

namespace quarn::test {

/// A pause that takes no time and is noted in the journal. Pass it as std::ref.
struct NotedPause {
  QStringList& journal;
  std::function<void()> during;  ///< called in each pause

  void operator()(int ms) const {
    journal.append(QStringLiteral("pause %1").arg(ms));
    if (during) during();
  }
};

}  // namespace quarn::test
