#pragma once

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QSaveFile>
#include <QString>
#include <chrono>
#include <optional>
#include <thread>

namespace quarn::test {

/// A port with an instrument, requested from quarn-line-server, or from who serves the same files; its source
/// describes them.
class LineRequest {
 public:
  LineRequest(const QString& port, const QByteArray& rules) : m_port(port) {
    QSaveFile file(Path("rules"));
    EXPECT_TRUE(file.open(QIODevice::WriteOnly)) << "is quarn-line-server running?";
    file.write(rules);
    EXPECT_TRUE(file.commit());
    EXPECT_TRUE(Becomes([this] { return QFile::exists(Path("ready")); })) << "the server gives no port";
    EXPECT_EQ(Contents("ready").toStdString(), "");
  }
  ~LineRequest() {
    // The port is free when the server has closed it.
    EXPECT_TRUE(QFile::remove(Path("rules")));
    EXPECT_TRUE(Becomes([this] { return !QFile::exists(Path("ready")); }));
  }
  LineRequest(const LineRequest&) = delete;
  LineRequest& operator=(const LineRequest&) = delete;

  [[nodiscard]] const QString& Port() const { return m_port; }
  /// What the server says about the port: "received" or "answers".
  [[nodiscard]] QByteArray Contents(const char* kind) const {
    QFile file(Path(kind));
    // The server may replace the file at any moment.
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
  }

 private:
  [[nodiscard]] QString Path(const char* kind) const {
    return QDir::fromNativeSeparators(qEnvironmentVariable("QUARN_LINES")) + QLatin1String("/port-") +
           m_port.toLower() + QLatin1Char('.') + QLatin1String(kind);
  }
  template <typename Condition>
  static bool Becomes(const Condition& condition) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    while (!condition()) {
      if (std::chrono::steady_clock::now() > end) return false;
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return true;
  }

  const QString m_port;
};

}  // namespace quarn::test
