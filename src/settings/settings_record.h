#pragma once

#include <QString>
#include <array>

namespace quarn {

/// Number of stored commands, MEM0 to MEM9, one for each of the keys F1 to F10.
inline constexpr int kStoredCommandCount = 10;

/// The current settings: one text per key, exactly as in the file. Values are not converted when they are
/// loaded; code that uses a value compares it (exactly, case-sensitively) or converts it then. Copying a
/// record copies every field.
struct SettingsRecord {
  QString autoClr;
  QString comPort;
  QString portSpeed;
  QString rTimeout;
  QString chkCmd;
  QString inputMax;
  /// "TRUE" once a configuration has been loaded at start-up or from a user file; never in a file.
  QString loadedMarker;
  QString startDisp;
  QString delimiter;
  QString bkColor;
  QString comBits;
  QString comBps;
  QString comBuf;
  QString comParity;
  QString comStop;
  QString enblNull;
  QString funcKey;
  QString lineNum;
  QString mainPos;
  std::array<QString, kStoredCommandCount> mem;

  bool operator==(const SettingsRecord&) const = default;
};

}  // namespace quarn
