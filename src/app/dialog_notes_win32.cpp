#include <windows.h>

#include <array>
#include <map>
#include <string>
#include <vector>

#include "app/dialog_notes.h"

namespace quarn {
namespace {

/// Of HKEY_CURRENT_USER, each in the one before. The values are in the last one.
constexpr std::array kKeys{L"Software\\QtProject", L"Software\\QtProject\\OrganizationDefaults",
                           L"Software\\QtProject\\OrganizationDefaults\\FileDialog"};
constexpr DWORD kLongestName = 16384;

/// A key of the user's registry, if it is there.
class Key {
 public:
  Key(const wchar_t* name, REGSAM rights) {
    if (RegOpenKeyExW(HKEY_CURRENT_USER, name, 0, rights, &m_key) != ERROR_SUCCESS) m_key = nullptr;
  }
  ~Key() {
    if (m_key != nullptr) RegCloseKey(m_key);
  }
  Key(const Key&) = delete;
  Key& operator=(const Key&) = delete;
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

struct Value {
  DWORD type = REG_NONE;
  std::vector<BYTE> data;
  bool operator==(const Value&) const = default;
};
using Values = std::map<std::wstring, Value>;

Values ValuesIn(const Key& key) {
  Values values;
  std::wstring name(kLongestName, L'\0');
  for (DWORD i = 0;; ++i) {
    DWORD length = kLongestName;
    DWORD size = 0;
    if (RegEnumValueW(key.Get(), i, name.data(), &length, nullptr, nullptr, nullptr, &size) != ERROR_SUCCESS)
      return values;
    Value value{REG_NONE, std::vector<BYTE>(size)};
    const std::wstring found = name.substr(0, length);
    if (RegQueryValueExW(key.Get(), found.c_str(), nullptr, &value.type, value.data.data(), &size) ==
        ERROR_SUCCESS) {
      value.data.resize(size);
      values[found] = std::move(value);
    }
  }
}

/// Makes the values what they were.
void Restore(const Key& key, const Values& before) {
  for (const auto& [name, value] : ValuesIn(key)) {
    if (!before.contains(name)) RegDeleteValueW(key.Get(), name.c_str());
  }
  for (const auto& [name, value] : before) {
    RegSetValueExW(key.Get(), name.c_str(), 0, value.type, value.data.data(),
                   static_cast<DWORD>(value.data.size()));
  }
}

}  // namespace

struct DialogNotesUndone::Notes {
  std::array<bool, kKeys.size()> wasThere{};
  Values values{};
};

DialogNotesUndone::DialogNotesUndone() {
  Notes notes;
  for (std::size_t i = 0; i < kKeys.size(); ++i) notes.wasThere[i] = Key(kKeys[i], KEY_READ).IsThere();
  notes.values = ValuesIn(Key(kKeys.back(), KEY_READ));
  m_before = std::make_unique<const Notes>(std::move(notes));
}

DialogNotesUndone::~DialogNotesUndone() {
  Restore(Key(kKeys.back(), KEY_READ | KEY_SET_VALUE), m_before->values);
  // From the innermost one out. One that another program has filled meanwhile stays.
  for (std::size_t i = kKeys.size(); i-- > 0;) {
    const bool isNew = !m_before->wasThere[i];
    if (isNew && Key(kKeys[i], KEY_READ).IsEmpty()) RegDeleteKeyW(HKEY_CURRENT_USER, kKeys[i]);
  }
}

}  // namespace quarn
