#include "import/lyngsat.h"

#include <algorithm>
#include <cstring>
#include <optional>
#include <string>
#include <string_view>

#include "import/list_reader.h"

namespace vexa {

namespace {

constexpr size_t kLongestLine = 255, kShortestService = 12, kNameStart = 6, kFieldStart = 5;
constexpr size_t kReserved = 1 << 17;  // services; more come into a list that grows
constexpr uint32_t kLargestFrequency = 15000, kLargestSymbolRate = 45000;

std::string_view WithoutLast(std::string_view text, size_t count) {
  return text.substr(0, text.size() < count ? 0 : text.size() - count);
}

// The field that `rest` starts with, up to the next space; `rest` moves behind that space.
std::string_view NextField(std::string_view& rest) {
  const size_t space = rest.find(' ');
  const std::string_view field = rest.substr(0, space);
  rest = space == std::string_view::npos ? std::string_view{} : rest.substr(space + 1);
  return field;
}

// A name in quotes, the field behind it and the letter behind that.
struct NamedLine {
  std::string_view name, field;
  char letter;
};

std::optional<NamedLine> ReadNamedLine(std::string_view line) {
  const size_t quote = line.find('"', kNameStart);
  if (quote == std::string_view::npos || quote + 2 >= line.size()) return std::nullopt;
  NamedLine parts;
  parts.name = line.substr(kNameStart, quote - kNameStart);
  while (parts.name.ends_with(' ')) parts.name.remove_suffix(1);
  std::string_view rest = line.substr(quote + 2);
  parts.field = NextField(rest);
  if (parts.field.empty() || rest.empty()) return std::nullopt;
  parts.letter = rest.front();
  return parts;
}

// Degrees to tenths, further digits dropped.
uint32_t TenthsOf(std::string_view degrees) {
  const uint32_t tenths = TakeDecimalPrefix(degrees) * 10;
  return degrees.starts_with('.') ? tenths + DecimalPrefix(degrees.substr(1, 1)) : tenths;
}

void TakeSatellite(ListReader& reader, std::string_view line) {
  const auto parts = ReadNamedLine(line);
  if (!parts) return;
  WorkSatellite satellite = reader.new_satellite;
  reader.SetListedName(satellite.name, parts->name);
  satellite.angle = TenthsOf(parts->field) & 0xFFF;
  satellite.east = parts->letter != 'W';
  reader.Add(satellite);
}

uint32_t PolarizationOf(std::string_view field) {
  switch (field.empty() ? '\0' : field.front()) {
    case 'H':
      return kHorizontal;
    case 'V':
      return kVertical;
    case 'L':
      return kLeft;
    default:
      return kRight;
  }
}

uint32_t FecOf(std::string_view rest) {
  while (rest.starts_with(' ')) rest.remove_prefix(1);
  while (rest.ends_with(' ')) rest.remove_suffix(1);
  return FecCodeOf(rest);
}

void TakeTransponder(ListReader& reader, std::string_view line) {
  if (reader.work.satellites.empty() || line.size() <= kFieldStart) return;
  std::string_view rest = line.substr(kFieldStart);
  const std::string_view frequency = NextField(rest), symbol_rate = NextField(rest);
  NextField(rest);
  const std::string_view polarization = NextField(rest);
  NextField(rest);
  if (frequency.empty() || symbol_rate.empty() || polarization.empty()) return;
  WorkCarrier carrier = reader.new_carrier;
  carrier.frequency = DecimalPrefix(frequency);
  if (carrier.frequency > kLargestFrequency) carrier.frequency = DecimalPrefix(WithoutLast(frequency, 2));
  uint32_t rate = DecimalPrefix(WithoutLast(symbol_rate, 1));
  if (rate > kLargestSymbolRate) rate = DecimalPrefix(WithoutLast(symbol_rate, 2));
  carrier.symbol_rate = rate & 0xFFFFFF;
  carrier.polarization = PolarizationOf(polarization) & 3;
  carrier.fec = FecOf(rest) & 7;
  reader.NameByNumber(carrier);
  reader.Add(carrier);
}

// The previous service may be of another carrier, which then tells them apart.
bool IsDuplicate(const ListReader& reader, const WorkService& service) {
  const WorkService& previous = reader.previous_service;
  return previous.type == service.type && previous.carrier_index == service.carrier_index &&
         std::memcmp(previous.name, service.name, kNameSize) == 0;
}

void TakeService(ListReader& reader, std::string_view line) {
  if (reader.work.carriers.empty()) return;
  const auto parts = ReadNamedLine(line);
  if (!parts) return;
  WorkService service = reader.new_service;
  reader.SetListedName(service.name, parts->name);
  service.type = parts->letter == 'T' ? kTv : kRadio;
  service.video_pid = service.audio_pid = service.pcr_pid = kNoPid;
  service.free = 1;
  service.carrier_index = (reader.carriers() - 1) & 0xFFFF;
  service.program_number = reader.ids.Unique(DecimalPrefix(parts->field)) & 0xFFFF;
  if (IsDuplicate(reader, service)) return;
  reader.Add(service);
}

void TakeLine(ListReader& reader, std::string_view line) {
  if (line.starts_with(":SAT")) return TakeSatellite(reader, line);
  if (line.starts_with(":TRP")) return TakeTransponder(reader, line);
  if (line.starts_with(":CHN")) return TakeService(reader, line);
}

}  // namespace

void ReadLyngsat(std::span<const uint8_t> list, const DefaultRecords& defaults, WorkRecords& work,
                 const Progress& progress, const ListPages& pages, ListLosses* losses) {
  work = {};
  ListReader reader(work, defaults, NameConverter(list, pages), losses);
  std::string_view text(reinterpret_cast<const char*>(list.data()), list.size());
  work.services.reserve(std::min(list.size() / kShortestService, kReserved));
  // Counting takes a good part of the time of reading: only for somebody who watches.
  const auto colons = progress.range ? std::count(text.begin(), text.end(), ':') : 0;
  ListProgress bar(progress, static_cast<uint64_t>(colons));
  while (!text.empty()) {
    const size_t end = text.find('\n');
    std::string_view line = text.substr(0, end);
    text = end == std::string_view::npos ? std::string_view{} : text.substr(end + 1);
    if (line.ends_with('\r') && end != std::string_view::npos) line.remove_suffix(1);
    for (; !line.empty(); line = line.substr(std::min(line.size(), kLongestLine))) {
      TakeLine(reader, line.substr(0, kLongestLine));
      bar.Step();
    }
  }
  bar.End();
}

}  // namespace vexa
