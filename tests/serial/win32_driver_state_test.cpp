// What opening a port, setting it up, resetting and closing it ask of the driver.

#include <cstring>

#include "serial/open_port.h"
#include "serial/win32_driver_fixture.h"
#include "support/counted_indicator.h"
#include "support/recorded_messages.h"

namespace quarn::test {
namespace {

TEST_F(Win32Driver, ThePortIsOpenedForThisProgramAlone) {
  Open();
  ASSERT_EQ(m_driver.Openings().size(), 1U);
  const PlayedDriver::Opening opening = m_driver.Openings().front();
  EXPECT_EQ(opening.path, L"COM3");
  EXPECT_EQ(opening.access, DWORD{GENERIC_READ | GENERIC_WRITE});
  EXPECT_EQ(opening.shareMode, 0U) << "nobody else can open it";
  EXPECT_FALSE(opening.hasSecurity);
  EXPECT_EQ(opening.disposition, DWORD{OPEN_EXISTING});
  EXPECT_EQ(opening.flags, DWORD{FILE_ATTRIBUTE_NORMAL}) << "all input and output is synchronous";
  EXPECT_FALSE(opening.hasTemplate);
}

/// A record with every bit of it set or clear.
DCB Filled(int byte) {
  DCB state;
  std::memset(&state, byte, sizeof state);
  state.DCBlength = sizeof state;
  return state;
}

TEST_F(Win32Driver, EverythingButTheFourParametersStaysAsTheDriverHasIt) {
  Open();
  for (const int byte : {0x00, 0xFF, 0xA5, 0x5A}) {
    DCB wanted = Filled(byte);
    m_driver.Have(wanted);
    ASSERT_TRUE(m_line->SetState(
        {.baudRate = 115200, .byteSize = 7, .stopBits = StopBits::Two, .parity = Parity::Even}));
    wanted.BaudRate = 115200;
    wanted.ByteSize = 7;
    wanted.StopBits = TWOSTOPBITS;
    wanted.Parity = EVENPARITY;
    const DCB state = m_driver.State();
    EXPECT_EQ(std::memcmp(&state, &wanted, sizeof state), 0) << "filled with " << byte;
  }
}

TEST_F(Win32Driver, WhatTheDriverDoesNotTellIsNotSet) {
  Open();
  const DCB before = Filled(0xA5);
  m_driver.Have(before);
  m_driver.FailGetState();
  EXPECT_FALSE(m_line->SetState({}));
  const DCB after = m_driver.State();
  EXPECT_EQ(std::memcmp(&after, &before, sizeof after), 0);
}

TEST_F(Win32Driver, OpeningAPortSetsAllFiveTimeouts) {
  RecordedMessages messages;
  CountedIndicator indicator;
  Win32LineOpener opener;
  PortConnection connection;
  SettingsRecord settings;
  settings.comPort = QStringLiteral("COM3");
  settings.comBps = QStringLiteral("9600");
  settings.portSpeed = QStringLiteral("LOW");
  ASSERT_TRUE(OpenPort(settings, connection, {opener, messages, indicator}));
  const COMMTIMEOUTS timeouts = m_driver.Timeouts();
  EXPECT_EQ(timeouts.ReadIntervalTimeout, 135U);
  EXPECT_EQ(timeouts.ReadTotalTimeoutMultiplier, 15U);
  EXPECT_EQ(timeouts.ReadTotalTimeoutConstant, 75U);
  EXPECT_EQ(timeouts.WriteTotalTimeoutMultiplier, 15U);
  EXPECT_EQ(timeouts.WriteTotalTimeoutConstant, 75U);
}

TEST_F(Win32Driver, EachTimeoutHasItsPlace) {
  Open();
  ASSERT_TRUE(m_line->SetTimeouts({.readInterval = 1,
                                   .readTotalMultiplier = 2,
                                   .readTotalConstant = 3,
                                   .writeTotalMultiplier = 4,
                                   .writeTotalConstant = 5}));
  const COMMTIMEOUTS timeouts = m_driver.Timeouts();
  EXPECT_EQ(timeouts.ReadIntervalTimeout, 1U);
  EXPECT_EQ(timeouts.ReadTotalTimeoutMultiplier, 2U);
  EXPECT_EQ(timeouts.ReadTotalTimeoutConstant, 3U);
  EXPECT_EQ(timeouts.WriteTotalTimeoutMultiplier, 4U);
  EXPECT_EQ(timeouts.WriteTotalTimeoutConstant, 5U);
}

TEST_F(Win32Driver, DtrAndRtsAreLeftToTheDriverUntilSomebodyAsks) {
  Open();
  ASSERT_TRUE(m_line->SetState({.baudRate = 115200}));
  EXPECT_EQ(m_driver.Escapes(), std::vector<DWORD>());
  EXPECT_TRUE(m_line->SetModemLines({.dtr = true}));
  EXPECT_TRUE(m_line->SetModemLines({.rts = false}));
  EXPECT_TRUE(m_line->SetModemLines({.dtr = false, .rts = true}));
  EXPECT_EQ(m_driver.Escapes(), (std::vector<DWORD>{SETDTR, CLRRTS, CLRDTR, SETRTS}));
}

/// They stay as the driver has them, whatever it does with them.
TEST_F(Win32Driver, AResetAndACloseLeaveDtrAndRtsToTheDriver) {
  RecordedMessages messages;
  CountedIndicator indicator;
  Win32LineOpener opener;
  const PortEnvironment environment{opener, messages, indicator};
  SettingsRecord settings;
  settings.comPort = QStringLiteral("COM3");
  settings.comBps = QStringLiteral("115200");
  std::size_t openings = 0;
  // All that a record can say: DTR_CONTROL_DISABLE to _HANDSHAKE, RTS_CONTROL_DISABLE to _TOGGLE.
  for (DWORD dtr = DTR_CONTROL_DISABLE; dtr <= DTR_CONTROL_HANDSHAKE; ++dtr) {
    for (DWORD rts = RTS_CONTROL_DISABLE; rts <= RTS_CONTROL_TOGGLE; ++rts) {
      DCB former{};
      former.DCBlength = sizeof former;
      former.fDtrControl = dtr & 3U;
      former.fRtsControl = rts & 3U;
      m_driver.Have(former);
      const auto expectUntouched = [&](const char* when) {
        EXPECT_EQ(m_driver.Escapes(), std::vector<DWORD>()) << when;
        EXPECT_EQ(m_driver.State().fDtrControl, dtr) << when;
        EXPECT_EQ(m_driver.State().fRtsControl, rts) << when;
        EXPECT_EQ(m_driver.Openings().size(), openings) << when;
      };
      PortConnection connection;
      connection.portNames.append(settings.comPort);
      ASSERT_TRUE(OpenPort(settings, connection, environment));
      ++openings;
      EXPECT_EQ(m_driver.State().BaudRate, 115200U);
      expectUntouched("opened");
      ASSERT_TRUE(ResetPort(settings, connection, environment));
      ++openings;
      expectUntouched("reset");
      ASSERT_TRUE(connection.handle.Line()->Close());
      EXPECT_FALSE(m_driver.IsOpen());
      expectUntouched("closed");
      ASSERT_TRUE(OpenPort(settings, connection, environment));
      ++openings;
      expectUntouched("opened again");
    }
  }
}

TEST_F(Win32Driver, APurgeDropsWhatIsToBeSentAndWhatHasCome) {
  Open();
  EXPECT_TRUE(m_line->Purge());
  EXPECT_EQ(m_driver.Purges(), std::vector<DWORD>{PURGE_TXCLEAR | PURGE_RXCLEAR});
}

}  // namespace
}  // namespace quarn::test
