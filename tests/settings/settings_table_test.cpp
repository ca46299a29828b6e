#include "settings/settings_table.h"

#include <set>

#include "settings/settings_test_support.h"

namespace quarn {
namespace {

QStringList KeysOf(const std::array<const Setting*, kLoadedSettingCount>& settings) {
  QStringList keys;
  for (const Setting* setting : settings) keys.append(setting->key.Text().chopped(1).toString());
  return keys;
}

QStringList Words(const char* text) { return QString::fromLatin1(text).split(u' ', Qt::SkipEmptyParts); }

TEST(SettingsTable, ListsTheDefaultsInTheirOrder) {
  QStringList lines;
  for (const Setting& setting : AllSettings()) {
    lines.append(setting.key.Text().toString() + setting.defaultValue.toString());
  }
  EXPECT_EQ(lines, Words("AUTO_CLR=OFF BK_COLOR=NAVY COM_PORT=NONE CHK_CMD=id DELIMITER=CR COM_BITS=8 "
                         "COM_BPS=9600 COM_BUF=1K COM_PARITY=None COM_STOP=1 ENBL_NULL=OFF FUNC_KEY=ON "
                         "INPUT_MAX=N LINE_NUM=OFF MAIN_POS=TL MARK_COLOR=WHITE MEM0=function-1 "
                         "MEM1=function-2 MEM2=function-3 MEM3=function-4 MEM4=function-5 MEM5=function-6 "
                         "MEM6=function-7 MEM7=function-8 MEM8=function-9 MEM9=function-10 PORT_SPEED=HIGH "
                         "R_TIMEOUT=ON START_DISP=ON"));
}

TEST(SettingsTable, DefaultLinesComeSorted) {
  EXPECT_EQ(DefaultLines(), SortedDefaults());
  EXPECT_EQ(DefaultLines().size(), 29);
}

TEST(SettingsTable, LoadsInThisOrder) {
  EXPECT_EQ(
      KeysOf(SettingsInLoadOrder()),
      Words("AUTO_CLR COM_PORT CHK_CMD DELIMITER COM_BITS COM_BPS COM_BUF COM_PARITY COM_STOP ENBL_NULL "
            "FUNC_KEY INPUT_MAX BK_COLOR LINE_NUM START_DISP PORT_SPEED R_TIMEOUT MAIN_POS MEM0 MEM1 "
            "MEM2 MEM3 MEM4 MEM5 MEM6 MEM7 MEM8 MEM9"));
}

TEST(SettingsTable, SavesInThisOrder) {
  EXPECT_EQ(
      KeysOf(SettingsInSaveOrder()),
      Words("COM_BITS COM_BPS COM_BUF COM_PARITY COM_STOP AUTO_CLR COM_PORT ENBL_NULL FUNC_KEY INPUT_MAX "
            "BK_COLOR CHK_CMD DELIMITER LINE_NUM MAIN_POS START_DISP PORT_SPEED R_TIMEOUT MEM0 MEM1 MEM2 "
            "MEM3 MEM4 MEM5 MEM6 MEM7 MEM8 MEM9"));
}

TEST(SettingsTable, EachLoadedSettingHasAFieldOfItsOwn) {
  SettingsRecord record;
  std::set<const QString*> fields;
  for (const Setting* setting : SettingsInLoadOrder()) fields.insert(&setting->field.In(record));
  EXPECT_EQ(fields.size(), 28U);
  EXPECT_EQ(fields.count(&record.loadedMarker), 0U);
}

TEST(SettingsTable, OnlyMarkColorHasNoField) {
  for (const Setting& setting : AllSettings()) {
    EXPECT_EQ(setting.field.IsNone(), setting.key == keys::kMarkColor);
    EXPECT_EQ(setting.savedFrom.IsNone(), setting.key == keys::kMarkColor);
  }
}

TEST(SettingsTable, NamesTheFieldsByTheirKeys) {
  SettingsRecord record;
  const auto field = [&](SettingsKey key) { return &FindSetting(key)->field.In(record); };
  EXPECT_EQ(field(keys::kAutoClr), &record.autoClr);
  EXPECT_EQ(field(keys::kBkColor), &record.bkColor);
  EXPECT_EQ(field(keys::kChkCmd), &record.chkCmd);
  EXPECT_EQ(field(keys::kComBits), &record.comBits);
  EXPECT_EQ(field(keys::kComBps), &record.comBps);
  EXPECT_EQ(field(keys::kComBuf), &record.comBuf);
  EXPECT_EQ(field(keys::kComParity), &record.comParity);
  EXPECT_EQ(field(keys::kComPort), &record.comPort);
  EXPECT_EQ(field(keys::kComStop), &record.comStop);
  EXPECT_EQ(field(keys::kDelimiter), &record.delimiter);
  EXPECT_EQ(field(keys::kEnblNull), &record.enblNull);
  EXPECT_EQ(field(keys::kFuncKey), &record.funcKey);
  EXPECT_EQ(field(keys::kInputMax), &record.inputMax);
  EXPECT_EQ(field(keys::kLineNum), &record.lineNum);
  EXPECT_EQ(field(keys::kMainPos), &record.mainPos);
  EXPECT_EQ(field(keys::kPortSpeed), &record.portSpeed);
  EXPECT_EQ(field(keys::kRTimeout), &record.rTimeout);
  EXPECT_EQ(field(keys::kStartDisp), &record.startDisp);
  for (std::size_t i = 0; i < record.mem.size(); ++i) {
    EXPECT_EQ(field(keys::kMem[i]), &record.mem[i]) << i;
    EXPECT_EQ(keys::kMem[i].Text(), QStringLiteral("MEM%1=").arg(i)) << i;
  }
}

TEST(SettingsTable, OnlyStoredCommandsMayBeEmpty) {
  for (const Setting& setting : AllSettings()) {
    const bool isCommand = setting.key.Text().startsWith(u"MEM");
    EXPECT_EQ(setting.whenEmpty == EmptyValue::Allowed, isCommand) << setting.key.Text().toUtf8().constData();
  }
}

TEST(SettingsTable, FindsNoSettingForAnotherKey) {
  EXPECT_EQ(FindSetting(SettingsKey(u"COM_PORT")), nullptr);
  EXPECT_EQ(FindSetting(SettingsKey(u"com_port=")), nullptr);
  EXPECT_EQ(FindSetting(SettingsKey(u".VER=")), nullptr);
}

}  // namespace
}  // namespace quarn
