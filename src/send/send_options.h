#pragma once

#include <QByteArrayList>
#include <QString>

#include "send/platform.h"

namespace quarn::send {

struct Options {
  QString settingsFile;  ///< empty: the working settings file
  QString port;          ///< empty: the one in the settings
  bool raw = false;      ///< print the response's bytes unchanged
  bool help = false;
  bool version = false;
  QByteArrayList commands;  ///< the bytes to send, without their framing
  QString error;            ///< not empty: wrong usage
};

/// A word that begins with "-" is an option, or an error; after "--" everything is a command.
Options ParseArguments(const Arguments& arguments);

extern const char kUsage[];

}  // namespace quarn::send
