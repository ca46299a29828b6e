#pragma once

#include <gtest/gtest.h>

#include <QProcess>
#include <QTemporaryDir>

namespace quarn::test {

/// A German locale with an 8-bit encoding, made for this test: the system may not have one.
class MadeLocale {
 public:
  explicit MadeLocale(const char* codeset) : m_name(QStringLiteral("de_DE.") + QLatin1String(codeset)) {
    QProcess maker;
    maker.start(QStringLiteral("localedef"),
                {QStringLiteral("-i"), QStringLiteral("de_DE"), QStringLiteral("-f"), QLatin1String(codeset),
                 m_folder.filePath(m_name)});
    EXPECT_TRUE(maker.waitForFinished() && maker.exitCode() == 0)
        << maker.readAllStandardError().constData() << "\nThe package \"locales\" is needed.";
  }
  void PutInto(QProcessEnvironment& environment) const {
    environment.insert(QStringLiteral("LOCPATH"), m_folder.path());
    environment.insert(QStringLiteral("LC_ALL"), m_name);
  }

 private:
  QTemporaryDir m_folder;
  QString m_name;
};

}  // namespace quarn::test
