#include "system/faults/disk_journal.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <utility>

namespace quarn::test {

DiskJournal::DiskJournal(std::string folder) : m_folder(std::move(folder)) {
  for (const auto& entry : std::filesystem::directory_iterator(m_folder)) {
    std::ifstream file(entry.path(), std::ios::binary);
    m_names[entry.path().filename().string()] = static_cast<int>(m_initial.size());
    m_initial.emplace_back(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
  }
  m_initialNames = m_names;
}

std::string DiskJournal::NameOf(const std::string& path) const {
  return std::filesystem::path(path).filename().string();
}

void DiskJournal::Opened(int descriptor, const std::string& path, int flags) {
  if ((flags & O_TMPFILE) != O_TMPFILE && std::filesystem::is_directory(path)) {
    m_open[descriptor] = kFolder;
    return;
  }
  const std::string name = NameOf(path);
  const bool unnamed = (flags & O_TMPFILE) == O_TMPFILE;
  if (!unnamed && m_names.contains(name)) {
    m_open[descriptor] = m_names[name];
    if ((flags & O_TRUNC) != 0) Truncated(descriptor, 0);
    return;
  }
  const int file = static_cast<int>(m_initial.size());
  m_initial.emplace_back();
  m_open[descriptor] = file;
  if (!unnamed) NoteName(file, {}, name);
}

void DiskJournal::Wrote(int descriptor, const char* bytes, std::size_t size) {
  const off_t end = ::lseek(descriptor, 0, SEEK_CUR);
  Note({.kind = Kind::Write,
        .file = m_open.at(descriptor),
        .bytes = std::string(bytes, size),
        .at = static_cast<std::size_t>(end) - size});
}

void DiskJournal::Truncated(int descriptor, std::size_t size) {
  Note({.kind = Kind::Truncate, .file = m_open.at(descriptor), .at = size});
}

void DiskJournal::Flushed(int descriptor) {
  const int file = m_open.at(descriptor);
  Note({.kind = file == kFolder ? Kind::FlushFolder : Kind::Flush, .file = file});
}

void DiskJournal::NoteName(int file, const std::string& removed, const std::string& given) {
  Note({.kind = Kind::Name, .file = file, .removed = removed, .given = given});
  Apply(m_events.back(), m_names);
}

void DiskJournal::Linked(const std::string& from, const std::string& to) {
  const bool byDescriptor = from.starts_with("/proc/");
  NoteName(byDescriptor ? m_open.at(std::stoi(NameOf(from))) : m_names.at(NameOf(from)), {}, NameOf(to));
}

void DiskJournal::Renamed(const std::string& from, const std::string& to) {
  NoteName(m_names.at(NameOf(from)), NameOf(from), NameOf(to));
}

void DiskJournal::Removed(const std::string& path) { NoteName(kNoFile, NameOf(path), {}); }

void DiskJournal::Apply(const Event& event, std::string& content) {
  if (event.kind == Kind::Truncate) content.resize(event.at);
  if (event.kind != Kind::Write) return;
  if (content.size() < event.at + event.bytes.size()) content.resize(event.at + event.bytes.size());
  content.replace(event.at, event.bytes.size(), event.bytes);
}

void DiskJournal::Apply(const Event& event, Names& names) {
  if (!event.removed.empty()) names.erase(event.removed);
  if (!event.given.empty()) names[event.given] = event.file;
}

std::string DiskJournal::FinalContent(int file) const {
  std::string content = m_initial[static_cast<std::size_t>(file)];
  for (const Event& event : m_events) {
    if (event.file == file) Apply(event, content);
  }
  return content;
}

std::set<std::string> DiskJournal::Versions(const std::string& name) const {
  std::set<std::string> versions;
  if (const auto found = m_initialNames.find(name); found != m_initialNames.end()) {
    versions.insert(m_initial[static_cast<std::size_t>(found->second)]);
    versions.insert(FinalContent(found->second));
  }
  for (const Event& event : m_events) {
    if (event.kind == Kind::Name && event.given == name) versions.insert(FinalContent(event.file));
  }
  return versions;
}

bool DiskJournal::WasAbsent(const std::string& name) const {
  Names names = m_initialNames;
  bool absent = !names.contains(name);
  for (const Event& event : m_events) {
    if (event.kind == Kind::Name) Apply(event, names);
    absent = absent || !names.contains(name);
  }
  return absent;
}

/// The disk after a power loss behind the first `count` calls.
class DiskJournal::PowerLoss {
 public:
  PowerLoss(const DiskJournal& journal, std::size_t count)
      : m_durable(journal.m_initial), m_names(journal.m_initialNames) {
    for (std::size_t i = 0; i < count; ++i) Take(journal.m_events[i]);
    for (const auto& [file, events] : m_writes) m_unflushed.push_back(file);
  }

  /// What may or may not have reached the disk.
  [[nodiscard]] std::uint64_t Choices() const {
    std::uint64_t choices = std::uint64_t{1} << m_pending.size();
    for (std::size_t i = 0; i < m_unflushed.size(); ++i) choices *= kAmounts;
    return choices;
  }

  [[nodiscard]] DiskState State(std::uint64_t choice) const {
    Names names = m_names;
    for (const Event& event : m_pending) {
      if (choice % 2 == 1) Apply(event, names);
      choice /= 2;
    }
    std::vector<std::string> contents = m_durable;
    for (const int file : m_unflushed) {
      const std::vector<Event>& writes = m_writes.at(file);
      ApplyPart(writes, choice % kAmounts, contents[static_cast<std::size_t>(file)]);
      choice /= kAmounts;
    }
    DiskState state;
    for (const auto& [name, file] : names) state[name] = contents[static_cast<std::size_t>(file)];
    return state;
  }

 private:
  static constexpr std::uint64_t kAmounts = 3;  ///< nothing, half, and all

  void Take(const Event& event) {
    switch (event.kind) {
      case Kind::Write:
      case Kind::Truncate:
        m_writes[event.file].push_back(event);
        break;
      case Kind::Flush:
        for (const Event& each : m_writes[event.file])
          Apply(each, m_durable[static_cast<std::size_t>(event.file)]);
        m_writes.erase(event.file);
        break;
      case Kind::Name:
        m_pending.push_back(event);
        break;
      case Kind::FlushFolder:
        for (const Event& each : m_pending) Apply(each, m_names);
        m_pending.clear();
        break;
    }
  }
  /// Of a single write half of its bytes, of several half of them.
  static void ApplyPart(const std::vector<Event>& writes, std::uint64_t amount, std::string& content) {
    if (amount == 0) return;
    const std::size_t count = amount == 1 ? writes.size() / 2 : writes.size();
    for (std::size_t i = 0; i < count; ++i) Apply(writes[i], content);
    if (amount == 1 && writes.size() % 2 == 1) {
      Event half = writes[count];
      half.bytes.resize(half.bytes.size() / 2);
      Apply(half, content);
    }
  }

  std::vector<std::string> m_durable;
  Names m_names;
  std::map<int, std::vector<Event>> m_writes;  ///< since the last flush of each file
  std::vector<int> m_unflushed;
  std::vector<Event> m_pending;  ///< names
};

int DiskJournal::ForEachState(const std::function<void(const DiskState&)>& show) const {
  std::set<DiskState> shown;
  int states = 0;
  for (std::size_t count = 0; count <= m_events.size(); ++count) {
    const PowerLoss loss(*this, count);
    for (std::uint64_t choice = 0; choice < loss.Choices(); ++choice, ++states) {
      const DiskState state = loss.State(choice);
      if (shown.insert(state).second) show(state);
    }
  }
  return states;
}

}  // namespace quarn::test
