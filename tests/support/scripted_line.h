#pragma once

#include <QString>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "serial/serial_line.h"

namespace quarn {

/// The events of several objects, in order. Any thread.
class Journal {
 public:
  void Note(std::string entry) {
    const std::lock_guard guard(m_mutex);
    m_entries.push_back(std::move(entry));
  }
  [[nodiscard]] std::vector<std::string> Entries() const {
    const std::lock_guard guard(m_mutex);
    return m_entries;
  }

 private:
  mutable std::mutex m_mutex;
  std::vector<std::string> m_entries;
};

/// A line that behaves as the test sets it, and notes its calls.
class ScriptedLine : public SerialLine {
 public:
  explicit ScriptedLine(Journal& journal) : m_journal(journal) {}

  // The results of the calls. Set before the line is used.
  LineState state{.baudRate = 50, .byteSize = 6, .stopBits = StopBits::Two, .parity = Parity::Even};
  bool getStateWorks = true;
  bool setStateWorks = true;
  bool setTimeoutsWorks = true;
  bool setModemLinesWorks = true;
  bool purgeWorks = true;
  bool closeWorks = true;
  bool lost = false;
  LineFailure failure;  ///< of every call that fails
  std::function<IoResult(char*, std::size_t)> read;
  std::function<IoResult(const char*, std::size_t)> write;
  std::function<void()> cancel;

  // The arguments of the calls.
  LineTimeouts timeouts;
  ModemLines modemLines;
  std::size_t readSize = 0;
  QByteArray written;

  LineResult GetState(LineState& result) override {
    m_journal.Note("get state");
    if (getStateWorks) result = state;
    return Works(getStateWorks);
  }
  LineResult SetState(const LineState& wanted) override {
    m_journal.Note("set state");
    if (setStateWorks) state = wanted;
    return Works(setStateWorks);
  }
  LineResult SetTimeouts(const LineTimeouts& wanted) override {
    m_journal.Note("set time-outs");
    if (setTimeoutsWorks) timeouts = wanted;
    return Works(setTimeoutsWorks);
  }
  LineResult SetModemLines(const ModemLines& wanted) override {
    m_journal.Note("set modem lines");
    if (setModemLinesWorks) modemLines = wanted;
    return Works(setModemLinesWorks);
  }
  LineResult Purge() override {
    m_journal.Note("purge");
    return Works(purgeWorks);
  }
  LineResult ClearError() override {
    m_journal.Note("clear error");
    return {};
  }
  IoResult Read(char* buffer, std::size_t size) override {
    m_journal.Note("read");
    readSize = size;
    return read ? read(buffer, size) : IoResult{.ok = true, .bytes = 0};
  }
  IoResult Write(const char* data, std::size_t size) override {
    m_journal.Note("write");
    written.append(data, static_cast<qsizetype>(size));
    return write ? write(data, size) : IoResult{.ok = true, .bytes = size};
  }
  void CancelIo() override {
    m_journal.Note("cancel");
    if (cancel) cancel();
  }
  void AllowIo() override { m_journal.Note("allow"); }
  LineResult Close() override {
    m_journal.Note("close");
    return Works(closeWorks);
  }
  bool IsLost() override { return lost; }

 private:
  [[nodiscard]] LineResult Works(bool works) const { return works ? LineResult() : LineResult(failure); }

  Journal& m_journal;
};

/// Returns the lines that the test sets, and notes each path.
class ScriptedOpener final : public SerialLineOpener {
 public:
  explicit ScriptedOpener(Journal& journal) : m_journal(journal) {}
  /// The result of each call. Unset: a new line that notes its calls in the same journal.
  std::function<OpenResult(const QString& path)> open;

  OpenResult Open(const QString& devicePath) override {
    m_journal.Note("open " + devicePath.toStdString());
    return open ? open(devicePath) : OpenResult{std::make_shared<ScriptedLine>(m_journal), {}};
  }

 private:
  Journal& m_journal;
};

}  // namespace quarn
