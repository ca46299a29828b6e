#include "system/faults/disk_journal.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string_view>
#include <utility>

namespace quarn::test {
namespace {

constexpr std::size_t kSector = 512;     ///< a disk writes it whole, or not at all
constexpr std::size_t kEverySubset = 6;  ///< of so many pieces each choice is made

using Choice = std::vector<bool>;

/// Which of so many pieces have reached the disk. Of more than a few: the first ones, the last ones, a single
/// one, all but one, and every other one.
std::set<Choice> ChoicesOf(std::size_t pieces) {
  std::set<Choice> choices;
  if (pieces <= kEverySubset) {
    for (std::size_t bits = 0; bits < std::size_t{1} << pieces; ++bits) {
      Choice choice(pieces);
      for (std::size_t i = 0; i < pieces; ++i) choice[i] = (bits >> i) % 2 == 1;
      choices.insert(choice);
    }
    return choices;
  }
  for (std::size_t at = 0; at <= pieces; ++at) {
    Choice first(pieces);
    Choice single(pieces);
    Choice other(pieces);
    for (std::size_t i = 0; i < pieces; ++i) {
      first[i] = i < at;
      single[i] = i == at;
      other[i] = i % 2 == at % 2;
    }
    for (Choice each : {first, single, other}) {
      choices.insert(each);
      each.flip();
      choices.insert(each);
    }
  }
  return choices;
}

}  // namespace

bool IsTemporaryName(const std::string& name) {
  const std::filesystem::path path(name);
  return path.extension().string().size() == std::string_view(".XXXXXX").size() &&
         path.stem().has_extension();
}

DiskJournal::DiskJournal(std::string folder) : m_folder(std::move(folder)) {
  for (const auto& entry : std::filesystem::directory_iterator(m_folder)) {
    if (!entry.is_regular_file()) continue;
    std::ifstream file(entry.path(), std::ios::binary);
    m_names[entry.path().filename().string()] = static_cast<int>(m_initial.size());
    m_initial.emplace_back(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
  }
  m_initialNames = m_names;
}

std::string DiskJournal::NameOf(const std::string& path) {
  std::string name = std::filesystem::path(path).filename().string();
  if (!IsTemporaryName(name)) return name;
  const auto [known, isNew] = m_temporary.try_emplace(name);
  if (isNew) {
    const std::string number = std::to_string(100 + m_temporary.size()).substr(1);
    known->second = std::filesystem::path(name).stem().string() + ".temp" + number;
  }
  return known->second;
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

std::set<std::string> DiskJournal::LastingNames() const {
  std::set<std::string> names;
  for (const auto& [name, file] : m_initialNames) names.insert(name);
  for (const Event& event : m_events) {
    if (event.kind == Kind::Name && !event.given.empty()) names.insert(event.given);
  }
  std::erase_if(names, IsTemporaryName);
  return names;
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
    std::set<int> named;
    for (const auto& [name, file] : m_names) named.insert(file);
    for (const Event& event : m_pending) named.insert(event.file);
    for (const auto& [file, writes] : m_writes) {
      // Nobody finds a file that has no name.
      if (named.contains(file)) m_contents[file] = ContentsAfter(writes, ContentOf(file));
    }
  }

  /// What may or may not have reached the disk.
  [[nodiscard]] std::uint64_t Choices() const {
    std::uint64_t choices = std::uint64_t{1} << m_pending.size();
    for (const auto& [file, contents] : m_contents) choices *= contents.size();
    return choices;
  }

  [[nodiscard]] DiskState State(std::uint64_t choice) const {
    Names names = m_names;
    for (const Event& event : m_pending) {
      if (choice % 2 == 1) Apply(event, names);
      choice /= 2;
    }
    std::map<int, const std::string*> chosen;
    for (const auto& [file, contents] : m_contents) {
      chosen[file] = &contents[choice % contents.size()];
      choice /= contents.size();
    }
    DiskState state;
    for (const auto& [name, file] : names) {
      const auto found = chosen.find(file);
      state[name] = found == chosen.end() ? ContentOf(file) : *found->second;
    }
    return state;
  }

 private:
  [[nodiscard]] const std::string& ContentOf(int file) const {
    return m_durable[static_cast<std::size_t>(file)];
  }

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

  /// The writes in sectors, or in two halves.
  static std::vector<Event> PiecesOf(const std::vector<Event>& writes) {
    std::vector<Event> pieces;
    for (const Event& event : writes) {
      if (event.kind != Kind::Write) {
        pieces.push_back(event);
        continue;
      }
      const std::size_t size = std::clamp<std::size_t>((event.bytes.size() + 1) / 2, 1, kSector);
      for (std::size_t from = 0; from < event.bytes.size(); from += size) {
        Event piece = event;
        piece.bytes = event.bytes.substr(from, size);
        piece.at = event.at + from;
        pieces.push_back(piece);
      }
    }
    return pieces;
  }

  /// Every content that the file may have, each once.
  static std::vector<std::string> ContentsAfter(const std::vector<Event>& writes, const std::string& before) {
    const std::vector<Event> pieces = PiecesOf(writes);
    std::set<std::string> contents;
    for (const Choice& choice : ChoicesOf(pieces.size())) {
      std::string content = before;
      for (std::size_t i = 0; i < pieces.size(); ++i) {
        if (choice[i]) Apply(pieces[i], content);
      }
      contents.insert(content);
    }
    return {contents.begin(), contents.end()};
  }

  std::vector<std::string> m_durable;
  Names m_names;
  std::map<int, std::vector<Event>> m_writes;          ///< since the last flush of each file
  std::map<int, std::vector<std::string>> m_contents;  ///< of each file whose writes are not flushed
  std::vector<Event> m_pending;                        ///< names
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
