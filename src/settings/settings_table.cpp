#include "settings/settings_table.h"

#include <algorithm>

#include "base/text_lines.h"
#include "settings/setting_values.h"

namespace quarn {

namespace {

using R = SettingsRecord;

constexpr Setting Text(SettingsKey key, QStringView defaultValue, QString R::*field, int loadPlace,
                       int savePlace) {
  return {key, defaultValue, field, field, loadPlace, savePlace, EmptyValue::Refused};
}

/// The stored commands come after all other settings.
constexpr int kFirstCommandPlace = kLoadedSettingCount - kStoredCommandCount + 1;

/// A stored command may be empty.
constexpr Setting Command(int index, QStringView defaultValue) {
  const SettingsField field = SettingsField::StoredCommand(index);
  return {keys::kMem[static_cast<std::size_t>(index)],
          defaultValue,
          field,
          field,
          kFirstCommandPlace + index,
          kFirstCommandPlace + index,
          EmptyValue::Allowed};
}

constexpr std::array<Setting, kSettingCount> kSettings{{
    Text(keys::kAutoClr, kOff, &R::autoClr, 1, 6),
    Text(keys::kBkColor, values::kNavy.text, &R::bkColor, 13, 11),
    Text(keys::kComPort, kNoPort, &R::comPort, 2, 7),
    Text(keys::kChkCmd, u"id", &R::chkCmd, 3, 12),
    Text(keys::kDelimiter, values::kCr.text, &R::delimiter, 4, 13),
    Text(keys::kComBits, values::k8DataBits.text, &R::comBits, 5, 1),
    Text(keys::kComBps, values::k9600.text, &R::comBps, 6, 2),
    Text(keys::kComBuf, values::kBuffer1K.text, &R::comBuf, 7, 3),
    Text(keys::kComParity, values::kNoParity.text, &R::comParity, 8, 4),
    Text(keys::kComStop, values::k1StopBit.text, &R::comStop, 9, 5),
    Text(keys::kEnblNull, kOff, &R::enblNull, 10, 8),
    // No slip: a save-all leaves ENBL_NULL's text under FUNC_KEY.
    {keys::kFuncKey, kOn, &R::funcKey, &R::enblNull, 11, 9, EmptyValue::Refused},
    Text(keys::kInputMax, values::kNarrow.text, &R::inputMax, 12, 10),
    Text(keys::kLineNum, kOff, &R::lineNum, 14, 14),
    Text(keys::kMainPos, values::kTopLeft.text, &R::mainPos, 18, 15),
    // In every new file, but not in the record.
    {keys::kMarkColor, u"WHITE", {}, {}, 0, 0, EmptyValue::Refused},
    Command(0, u"function-1"),
    Command(1, u"function-2"),
    Command(2, u"function-3"),
    Command(3, u"function-4"),
    Command(4, u"function-5"),
    Command(5, u"function-6"),
    Command(6, u"function-7"),
    Command(7, u"function-8"),
    Command(8, u"function-9"),
    Command(9, u"function-10"),
    Text(keys::kPortSpeed, values::kHighSpeed.text, &R::portSpeed, 16, 17),
    Text(keys::kRTimeout, kOn, &R::rTimeout, 17, 18),
    Text(keys::kStartDisp, kOn, &R::startDisp, 15, 16),
}};

/// Puts each setting at its place; a missing or repeated place does not compile.
constexpr std::array<const Setting*, kLoadedSettingCount> InOrderOf(int Setting::*place) {
  std::array<const Setting*, kLoadedSettingCount> ordered{};
  for (const Setting& setting : kSettings) {
    if (setting.*place > 0) ordered[static_cast<std::size_t>(setting.*place - 1)] = &setting;
  }
  return ordered;
}

constexpr bool IsComplete(const std::array<const Setting*, kLoadedSettingCount>& ordered) {
  return std::none_of(ordered.begin(), ordered.end(), [](const Setting* setting) { return !setting; });
}

constexpr auto kLoadOrder = InOrderOf(&Setting::loadPlace);
constexpr auto kSaveOrder = InOrderOf(&Setting::savePlace);
static_assert(IsComplete(kLoadOrder),
              "a place in the order of loading is missing, because another is used twice");
static_assert(IsComplete(kSaveOrder),
              "a place in the order of saving is missing, because another is used twice");

}  // namespace

QString& SettingsField::In(SettingsRecord& record) const {
  Q_ASSERT(!IsNone());
  return m_member ? record.*m_member : record.mem[static_cast<std::size_t>(m_command)];
}

const QString& SettingsField::In(const SettingsRecord& record) const {
  Q_ASSERT(!IsNone());
  return m_member ? record.*m_member : record.mem[static_cast<std::size_t>(m_command)];
}

std::span<const Setting, kSettingCount> AllSettings() { return kSettings; }

const Setting* FindSetting(SettingsKey key) {
  const auto it =
      std::find_if(kSettings.begin(), kSettings.end(), [&](const Setting& s) { return s.key == key; });
  return it == kSettings.end() ? nullptr : &*it;
}

std::array<const Setting*, kLoadedSettingCount> SettingsInLoadOrder() { return kLoadOrder; }

std::array<const Setting*, kLoadedSettingCount> SettingsInSaveOrder() { return kSaveOrder; }

QStringList DefaultLines() {
  QStringList lines;
  for (const Setting& setting : kSettings) {
    lines.append(setting.key.Text().toString().append(setting.defaultValue));
  }
  SortTextList(lines);
  return lines;
}

SettingsRecord DefaultSettings() {
  SettingsRecord record;
  for (const Setting* setting : kLoadOrder) setting->field.In(record) = setting->defaultValue.toString();
  return record;
}

}  // namespace quarn
