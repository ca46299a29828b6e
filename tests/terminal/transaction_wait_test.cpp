#include "terminal/transaction.h"

#include "terminal/transaction_fixture.h"

namespace quarn {
namespace {

using TransactionWait = TransactionTest;

constexpr char kRules[] =
    "\"id\" -> line \"SIM\"\n"
    "\"mute\" -> silence\n"
    "\"late\" -> 5000 \"LATE\\r\"\n"
    "\"pieces\" -> 5000 \"ONE\\r\" 300 \"TWO\\r\"";

TEST_F(TransactionWait, ASilentDeviceTimesOutAfterTheFewestPolls) {
  SetShortestTimeout();
  Serve(kRules);
  TransactionResult result{};
  const std::int64_t taken = MillisecondsOf([&] { result = Run("mute"); });
  EXPECT_EQ(result, TransactionResult::Timeout);
  // 54 polls of 10 ms, then 500 ms for a worker that still reads.
  EXPECT_GE(taken, 540 + 500);
  EXPECT_EQ(m_host.texts, QStringList(2, QStringLiteral("mute")));
  EXPECT_EQ(m_host.looks, 2);
  EXPECT_EQ(m_engine->PollCounter(), 2U);
  EXPECT_FALSE(m_engine->IsBusy());
}

TEST_F(TransactionWait, AfterATimeoutTheNextCommandGetsItsResponse) {
  SetShortestTimeout();
  Serve(kRules);
  ASSERT_EQ(Run("mute"), TransactionResult::Timeout);
  m_settings.rTimeout = QStringLiteral("OFF");
  EXPECT_EQ(Run("id"), TransactionResult::Received);
  EXPECT_EQ(Response(), "SIM\r");
  EXPECT_EQ(m_instrument->Received(), "mute\rid\r");
}

TEST_F(TransactionWait, TimeoutsInARowDoNotAddUp) {
  SetShortestTimeout();
  Serve(kRules);
  for (int i = 0; i < 3; ++i) ASSERT_EQ(Run("mute"), TransactionResult::Timeout);
  m_settings.rTimeout = QStringLiteral("OFF");
  EXPECT_EQ(Run("id"), TransactionResult::Received);
  EXPECT_EQ(Response(), "SIM\r");
}

TEST_F(TransactionWait, ALateAnswerIsNotCreditedToTheNextCommand) {
  SetShortestTimeout();
  Serve(kRules);
  ASSERT_EQ(Run("late"), TransactionResult::Timeout);
  ASSERT_TRUE(Eventually([&] { return m_instrument->Answers() >= 1; }));
  m_settings.rTimeout = QStringLiteral("OFF");
  EXPECT_EQ(Run("id"), TransactionResult::Received);
  EXPECT_EQ(Response(), "SIM\r");
}

TEST_F(TransactionWait, NorAreThePiecesOfOneThatNobodyReadAnyMore) {
  SetShortestTimeout();
  Serve(kRules);
  ASSERT_EQ(Run("pieces"), TransactionResult::Timeout);
  ASSERT_TRUE(Eventually([&] { return m_instrument->Answers() >= 1; }));
  m_settings.rTimeout = QStringLiteral("OFF");
  EXPECT_EQ(Run("id"), TransactionResult::Received);
  EXPECT_EQ(Response(), "SIM\r");
}

TEST_F(TransactionWait, ALateAnswerDoesNotStandInForOneThatNeverComes) {
  SetShortestTimeout();
  Serve(kRules);
  ASSERT_EQ(Run("late"), TransactionResult::Timeout);
  ASSERT_TRUE(Eventually([&] { return m_instrument->Answers() >= 1; }));
  EXPECT_EQ(Run("mute"), TransactionResult::Timeout);
}

TEST_F(TransactionWait, EscEndsAWaitWithoutALimit) {
  m_host.escapeAtLook = 1;
  Serve(kRules);
  EXPECT_EQ(Run("mute"), TransactionResult::Aborted);
  EXPECT_EQ(m_host.looks, 1);
  EXPECT_EQ(m_engine->PollCounter(), 0U) << "a look that found the key is not counted";
  EXPECT_FALSE(m_engine->IsBusy());
}

TEST_F(TransactionWait, AfterEscTheNextCommandGetsItsResponse) {
  m_host.escapeAtLook = 1;
  Serve(kRules);
  ASSERT_EQ(Run("mute"), TransactionResult::Aborted);
  EXPECT_EQ(Run("id"), TransactionResult::Received);
  EXPECT_EQ(Response(), "SIM\r");
}

/// At the lowest speed a read lasts for seconds after its last byte.
TEST_F(TransactionWait, EscInTheMiddleOfAResponseLeavesTheNextCommandItsOwn) {
  m_settings.comBps = QStringLiteral("110");
  Serve("\"begun\" -> \"BEG\"\n\"id\" -> line \"SIM\"");
  m_host.whilePainting = [this] {
    EXPECT_TRUE(Eventually([this] { return m_instrument->Answers() == 1; }));
    m_host.escapeAtLook = m_host.looks + 2;
  };
  ASSERT_EQ(Run("begun"), TransactionResult::Aborted);
  EXPECT_EQ(Run("id"), TransactionResult::Received);
  EXPECT_EQ(Response(), "SIM\r");
}

TEST_F(TransactionWait, EscComesBeforeATimeout) {
  SetShortestTimeout();
  m_host.escapeAtLook = 2;
  Serve(kRules);
  EXPECT_EQ(Run("mute"), TransactionResult::Aborted);
}

TEST_F(TransactionWait, TheMarkBlinksAtTheCaretFromTheSixthRefresh) {
  m_host.escapeAtLook = 9;
  m_host.caret = 1;
  Serve(kRules);
  EXPECT_EQ(Run("mute"), TransactionResult::Aborted);
  const QString plain = QStringLiteral("mute");
  const QString marked = QStringLiteral("m*te");
  EXPECT_EQ(m_host.texts, (QStringList{plain, plain, plain, plain, plain, marked, plain, marked, plain}));
  EXPECT_EQ(m_engine->PollCounter(), 8U);
}

TEST_F(TransactionWait, InputIsHeldFromFirstToLastOnEveryPath) {
  SetShortestTimeout();
  Serve(kRules);
  const auto expectPaired = [this](int times) {
    EXPECT_EQ(m_host.begun, times);
    EXPECT_EQ(m_host.ended, times);
    EXPECT_FALSE(m_host.outsideWait);
  };
  EXPECT_EQ(Run("mute"), TransactionResult::Timeout);
  expectPaired(1);
  m_host.escapeAtLook = m_host.looks + 1;
  EXPECT_EQ(Run("mute"), TransactionResult::Aborted);
  expectPaired(2);
  m_settings.rTimeout = QStringLiteral("OFF");
  EXPECT_EQ(Run("id"), TransactionResult::Received);
  expectPaired(3);
  ClosePort(m_connection);
  Run("id");
  expectPaired(4);
}

TEST_F(TransactionWait, WindowsMayPaintAllTheTimeAndNobodyIsWokenForAPollThatOnlyCounts) {
  SetShortestTimeout();
  Serve(kRules);
  EXPECT_EQ(Run("mute"), TransactionResult::Timeout);
  // Between two paintings a busy computer may give others the processor.
  constexpr std::chrono::milliseconds kOthers{100};
  EXPECT_GE(m_host.paintingTime, std::chrono::milliseconds(540 + 500) - kOthers);
  EXPECT_EQ(m_host.painted, 3 + 2 + 1)
      << "to two refreshes and the time-out, after each refresh, and at the end";
}

TEST_F(TransactionWait, ASecondCommandMeanwhileIsRefusedAndStartsNothing) {
  Serve(kRules);
  TransactionResult inner{};
  ScriptedHost innerHost;
  m_host.whilePainting = [&] { inner = m_engine->RunTransaction(m_settings, innerHost, "second").result; };
  EXPECT_EQ(Run("id"), TransactionResult::Received);
  EXPECT_EQ(inner, TransactionResult::AlreadyRunning);
  EXPECT_EQ(Response(), "SIM\r");
  EXPECT_EQ(m_instrument->Received(), "id\r");
  EXPECT_EQ(innerHost.begun, 0);
}

TEST_F(TransactionWait, WhoEndsTheWorkerMeanwhileEndsTheWait) {
  Serve(kRules);
  ScriptedHost innerHost;
  m_host.whilePainting = [&] { m_engine->EndWorker(innerHost); };
  EXPECT_EQ(Run("mute"), TransactionResult::Aborted) << "there is no response that could be looked at";
  EXPECT_EQ(Run("id"), TransactionResult::Received);
  EXPECT_EQ(Response(), "SIM\r");
}

TEST_F(TransactionWait, ThePortCanBeClosedUnderAReadLeftBehind) {
  SetShortestTimeout();
  Serve(kRules);
  ASSERT_EQ(Run("mute"), TransactionResult::Timeout);
  auto closing = InThread([this] { return ClosePort(m_connection); });
  ASSERT_TRUE(Ends(closing));
  EXPECT_TRUE(closing.get());
  EXPECT_TRUE(OpenServedLine(*m_instrument).line) << "the line is free for others";
}

TEST_F(TransactionWait, AfterClosingAndOpeningAgainCommandsWork) {
  SetShortestTimeout();
  Serve(kRules);
  ASSERT_EQ(Run("mute"), TransactionResult::Timeout);
  ASSERT_TRUE(ClosePort(m_connection));
  m_settings.rTimeout = QStringLiteral("OFF");
  const OpenResult again = OpenServedLine(*m_instrument);
  ASSERT_TRUE(again.line);
  ASSERT_TRUE(SetServedTimeouts(*again.line, {.readInterval = 100}));
  m_connection.handle = PortHandle(again.line);
  EXPECT_EQ(Run("id"), TransactionResult::Received);
  EXPECT_EQ(Response(), "SIM\r");
}

TEST_F(TransactionWait, TheEngineCanGoWhileAReadIsLeftBehind) {
  SetShortestTimeout();
  Serve(kRules);
  ASSERT_EQ(Run("mute"), TransactionResult::Timeout);
  auto going = InThread([this] { m_engine.reset(); });
  ASSERT_TRUE(Ends(going)) << "the read would have gone on for 82 seconds";
  EXPECT_TRUE(m_connection.handle.IsOpen());
}

}  // namespace
}  // namespace quarn
