#include <windows.h>

#include <array>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "app/dialog_notes.h"

namespace quarn {
namespace {

/// Of HKEY_CURRENT_USER, each in the one before. The values are in the last one.
constexpr std::array kKeys{L"Software\\QtProject", L"Software\\QtProject\\OrganizationDefaults",
                           L"Software\\QtProject\\OrganizationDefaults\\FileDialog"};
constexpr DWORD kLongestName = 16384;

/// A key of the user's registry, if it is there.
class UserKey {
 public:
  UserKey(const wchar_t* name, REGSAM rights) {
    if (RegOpenKeyExW(HKEY_CURRENT_USER, name, 0, rights, &m_key) != ERROR_SUCCESS) m_key = nullptr;
  }
  ~UserKey() {
    if (m_key != nullptr) RegCloseKey(m_key);
  }
  UserKey(const UserKey&) = delete;
  UserKey& operator=(const UserKey&) = delete;
  [[nodiscard]] HKEY Get() const { return m_key; }
  [[nodiscard]] bool IsThere() const { return m_key != nullptr; }
  [[nodiscard]] bool IsEmpty() const {
    DWORD keys = 0;
    DWORD values = 0;
    return RegQueryInfoKeyW(m_key, nullptr, nullptr, nullptr, &keys, nullptr, nullptr, &values, nullptr,
                            nullptr, nullptr, nullptr) == ERROR_SUCCESS &&
           keys == 0 && values == 0;
  }

 private:
  HKEY m_key = nullptr;
};

/// Type and data of each value, by its name.
using Values = std::map<std::wstring, std::pair<DWORD, std::vector<BYTE>>>;

Values ValuesIn(const UserKey& key) {
  Values values;
  std::wstring name(kLongestName, L'\0');
  for (DWORD i = 0;; ++i) {
    DWORD length = kLongestName;
    DWORD size = 0;
    if (RegEnumValueW(key.Get(), i, name.data(), &length, nullptr, nullptr, nullptr, &size) != ERROR_SUCCESS)
      return values;
    DWORD type = REG_NONE;
    std::vector<BYTE> data(size);
    const std::wstring found = name.substr(0, length);
    if (RegQueryValueExW(key.Get(), found.c_str(), nullptr, &type, data.data(), &size) == ERROR_SUCCESS) {
      data.resize(size);
      values[found] = {type, std::move(data)};
    }
  }
}

/// Makes the values what they were.
void Restore(const UserKey& key, const Values& before) {
  for (const auto& [name, value] : ValuesIn(key)) {
    if (!before.contains(name)) RegDeleteValueW(key.Get(), name.c_str());
  }
  for (const auto& [name, value] : before) {
    const auto& [type, data] = value;
    RegSetValueExW(key.Get(), name.c_str(), 0, type, data.data(), static_cast<DWORD>(data.size()));
  }
}

}  // namespace

struct DialogNotesUndone::Notes {
  std::array<bool, kKeys.size()> wasThere{};
  std::optional<Values> values{};  ///< nothing: there has been no dialog
};

// The dialog makes the keys when it is made, and the values when it goes.
DialogNotesUndone::DialogNotesUndone() : m_before(std::make_unique<Notes>()) {
  for (std::size_t i = 0; i < kKeys.size(); ++i)
    m_before->wasThere[i] = UserKey(kKeys[i], KEY_READ).IsThere();
}

void DialogNotesUndone::KeepOthers() { m_before->values = ValuesIn(UserKey(kKeys.back(), KEY_READ)); }

DialogNotesUndone::~DialogNotesUndone() {
  if (m_before->values) Restore(UserKey(kKeys.back(), KEY_READ | KEY_SET_VALUE), *m_before->values);
  // From the innermost one out. One that another program has filled meanwhile stays.
  for (std::size_t i = kKeys.size(); i-- > 0;) {
    const bool isNew = !m_before->wasThere[i];
    if (isNew && UserKey(kKeys[i], KEY_READ).IsEmpty()) RegDeleteKeyW(HKEY_CURRENT_USER, kKeys[i]);
  }
}

}  // namespace quarn
