#include "system/kill/kill_steps.h"

#include <algorithm>
#include <random>

#include "settings/data_folder.h"
#include "settings/key_store.h"
#include "settings/settings_load_save.h"
#include "settings/settings_table.h"
#include "settings/user_file.h"
#include "support/recorded_messages.h"
#include "terminal/function_key_table.h"

namespace quarn::kill {
namespace {

/// One of these is chosen at random; changing one setting is the most frequent.
constexpr std::array kDeeds{Deed::SetOption, Deed::SetOption,      Deed::SetOption, Deed::SaveCommands,
                            Deed::SaveAll,   Deed::Save,           Deed::Save,      Deed::Open,
                            Deed::Open,      Deed::RestoreDefaults};
/// Files have different lengths, so that the rest of a longer one is noticed.
constexpr int kLongestFill = 150;

bool IsPort(const Setting& setting) { return setting.key == keys::kComPort; }

void Put(QByteArray& bytes, SettingsKey key, const QString& value) {
  const QByteArray start = "\r\n" + key.Text().toUtf8();
  const qsizetype from = bytes.indexOf(start) + start.size();
  bytes.replace(from, bytes.indexOf("\r\n", from) - from, value.toUtf8());
}

bool SaveCommands(const QString& path, const QString& text) {
  SettingsRecord record;
  FunctionKeyTable table(record);
  for (int i = 0; i < kStoredCommandCount; ++i) table.SetEditText(i, text);
  return table.Save(path);
}

bool OpenFile(const Paths& paths) {
  test::RecordedMessages messages;
  SettingsRecord record;
  return !OpenUserFile(paths.user, paths.working, record, messages).isEmpty();
}

}  // namespace

Step StepOf(std::uint32_t seed, int writer, int number) {
  std::seed_seq sequence{seed, static_cast<std::uint32_t>(writer), static_cast<std::uint32_t>(number)};
  std::mt19937 random(sequence);
  const auto below = [&random](int limit) {
    return std::uniform_int_distribution<int>(0, limit - 1)(random);
  };
  Step step;
  step.deed = kDeeds.at(static_cast<std::size_t>(below(static_cast<int>(kDeeds.size()))));
  do {
    step.setting = below(kSettingCount);
  } while (IsPort(AllSettings()[static_cast<std::size_t>(step.setting)]));
  step.text =
      QStringLiteral("%1.%2 ").arg(writer).arg(number) + QString(below(kLongestFill), QLatin1Char('x'));
  return step;
}

SettingsRecord RecordOf(const QString& text) {
  SettingsRecord record = DefaultSettings();
  for (const Setting* setting : SettingsInSaveOrder()) {
    if (!IsPort(*setting)) setting->field.In(record) = text;
  }
  return record;
}

Paths PathsIn(const QString& folder) {
  return {folder, WorkingSettingsFile(folder), folder + QStringLiteral("user.qrn")};
}

bool Perform(const Step& step, const Paths& paths) {
  switch (step.deed) {
    case Deed::SetOption:
      return UpdateValue(paths.working, AllSettings()[static_cast<std::size_t>(step.setting)].key, step.text);
    case Deed::SaveCommands:
      return SaveCommands(paths.working, step.text);
    case Deed::SaveAll:
      return SaveAllSettings(paths.working, RecordOf(step.text));
    case Deed::Save:
      return CopySettingsFile(paths.working, paths.user);
    case Deed::Open:
      return OpenFile(paths);
    case Deed::RestoreDefaults:
      return WriteDefaultFile(paths.working);
  }
  return false;
}

Contents After(const Step& step, const Contents& before, const QByteArray& defaults) {
  Contents after = before;
  const auto put = [&after](SettingsKey key, const QString& value) { Put(after.working, key, value); };
  switch (step.deed) {
    case Deed::SetOption:
      put(AllSettings()[static_cast<std::size_t>(step.setting)].key, step.text);
      break;
    case Deed::SaveCommands:
      for (const SettingsKey key : keys::kMem) put(key, step.text);
      break;
    case Deed::SaveAll: {
      const SettingsRecord record = RecordOf(step.text);
      for (const Setting* setting : SettingsInSaveOrder()) put(setting->key, setting->savedFrom.In(record));
      break;
    }
    case Deed::Save:
      after.user = before.working;
      break;
    case Deed::Open:
      after.working = before.user;
      break;
    case Deed::RestoreDefaults:
      after.working = defaults;
      break;
  }
  return after;
}

}  // namespace quarn::kill
