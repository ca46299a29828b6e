#include "send/port_listing.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <algorithm>
#include <array>

#include "send/exit_status.h"
#include "send/report.h"
#include "send/standard_output.h"
#include "terminal/render.h"

namespace quarn::send {
namespace {

constexpr std::size_t kColumns = 6;
using Row = std::array<QByteArray, kColumns>;

constexpr std::array<const char*, kColumns> kColumnNames{
    "port", "device", "description", "lasting_name", "unavailable_reason", "holder"};

Row RowOf(const PortDetails& port) {
  Row row;
  std::ranges::transform(std::array{port.name, port.device, port.description, port.lastingName,
                                    port.unavailableReason, port.holder},
                         row.begin(), [](const QString& each) { return SpellOut(each.toUtf8()); });
  return row;
}

QByteArray Table(const std::vector<Row>& rows) {
  std::array<qsizetype, kColumns> widths{};
  for (const Row& row : rows) {
    for (std::size_t i = 0; i < kColumns; ++i) widths[i] = std::max(widths[i], row[i].size());
  }
  QByteArray text;
  for (const Row& row : rows) {
    QByteArray line;
    for (std::size_t i = 0; i < kColumns; ++i) {
      // A column without any value takes no room.
      if (widths[i] > 0) line += row[i].leftJustified(widths[i]) + "  ";
    }
    while (line.endsWith(' ')) line.chop(1);
    text += line + '\n';
  }
  return text;
}

QByteArray JsonLine(const Row& row) {
  QJsonObject line;
  for (std::size_t i = 0; i < kColumns; ++i) {
    line.insert(QString::fromLatin1(kColumnNames[i]), QString::fromLatin1(row[i]));
  }
  return QJsonDocument(line).toJson(QJsonDocument::Compact) + '\n';
}

QByteArray CsvLineOf(const Row& row) { return CsvLine(QByteArrayList(row.begin(), row.end())); }

}  // namespace

QByteArray PortListing(const std::vector<PortDetails>& ports, Output output) {
  std::vector<Row> rows;
  rows.reserve(ports.size());
  for (const PortDetails& each : ports) rows.push_back(RowOf(each));
  if (output != Output::Json && output != Output::Csv) return Table(rows);
  QByteArray text;
  if (output == Output::Csv) {
    Row names;
    std::ranges::copy(kColumnNames, names.begin());
    text = CsvLineOf(names);
  }
  for (const Row& each : rows) text += output == Output::Csv ? CsvLineOf(each) : JsonLine(each);
  return text;
}

int PrintPorts(const Options& options, const QString& portsFolder) {
  const auto ports = ListPortDetails(portsFolder);
  if (!ports) {
    Complain(QStringLiteral("the ports cannot be listed; see the folder %1").arg(portsFolder));
    return kFailed;
  }
  if (ports->empty()) Complain(QStringLiteral("there is no port; plug a device in"));
  return Print(PortListing(*ports, options.output)) ? 0 : kNotPrinted;
}

}  // namespace quarn::send
