// The guide's table of settings, beside the program's.

#include <QFile>
#include <QMap>
#include <QRegularExpression>
#include <array>
#include <span>
#include <utility>

#include "settings/setting_values.h"
#include "settings/settings_table.h"
#include "settings/settings_test_support.h"

namespace quarn {
namespace {

/// Values and default of each row, by the key with its "=".
QMap<QString, std::pair<QString, QString>> GuideRows() {
  QFile guide(QStringLiteral(QUARN_TEST_DATA "/../../docs/guide.md"));
  EXPECT_TRUE(guide.open(QIODevice::ReadOnly));
  static const QRegularExpression row(
      QStringLiteral("^\\| `([A-Z0-9_]+)` \\| ([^|]*) \\| `([^`]*)` \\| [^|]+ \\|$"));
  QMap<QString, std::pair<QString, QString>> rows;
  for (const QString& line : QString::fromUtf8(guide.readAll()).split(u'\n')) {
    const QRegularExpressionMatch match = row.match(line);
    if (match.hasMatch()) rows[match.captured(1) + u'='] = {match.captured(2), match.captured(3)};
  }
  return rows;
}

QStringList Sorted(QStringList texts) {
  texts.sort();
  return texts;
}

TEST(GuideSettings, HaveTheProgramsKeysAndDefaults) {
  const auto rows = GuideRows();
  EXPECT_EQ(rows.size(), kSettingCount);
  for (const Setting& setting : AllSettings()) {
    const QString key = setting.key.Text().toString();
    ASSERT_TRUE(rows.contains(key)) << key.toStdString();
    EXPECT_EQ(rows[key].second, setting.defaultValue.toString()) << key.toStdString();
  }
}

TEST(GuideSettings, HaveTheProgramsValues) {
  constexpr std::array kLengths{values::kNarrow, values::kMedium, values::kWide};
  constexpr std::array kColours{values::kNavy, values::kBlack, values::kSystemColours};
  constexpr std::array kPlaces{values::kTopLeft, values::kTopRight};
  struct Row {
    SettingsKey key;
    std::span<const SettingValue> values;
  };
  const auto rows = GuideRows();
  for (const Row& each :
       {Row{keys::kComBps, values::kBitRates}, Row{keys::kComBits, values::kDataBits},
        Row{keys::kComParity, values::kParities}, Row{keys::kComStop, values::kStopBits},
        Row{keys::kComBuf, values::kBufferSizes}, Row{keys::kDelimiter, values::kDelimiters},
        Row{keys::kPortSpeed, values::kSpeeds}, Row{keys::kInputMax, kLengths}, Row{keys::kBkColor, kColours},
        Row{keys::kMainPos, kPlaces}}) {
    QStringList texts;
    for (const SettingValue& value : each.values) texts.append(u'`' + value.text.toString() + u'`');
    EXPECT_EQ(Sorted(rows[each.key.Text().toString()].first.split(QStringLiteral(", "))), Sorted(texts))
        << each.key.Text().toString().toStdString();
  }
}

}  // namespace
}  // namespace quarn
