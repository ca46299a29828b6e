#pragma once

#include <gtest/gtest.h>

#include <QFile>
#include <QStringList>
#include <QTemporaryDir>
#include <optional>
#include <thread>

#include "app/start_requests.h"
#include "support/waits.h"

namespace quarn::test {

/// A receiver in a session and with settings of its own, where the system has folders for them: requests go
/// through these.
class StartRequestsTest : public testing::Test {
 protected:
  StartRequestsTest() {
    UseSession(m_session.path());
    UseSettings(m_settings.path());
  }
  ~StartRequestsTest() override {
    Set("XDG_RUNTIME_DIR", m_formerSession);
    Set("XDG_CONFIG_HOME", m_formerSettings);
  }
  static void UseSession(const QString& folder) { Set("XDG_RUNTIME_DIR", QFile::encodeName(folder)); }
  static void UseSettings(const QString& folder) { Set("XDG_CONFIG_HOME", QFile::encodeName(folder)); }
  void Listen() {
    m_requests.emplace([this](const QString& file) { m_asked.append(file); });
  }
  /// As another process does: the thread that receives is free meanwhile.
  bool Ask(const QString& file) {
    const qsizetype before = m_asked.size();
    std::optional<bool> answered;
    std::thread other([&] { answered = AskRunningProgram(file); });
    WaitUntil([&] { return m_asked.size() > before; });
    other.join();
    return answered.value_or(false);
  }

  QTemporaryDir m_session;
  QTemporaryDir m_settings;
  std::optional<StartRequests> m_requests;
  QStringList m_asked;

 private:
  static void Set(const char* name, const QByteArray& value) {
    value.isNull() ? qunsetenv(name) : qputenv(name, value);
  }

  const QByteArray m_formerSession = qgetenv("XDG_RUNTIME_DIR");
  const QByteArray m_formerSettings = qgetenv("XDG_CONFIG_HOME");
};

}  // namespace quarn::test
