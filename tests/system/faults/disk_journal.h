#pragma once

#include <functional>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace quarn::test {

/// The files of a folder: name and content.
using DiskState = std::map<std::string, std::string>;

/// Whether the name is that of a settings file with a dot and six more characters.
bool IsTemporaryName(const std::string& name);

/// What operations on the files of one folder have asked of the disk, and what a power loss can leave of it:
///  - of what was written to a file since its last flush, any pieces may be there, and the others not: a disk
///    writes in its own order;
///  - each name that was given, changed or removed since the last flush of the folder may be as before,
///    whatever has become of the others.
/// Permissions are not looked at. Temporary files are called NAME.temp01 and so on, in the order in which
/// they got their first name, so that the same states have the same names.
class DiskJournal {
 public:
  explicit DiskJournal(std::string folder);

  // The calls, after they have succeeded.
  void Opened(int descriptor, const std::string& path, int flags);
  void Wrote(int descriptor, const char* bytes, std::size_t size);
  void Truncated(int descriptor, std::size_t size);
  void Flushed(int descriptor);
  /// `from` is a path, or a descriptor's in /proc.
  void Linked(const std::string& from, const std::string& to);
  void Renamed(const std::string& from, const std::string& to);
  void Removed(const std::string& path);

  /// Shows every state that a power loss can leave, at the beginning, after each call, and at the end.
  /// Returns how many there were; a state that several choices lead to is shown once.
  int ForEachState(const std::function<void(const DiskState&)>& show) const;
  /// What a file may hold: complete contents that it had, one after another.
  [[nodiscard]] std::set<std::string> Versions(const std::string& name) const;
  /// Every name that a file had at some moment, but for temporary ones.
  [[nodiscard]] std::set<std::string> LastingNames() const;
  /// Whether there was a moment without such a file.
  [[nodiscard]] bool WasAbsent(const std::string& name) const;

 private:
  static constexpr int kFolder = -1;  ///< the folder itself
  static constexpr int kNoFile = -2;
  using Names = std::map<std::string, int>;  ///< the file of each name
  enum class Kind { Write, Truncate, Flush, Name, FlushFolder };
  struct Event {
    Kind kind;
    int file = kNoFile;
    std::string bytes{};    ///< to write
    std::size_t at = 0;     ///< where, or the new size
    std::string removed{};  ///< a name
    std::string given{};    ///< another
  };
  class PowerLoss;

  std::string NameOf(const std::string& path);
  void Note(Event event) { m_events.push_back(std::move(event)); }
  void NoteName(int file, const std::string& removed, const std::string& given);
  static void Apply(const Event& event, std::string& content);
  static void Apply(const Event& event, Names& names);
  [[nodiscard]] std::string FinalContent(int file) const;

  const std::string m_folder;
  std::vector<std::string> m_initial;  ///< the content of each file at the beginning
  Names m_initialNames;
  Names m_names;
  std::map<std::string, std::string> m_temporary;  ///< what it is called here, of each temporary file
  std::map<int, int> m_open;                       ///< the file of each descriptor
  std::vector<Event> m_events;
};

}  // namespace quarn::test
