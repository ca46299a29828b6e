#pragma once

#include <QString>
#include <QStringList>

namespace quarn::send {

struct Options {
  QString settingsFile;  ///< empty: the working settings file
  QString port;          ///< empty: the one the settings name
  bool raw = false;      ///< print the response's bytes as they came
  bool help = false;
  bool version = false;
  QStringList commands;
  QString error;  ///< not empty: wrong usage
};

/// `arguments` without the program's name. After "--" everything is a command.
Options ParseArguments(const QStringList& arguments);

extern const char kUsage[];

}  // namespace quarn::send
