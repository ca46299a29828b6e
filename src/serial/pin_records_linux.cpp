#include "serial/pin_records_linux.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <charconv>
#include <cstdio>

#include "serial/file_descriptor.h"
#include "serial/port_folder_linux.h"
#include "serial/retry_on_eintr_linux.h"

namespace quarn {

namespace {

constexpr std::string_view kHeading =
    "# Which device each of the links here stands for. Quarn keeps this; delete a link to have it "
    "forgotten.\n";
constexpr std::size_t kFields = 8;

void AppendEscaped(std::string& out, const std::string& text) {
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte >= 0x20 && byte != 0x7F && c != '\\') {
      out += c;
      continue;
    }
    std::array<char, 5> escaped{};
    std::snprintf(escaped.data(), escaped.size(), "\\x%02x", byte);
    out += escaped.data();
  }
}

std::string Unescaped(std::string_view text) {
  std::string out;
  while (!text.empty()) {
    unsigned int byte = 0;
    if (text.starts_with("\\x") && text.size() >= 4 &&
        std::from_chars(text.data() + 2, text.data() + 4, byte, 16).ptr == text.data() + 4) {
      out += static_cast<char>(byte);
      text.remove_prefix(4);
    } else {
      out += text.front();
      text.remove_prefix(1);
    }
  }
  return out;
}

template <class Number>
bool ReadNumber(std::string_view text, Number& number) {
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  return error == std::errc() && end == text.data() + text.size();
}

std::optional<PinRecord> RecordOf(std::string_view line) {
  std::array<std::string_view, kFields> fields;
  for (std::size_t i = 0; i < kFields; ++i) {
    const std::size_t tab = line.find('\t');
    if ((tab == std::string_view::npos) != (i + 1 == kFields)) {
      return std::nullopt;
    }
    fields.at(i) = line.substr(0, tab);
    line.remove_prefix(tab == std::string_view::npos ? line.size() : tab + 1);
  }
  PinRecord record;
  const std::optional<int> number = PortLinkNumber(std::string(fields[0]));
  if (!number || !ReadNumber(fields[1], record.inode)) {
    return std::nullopt;
  }
  record.number = *number;
  record.target = Unescaped(fields[2]);
  record.device = {Unescaped(fields[3]), Unescaped(fields[4]), Unescaped(fields[5]), Unescaped(fields[6]),
                   Unescaped(fields[7])};
  if (record.target.empty() || !record.device.IsKnown()) {
    return std::nullopt;
  }
  return record;
}

bool WriteWhole(int file, std::string_view text) {
  while (!text.empty()) {
    const ssize_t count = RetryOnEintr([&] { return ::write(file, text.data(), text.size()); });
    if (count < 0) {
      return false;
    }
    text.remove_prefix(static_cast<std::size_t>(count));
  }
  return true;
}

}  // namespace

std::string FormatPinRecords(const std::vector<PinRecord>& records) {
  std::string text(kHeading);
  for (const PinRecord& record : records) {
    text += "COM" + std::to_string(record.number) + '\t' + std::to_string(record.inode);
    const DeviceIdentity& device = record.device;
    for (const std::string* field :
         {&record.target, &device.name, &device.path, &device.vendor, &device.model, &device.serial}) {
      text += '\t';
      AppendEscaped(text, *field);
    }
    text += '\n';
  }
  return text;
}

std::vector<PinRecord> ParsePinRecords(std::string_view text) {
  std::vector<PinRecord> records;
  text = text.substr(0, kPinRecordsLimit);
  // A line without an end was cut off.
  for (std::size_t end = text.find('\n'); end != std::string_view::npos; end = text.find('\n')) {
    if (std::optional<PinRecord> record = RecordOf(text.substr(0, end))) {
      records.push_back(std::move(*record));
    }
    text.remove_prefix(end + 1);
  }
  return records;
}

std::optional<std::vector<PinRecord>> ReadPinRecords(const std::string& folder, std::error_code& problem) {
  const std::string path = folder + '/' + kPinRecordsFile;
  // It may be anything: a pipe must not block the listing.
  const FileDescriptor file(
      RetryOnEintr([&] { return ::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC); }));
  if (!file.IsValid()) {
    if (errno == ENOENT || errno == ENOTDIR) {
      return std::vector<PinRecord>();
    }
    problem = {errno, std::generic_category()};
    return std::nullopt;
  }
  std::string text;
  std::array<char, 8192> buffer{};
  while (text.size() < kPinRecordsLimit) {
    const ssize_t count = RetryOnEintr([&] { return ::read(file.Get(), buffer.data(), buffer.size()); });
    if (count < 0) {
      problem = {errno, std::generic_category()};
      return std::nullopt;
    }
    if (count == 0) {
      break;
    }
    text.append(buffer.data(), static_cast<std::size_t>(count));
  }
  return ParsePinRecords(text);
}

bool WritePinRecords(const std::string& folder, const std::vector<PinRecord>& records,
                     std::error_code& problem) {
  const std::string path = folder + '/' + kPinRecordsFile;
  const std::string beside = folder + "/.devices-" + std::to_string(::getpid());
  // Left by a process with the same PID that ended halfway.
  ::unlink(beside.c_str());
  FileDescriptor file(RetryOnEintr(
      [&] { return ::open(beside.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600); }));
  const bool written = file.IsValid() && WriteWhole(file.Get(), FormatPinRecords(records)) &&
                       RetryOnEintr([&] { return ::fsync(file.Get()); }) == 0 && file.Close() &&
                       ::rename(beside.c_str(), path.c_str()) == 0;
  if (!written) {
    problem = {errno, std::generic_category()};
    ::unlink(beside.c_str());
  }
  return written;
}

}  // namespace quarn
