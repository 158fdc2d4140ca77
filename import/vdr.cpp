#include "import/vdr.h"

#include "import/list_text.h"

namespace vexa {

namespace {

constexpr size_t kVdrFields = 10;  // up to the program number
constexpr uint32_t kLargestVdrMegahertz = 100000;

char UpperLetter(char c) {
  return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}
bool IsUpperLetter(char c) {
  return c >= 'A' && c <= 'Z';
}

// False without a polarisation and for anything but letters with their numbers.
bool TakeVdrParameters(std::string_view text, ListedCarrier& carrier) {
  constexpr std::string_view kPolarizationLetters = "HVLR";  // by code
  constexpr std::pair<std::string_view, std::string_view> kVdrFecs[] = {
      {"12", "1/2"}, {"23", "2/3"}, {"34", "3/4"}, {"56", "5/6"}, {"78", "7/8"}};
  bool polarized = false;
  while (!text.empty()) {
    const char letter = UpperLetter(text.front());
    if (!IsUpperLetter(letter)) return false;
    text.remove_prefix(1);
    const std::string_view number = text.substr(0, text.find_first_not_of("0123456789"));
    text.remove_prefix(number.size());
    const size_t polarization = kPolarizationLetters.find(letter);
    if (polarization != std::string_view::npos) {
      carrier.polarization = polarization & 3;
      polarized = true;
    } else if (letter == 'C') {
      carrier.fec = 0;
      for (const auto& [digits, fec] : kVdrFecs) {
        if (digits == number) carrier.fec = FecCodeOf(fec);
      }
    } else if (letter == 'S') {
      const bool second = number.find_first_not_of('0') != std::string_view::npos;
      carrier.system = second ? DeliverySystem::kDvbS2 : DeliverySystem::kDvbS;
    }
  }
  return polarized;
}

// A PID with what may stand behind it; an empty text is none (0). False: there is no number.
bool TakeVdrPid(std::string_view text, uint32_t& pid) {
  const auto number = WholeNumber(text.substr(0, text.find_first_of("+=@")));
  pid = number.value_or(0);
  return number || text.empty();
}

// False for fields that are no numbers.
bool TakeVdrPids(std::string_view video_text, std::string_view audio_text, ListedService& service) {
  uint32_t video = 0, pcr = 0, audio = 0;
  if (!TakeVdrPid(video_text, video)) return false;
  const size_t plus = video_text.find('+');
  if (plus != std::string_view::npos && !TakeVdrPid(video_text.substr(plus + 1), pcr)) return false;
  for (const std::string_view kind : SplitText(audio_text, ';')) {
    if (audio == 0 && !TakeVdrPid(kind.substr(0, kind.find(',')), audio)) return false;
  }
  const bool tv = video > 1;
  service.type = tv ? uint32_t{kTv} : audio > 0 ? uint32_t{kRadio} : 0;
  service.video_pid = tv ? ListedPid(video) : kNoPid;
  service.pcr_pid = pcr > 0 ? ListedPid(pcr) : service.video_pid;
  service.audio_pid = audio > 0 ? ListedPid(audio) : kNoPid;
  return true;
}

std::string VdrName(std::string_view text) {
  text = text.substr(0, text.find(';'));
  std::string name(text.substr(0, text.rfind(',')));
  for (char& c : name) {
    if (c == '|') c = ':';
  }
  return PlainName(name);
}

bool TakeVdrCarrier(const std::vector<std::string_view>& fields, ListedCarrier& carrier) {
  const auto position = ParsePosition(fields[3].substr(1));
  const auto frequency = WholeNumber(fields[1]), rate = WholeNumber(fields[4]);
  if (!position || !frequency || !rate || *rate > 0xFFFFFF) return false;
  carrier.position = *position;
  carrier.satellite = PositionName(*position);
  carrier.frequency = *frequency > kLargestVdrMegahertz ? RoundedThousandths(*frequency) : *frequency;
  carrier.symbol_rate = *rate;
  return TakeVdrParameters(fields[2], carrier);
}

// False for a line that cannot be read.
bool TakeVdrLine(std::string_view line, ChannelCollector& collector) {
  const std::vector<std::string_view> fields = SplitText(line, ':');
  if (fields.size() < kVdrFields || fields[3].empty()) return false;
  const char source = UpperLetter(fields[3].front());
  if (source != 'S') {
    if (!IsUpperLetter(source)) return false;
    collector.LeaveOut(std::string(fields[3]) + ':' + std::string(fields[1]) + ':' + std::string(fields[4]));
    return true;
  }
  ListedCarrier carrier;
  ListedService service;
  const auto id = WholeNumber(fields[9]);
  if (!TakeVdrCarrier(fields, carrier) || !TakeVdrPids(fields[5], fields[6], service) || !id || *id > 0xFFFF)
    return false;
  service.name = VdrName(fields[0]);
  service.program_number = *id;
  service.free = fields[8].find_first_not_of("0,") == std::string_view::npos;
  if (const auto place = collector.AddCarrier(carrier)) collector.AddService(*place, service);
  return true;
}

}  // namespace

void ReadVdr(std::span<const uint8_t> list, const DefaultRecords& defaults, WorkRecords& work,
             const Progress& progress, const ListOptions& options, ListLosses& losses) {
  const std::string text = TextOfList(list, options.pages);
  ChannelCollector collector(defaults, options.pages, options.keep_s2, losses);
  ListProgress bar(progress, LineCount(text));
  for (ListLines lines(text); lines.Next(); bar.Step()) {
    if (Trimmed(lines.line).empty() || lines.line.starts_with(':')) continue;
    if (!TakeVdrLine(lines.line, collector)) losses.AddUnreadable(lines.number);
  }
  bar.End();
  collector.Finish(work);
}

bool LooksLikeVdr(const Path& path, std::string_view start) {
  if (start.starts_with(kByteOrderMark)) start.remove_prefix(kByteOrderMark.size());
  for (ListLines lines(start); lines.Next();) {
    if (HasExtension(path, ".conf")) {
      if (lines.line.find(':') != std::string_view::npos) return true;
    } else if (!Trimmed(lines.line).empty() && !lines.line.starts_with(':')) {
      const std::vector<std::string_view> fields = SplitText(lines.line, ':');
      return fields.size() >= kVdrFields && WholeNumber(fields[1]) && !fields[3].empty() &&
             IsUpperLetter(UpperLetter(fields[3].front()));
    }
  }
  return false;
}

}  // namespace vexa
