#include "send/listen.h"

#include <deque>

#include "serial/line_test_support.h"
#include "support/scripted_line.h"

namespace quarn::send {
namespace {

/// Listens to reads that the test scripts. An empty one lasts until the silence is over.
class ListenTest : public testing::Test {
 protected:
  ListenEnd Run(std::deque<IoResult> reads, std::deque<QByteArray> bytes) {
    m_line.read = [&](char* buffer, std::size_t) {
      IoResult result = reads.front();
      reads.pop_front();
      if (result.bytes > 0) {
        const QByteArray next = bytes.front();
        bytes.pop_front();
        std::copy(next.begin(), next.end(), buffer);
      } else if (result.ok) {
        const auto silence = std::chrono::steady_clock::now() + kSilence;
        while (std::chrono::steady_clock::now() < silence) std::this_thread::yield();
      }
      return result;
    };
    const ListenHost host{.isOver = [&] { return reads.empty(); },
                          .take =
                              [&](const Report& report) {
                                m_pieces.append(report.outcome.raw);
                                return m_prints;
                              }};
    return ListenTo(m_line, kSilence, QStringLiteral("CRLF"), host, m_failure);
  }

  static constexpr std::chrono::milliseconds kSilence{2};
  Journal m_journal;
  ScriptedLine m_line{m_journal};
  QByteArrayList m_pieces;
  LineFailure m_failure;
  bool m_prints = true;
};

const IoResult kSilent{.ok = true, .bytes = 0};
IoResult Bytes(std::size_t count) { return {.ok = true, .bytes = count}; }

TEST_F(ListenTest, APieceEndsWithASilence) {
  EXPECT_EQ(Run({kSilent, Bytes(2), kSilent, kSilent, Bytes(1), kSilent}, {"ab", "c"}), ListenEnd::Over);
  EXPECT_EQ(m_pieces, (QByteArrayList{"ab", "c"}));
}

TEST_F(ListenTest, TheEndTakesWhatIsThere) {
  EXPECT_EQ(Run({Bytes(2)}, {"ab"}), ListenEnd::Over);
  EXPECT_EQ(m_pieces, QByteArrayList{"ab"});
}

TEST_F(ListenTest, AFailedLineTakesWhatIsThere) {
  EXPECT_EQ(Run({Bytes(2), {.failure = {LineError::Disconnected, QStringLiteral("gone")}}}, {"ab"}),
            ListenEnd::LineFailed);
  EXPECT_EQ(m_pieces, QByteArrayList{"ab"});
  EXPECT_EQ(m_failure.reason, QStringLiteral("gone"));
}

TEST_F(ListenTest, EndsWhenNothingCanBePrinted) {
  m_prints = false;
  EXPECT_EQ(Run({Bytes(1), kSilent, Bytes(1)}, {"a", "b"}), ListenEnd::NotPrinted);
  EXPECT_EQ(m_pieces, QByteArrayList{"a"});
}

TEST_F(ListenTest, AStreamWithoutSilenceComesInPieces) {
  std::deque<IoResult> reads(20, Bytes(4096));
  EXPECT_EQ(Run(reads, std::deque<QByteArray>(20, QByteArray(4096, 'x'))), ListenEnd::Over);
  qsizetype all = 0;
  for (const QByteArray& each : m_pieces) all += each.size();
  EXPECT_EQ(all, 20 * 4096);
  EXPECT_GE(m_pieces.size(), 2);
}

}  // namespace
}  // namespace quarn::send
