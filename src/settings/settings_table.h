#pragma once

#include <QStringList>
#include <QStringView>
#include <array>
#include <span>

#include "settings/settings_key.h"
#include "settings/settings_record.h"

namespace quarn {

/// The keys by name, for code that changes a single setting.
namespace keys {
inline constexpr SettingsKey kAutoClr{u"AUTO_CLR="};
inline constexpr SettingsKey kBkColor{u"BK_COLOR="};
inline constexpr SettingsKey kChkCmd{u"CHK_CMD="};
inline constexpr SettingsKey kComBits{u"COM_BITS="};
inline constexpr SettingsKey kComBps{u"COM_BPS="};
inline constexpr SettingsKey kComBuf{u"COM_BUF="};
inline constexpr SettingsKey kComParity{u"COM_PARITY="};
inline constexpr SettingsKey kComPort{u"COM_PORT="};
inline constexpr SettingsKey kComStop{u"COM_STOP="};
inline constexpr SettingsKey kDelimiter{u"DELIMITER="};
inline constexpr SettingsKey kEnblNull{u"ENBL_NULL="};
inline constexpr SettingsKey kFuncKey{u"FUNC_KEY="};
inline constexpr SettingsKey kInputMax{u"INPUT_MAX="};
inline constexpr SettingsKey kLineNum{u"LINE_NUM="};
inline constexpr SettingsKey kMainPos{u"MAIN_POS="};
inline constexpr SettingsKey kMarkColor{u"MARK_COLOR="};
inline constexpr SettingsKey kPortSpeed{u"PORT_SPEED="};
inline constexpr SettingsKey kRTimeout{u"R_TIMEOUT="};
inline constexpr SettingsKey kStartDisp{u"START_DISP="};
/// MEM0= to MEM9=, the texts of F1 to F10.
inline constexpr std::array<SettingsKey, kStoredCommandCount> kMem{
    SettingsKey{u"MEM0="}, SettingsKey{u"MEM1="}, SettingsKey{u"MEM2="}, SettingsKey{u"MEM3="},
    SettingsKey{u"MEM4="}, SettingsKey{u"MEM5="}, SettingsKey{u"MEM6="}, SettingsKey{u"MEM7="},
    SettingsKey{u"MEM8="}, SettingsKey{u"MEM9="}};
}  // namespace keys

/// Names one field of a record, a stored command included, or none.
class SettingsField {
 public:
  constexpr SettingsField() = default;
  constexpr SettingsField(QString SettingsRecord::*member) : m_member(member) {}
  [[nodiscard]] static constexpr SettingsField StoredCommand(int index) {
    SettingsField field;
    field.m_command = index;
    return field;
  }

  [[nodiscard]] constexpr bool IsNone() const { return !m_member && m_command < 0; }
  /// The field in this record. Do not call it for no field.
  [[nodiscard]] QString& In(SettingsRecord& record) const;
  [[nodiscard]] const QString& In(const SettingsRecord& record) const;

 private:
  QString SettingsRecord::*m_member = nullptr;
  int m_command = -1;
};

enum class EmptyValue { Refused, Allowed };

/// The description of one setting.
struct Setting {
  SettingsKey key;
  QStringView defaultValue;
  /// Filled from the file when settings are loaded; none for a key that is only written as a default.
  SettingsField field;
  /// Save-all writes this field under the key; not always the key's own field.
  SettingsField savedFrom;
  /// Place among the keys loaded and saved, from 1; 0 = not loaded, not saved.
  int loadPlace = 0;
  int savePlace = 0;
  /// Whether a line with nothing after "=" counts as loaded.
  EmptyValue whenEmpty = EmptyValue::Refused;
};

inline constexpr int kSettingCount = 29;
/// All but MARK_COLOR.
inline constexpr int kLoadedSettingCount = 28;

/// The 29 settings, in the order in which the defaults are listed.
[[nodiscard]] std::span<const Setting, kSettingCount> AllSettings();

/// The setting with this key, or null.
[[nodiscard]] const Setting* FindSetting(SettingsKey key);

/// The 28 settings that a record takes from a file, in the order in which they are looked up.
[[nodiscard]] std::array<const Setting*, kLoadedSettingCount> SettingsInLoadOrder();

/// The 28 settings that save-all writes, in the order in which it does.
[[nodiscard]] std::array<const Setting*, kLoadedSettingCount> SettingsInSaveOrder();

/// The 29 complete lines ("COM_PORT=NONE") of a fresh file, sorted as SortTextList does.
[[nodiscard]] QStringList DefaultLines();

/// A record with every default value.
[[nodiscard]] SettingsRecord DefaultSettings();

}  // namespace quarn
