#include "import/lamedb.h"

#include <algorithm>
#include <array>
#include <map>

#include "import/list_text.h"

namespace vexa {

namespace {

constexpr std::string_view kLamedbStart = "eDVB services /";
constexpr uint32_t kLamedbTvTypes[] = {1, 17, 22, 25, 28, 31, 32}, kLamedbRadioTypes[] = {2, 7, 10};

using LamedbKey = std::array<uint32_t, 3>;  // namespace, stream, network

struct LamedbLine {
  std::string_view text;
  size_t number = 0;
};

struct LamedbHeader {
  LamedbKey transponder;
  uint32_t id = 0, type = 0;
};

// The three fields from `first` on.
std::optional<LamedbKey> KeyOf(const std::vector<std::string_view>& fields, size_t first) {
  LamedbKey key;
  for (size_t i = 0; i < key.size(); ++i) {
    const auto number = WholeNumber(fields[first + i], 16);
    if (!number || (i > 0 && *number > 0xFFFF)) return std::nullopt;
    key[i] = *number;
  }
  return key;
}

std::optional<LamedbKey> ParseTransponderKey(std::string_view text) {
  const auto fields = SplitText(Trimmed(text), ':');
  return fields.size() == 3 ? KeyOf(fields, 0) : std::nullopt;
}

std::optional<LamedbHeader> ParseServiceHeader(std::string_view text) {
  const auto fields = SplitText(Trimmed(text), ':');
  if (fields.size() < 6) return std::nullopt;
  const auto id = WholeNumber(fields[0], 16), type = WholeNumber(fields[4]);
  const auto key = KeyOf(fields, 1);
  if (!id || *id > 0xFFFF || !type || !key) return std::nullopt;
  return LamedbHeader{*key, *id, *type};
}

std::optional<OrbitalPosition> LamedbPosition(std::string_view text) {
  const bool negative = text.starts_with('-');
  const auto tenths = WholeNumber(text.substr(negative ? 1 : 0));
  if (!tenths || *tenths > (negative ? 1800u : 3600u)) return std::nullopt;
  if (negative) return OrbitalPosition{*tenths, *tenths == 0};
  if (*tenths > 1800) return OrbitalPosition{3600 - *tenths, *tenths == 3600};
  return OrbitalPosition{*tenths, true};
}

// What stands behind "s ": nothing when it cannot be read.
std::optional<ListedCarrier> ParseSatelliteTransponder(std::string_view text) {
  const auto fields = SplitText(text, ':');
  if (fields.size() < 6) return std::nullopt;
  const auto frequency = WholeNumber(fields[0]), rate = WholeNumber(fields[1]),
             polarization = WholeNumber(fields[2]), fec = WholeNumber(fields[3]);
  const auto position = LamedbPosition(fields[4]);
  if (!frequency || !rate || !polarization || *polarization > 3 || !fec || !position) return std::nullopt;
  ListedCarrier carrier;
  carrier.position = *position;
  carrier.satellite = PositionName(*position);
  carrier.frequency = RoundedThousandths(*frequency);
  carrier.symbol_rate = RoundedThousandths(*rate);
  carrier.polarization = *polarization;
  carrier.fec = *fec <= 5 ? *fec : 0;
  if (fields.size() > 7) {
    const auto system = WholeNumber(fields[7]);
    if (!system) return std::nullopt;
    if (*system != 0) carrier.system = DeliverySystem::kDvbS2;
  }
  return carrier;
}

uint32_t LamedbType(uint32_t type) {
  const auto is_in = [&](const auto& types) {
    return std::find(std::begin(types), std::end(types), type) != std::end(types);
  };
  return is_in(kLamedbTvTypes) ? uint32_t{kTv} : is_in(kLamedbRadioTypes) ? uint32_t{kRadio} : 0;
}

void TakeCachedPids(std::string_view text, ListedService& service) {
  std::optional<uint32_t> video, audio, pcr, ac3;
  for (std::string_view piece : SplitText(text, ',')) {
    piece = Trimmed(piece);
    if (piece.starts_with("C:")) service.free = false;
    // Some write the PID with its leading zeros, some without.
    if (!piece.starts_with("c:") || piece.size() < 5 || piece.size() > 8) continue;
    const auto pid = WholeNumber(piece.substr(4), 16);
    const std::string_view kind = piece.substr(2, 2);
    auto* place = kind == "00" ? &video : kind == "01" ? &audio : kind == "03" ? &pcr : &ac3;
    if (pid && (place != &ac3 || kind == "04") && !*place) *place = ListedPid(*pid);
  }
  service.video_pid = video.value_or(kNoPid);
  service.audio_pid = audio ? *audio : ac3.value_or(kNoPid);
  service.pcr_pid = pcr.value_or(kNoPid);
}

class LamedbReader {
 public:
  LamedbReader(const DefaultRecords& defaults, const ListOptions& options, ListLosses& losses)
      : losses_(losses), collector_(defaults, options.pages, options.keep_s2, losses) {}

  void Read(const std::vector<LamedbLine>& lines, ListProgress& bar) {
    const bool fifth = !lines.empty() && Trimmed(lines[0].text).substr(kLamedbStart.size()).starts_with("5/");
    if (fifth) {
      for (size_t i = 1; i < lines.size(); ++i) {
        if (Trimmed(lines[i].text) == "end") last_ = i;
      }
    }
    for (size_t i = 1; i < lines.size();) {
      const size_t first = i;
      i += fifth ? TakeFifthLine(lines[i], i) : TakeFourthLines(lines, i);
      for (size_t taken = first; taken < i; ++taken) bar.Step();
    }
  }
  void Finish(WorkRecords& work) const { collector_.Finish(work); }

 private:
  enum class Section { kNone, kTransponders, kServices };

  // `system` is "s" and so on, `text` what stands behind it. False when it cannot be read.
  bool TakeTransponder(const LamedbKey& key, std::string_view system, std::string_view text) {
    if (system != "s") {
      collector_.LeaveOut(std::string(system) + std::to_string(key[0]) + ':' + std::to_string(key[1]) + ':' +
                          std::to_string(key[2]));
      places_.try_emplace(key, std::nullopt);
      return true;
    }
    const auto carrier = ParseSatelliteTransponder(text);
    if (!carrier) return false;
    places_.try_emplace(key, collector_.AddCarrier(*carrier));
    return true;
  }

  void TakeService(const LamedbHeader& header, std::string_view name, std::string_view pids) {
    const auto place = places_.find(header.transponder);
    if (place == places_.end()) {
      ++losses_.homeless_services;
      return;
    }
    if (!place->second) return;
    ListedService service;
    service.name = PlainName(name);
    service.program_number = header.id;
    service.type = LamedbType(header.type);
    TakeCachedPids(pids, service);
    collector_.AddService(*place->second, service);
  }

  // ---- Version 4: how many lines were taken.
  size_t TakeFourthLines(const std::vector<LamedbLine>& lines, size_t i) {
    const std::string_view text = Trimmed(lines[i].text);
    if (text.empty()) return 1;
    if (text == "end") {
      section_ = Section::kNone;
    } else if (section_ == Section::kTransponders) {
      return TakeTransponderLines(lines, i);
    } else if (section_ == Section::kServices) {
      return TakeServiceLines(lines, i);
    } else if (text == "transponders") {
      section_ = Section::kTransponders;
    } else if (text == "services") {
      section_ = Section::kServices;
    }
    return 1;
  }

  static std::string_view TextAt(const std::vector<LamedbLine>& lines, size_t i) {
    return i < lines.size() ? lines[i].text : std::string_view{};
  }

  size_t TakeTransponderLines(const std::vector<LamedbLine>& lines, size_t i) {
    if (Trimmed(lines[i].text) == "/") return 1;
    const auto key = ParseTransponderKey(lines[i].text);
    const std::string_view rest = Trimmed(TextAt(lines, i + 1));
    const size_t blank = rest.find(' ');
    const bool has_rest = blank == 1 && rest[0] >= 'a' && rest[0] <= 'z';
    if (!key) losses_.AddUnreadable(lines[i].number);
    if (key && !has_rest) losses_.AddUnreadable(lines[i].number);
    if (key && has_rest && !TakeTransponder(*key, rest.substr(0, 1), Trimmed(rest.substr(2))))
      losses_.AddUnreadable(lines[i + 1].number);
    return has_rest ? 2 : 1;
  }

  // A service is three lines, even when its name is empty. Where the first cannot be read, the others belong
  // to it when they look like it.
  size_t TakeServiceLines(const std::vector<LamedbLine>& lines, size_t i) {
    const size_t left = lines.size() - i;
    if (const auto header = ParseServiceHeader(lines[i].text)) {
      TakeService(*header, TextAt(lines, i + 1), TextAt(lines, i + 2));
      return std::min<size_t>(left, 3);
    }
    losses_.AddUnreadable(lines[i].number);
    const std::string_view third = TextAt(lines, i + 2);
    const bool whole = !ParseServiceHeader(TextAt(lines, i + 1)) && third.size() > 1 && third[1] == ':';
    return whole ? 3 : 1;
  }

  // ---- Version 5: one line each.
  size_t TakeFifthLine(const LamedbLine& line, size_t place) {
    const std::string_view text = Trimmed(line.text);
    if (text.empty() || text.starts_with('#') || text == "end" || place > last_) return 1;
    if (!(text.starts_with("t:") && TakeFifthTransponder(text.substr(2))) &&
        !(text.starts_with("s:") && TakeFifthService(text.substr(2)))) {
      losses_.AddUnreadable(line.number);
    }
    return 1;
  }

  bool TakeFifthTransponder(std::string_view text) {
    const auto parts = SplitText(text, ',');
    const auto key = ParseTransponderKey(parts[0]);
    if (!key || parts.size() < 2) return false;
    const size_t colon = parts[1].find(':');
    if (colon != 1) return false;
    return TakeTransponder(*key, parts[1].substr(0, 1), parts[1].substr(2));
  }

  bool TakeFifthService(std::string_view text) {
    const size_t comma = text.find(',');
    const auto header = ParseServiceHeader(text.substr(0, comma));
    if (!header || comma == std::string_view::npos || !text.substr(comma + 1).starts_with('"')) return false;
    const std::string_view rest = text.substr(comma + 2);
    // A quotation mark of the name itself has no field behind it.
    for (size_t end = rest.find('"'); end != std::string_view::npos; end = rest.find('"', end + 1)) {
      const std::string_view behind = rest.substr(end + 1);
      if (!behind.empty() && !(behind.size() > 2 && behind[0] == ',' && behind[2] == ':')) continue;
      TakeService(*header, rest.substr(0, end), behind);
      return true;
    }
    return false;
  }

  ListLosses& losses_;
  ChannelCollector collector_;
  std::map<LamedbKey, std::optional<size_t>> places_;  // nothing: the transponder was left out
  Section section_ = Section::kNone;
  size_t last_ = ~size_t{0};  // place of the last "end" of version 5
};

}  // namespace

void ReadLamedb(std::span<const uint8_t> list, const DefaultRecords& defaults, WorkRecords& work,
                const Progress& progress, const ListOptions& options, ListLosses& losses) {
  const std::string text = TextOfList(list, options.pages);
  std::vector<LamedbLine> lines;
  for (ListLines all(text); all.Next();) {
    // The first line says the version; blank ones before it do not count.
    if (!lines.empty() || !Trimmed(all.line).empty()) lines.push_back({all.line, all.number});
  }
  ListProgress bar(progress, lines.size());
  LamedbReader reader(defaults, options, losses);
  if (LooksLikeLamedb({}, text)) reader.Read(lines, bar);
  bar.End();
  reader.Finish(work);
}

bool LooksLikeLamedb(const Path&, std::string_view start) {
  if (start.starts_with(kByteOrderMark)) start.remove_prefix(kByteOrderMark.size());
  start = start.substr(std::min(start.find_first_not_of(" \t\r\n"), start.size()));
  if (!start.starts_with(kLamedbStart)) return false;
  const std::string_view version = start.substr(kLamedbStart.size());
  return version.starts_with("4/") || version.starts_with("5/");
}

}  // namespace vexa
