#include "app/start_requests_fixture.h"

namespace quarn::test {
namespace {

TEST_F(StartRequestsTest, ReachTheProgramThatRuns) {
  Listen();
  EXPECT_TRUE(Ask(QStringLiteral("/home/me/Pr\u00fcf stand/\u6e2c\u5b9a 1.qrn")));
  EXPECT_TRUE(Ask(QString()));
  EXPECT_EQ(m_asked, (QStringList{QStringLiteral("/home/me/Pr\u00fcf stand/\u6e2c\u5b9a 1.qrn"), QString()}));
}

TEST_F(StartRequestsTest, WithoutOneNobodyIsReached) {
  EXPECT_FALSE(AskRunningProgram(QStringLiteral("/a.qrn")));
  Listen();
  m_requests.reset();
  EXPECT_FALSE(AskRunningProgram(QStringLiteral("/a.qrn")));
}

TEST_F(StartRequestsTest, TheNextProgramTakesOver) {
  Listen();
  m_requests.reset();
  Listen();
  EXPECT_TRUE(Ask(QStringLiteral("/a.qrn")));
  EXPECT_EQ(m_asked, QStringList{QStringLiteral("/a.qrn")});
}

}  // namespace
}  // namespace quarn::test
