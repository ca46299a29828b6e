#include "terminal/transaction.h"
#include "terminal/transaction_fixture.h"

namespace quarn {
namespace {

class TransactionHangUp : public TransactionTest {
 protected:
  /// A silence of 2880 ms: the hang-up comes first.
  TransactionHangUp() { m_settings.comBps = QStringLiteral("300"); }
};

TEST_F(TransactionHangUp, MidAnswerGivesWhatCameAndThenTheFormerBuffer) {
  Serve("\"id\" -> \"half\" 1000 hangup");
  EXPECT_EQ(Run("id"), TransactionResult::Received);
  EXPECT_EQ(Response(), "half");
  EXPECT_FALSE(m_outcome.lineFailed);
  EXPECT_EQ(m_outcome.byteCount, 3);
  EXPECT_EQ(Run("again"), TransactionResult::Received);
  EXPECT_EQ(Response(), "half");
  EXPECT_TRUE(m_outcome.lineFailed);
  EXPECT_EQ(m_outcome.raw, "");
  EXPECT_EQ(m_outcome.byteCount, -1);
}

TEST_F(TransactionHangUp, InsteadOfAnAnswerIsAFailedRead) {
  Serve("\"unplug\" -> hangup");
  EXPECT_EQ(Run("unplug"), TransactionResult::InvalidData);
  EXPECT_TRUE(m_outcome.lineFailed);
  EXPECT_EQ(m_outcome.raw, "");
  EXPECT_EQ(m_outcome.byteCount, -1);
  EXPECT_TRUE(ClosePort(m_connection));
}

}  // namespace
}  // namespace quarn
