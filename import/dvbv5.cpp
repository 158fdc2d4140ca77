#include "import/dvbv5.h"

#include <algorithm>
#include <map>

#include "import/list_text.h"

namespace vexa {

namespace {

constexpr uint32_t kSmallestKilohertz = 100000;
// First words of older lines.
constexpr std::string_view kOtherSystems[] = {"T", "T2", "C", "C2", "A"};

struct ScanFileName {
  std::string satellite;
  std::optional<OrbitalPosition> position;
};

ScanFileName ParseScanFileName(const std::string& name) {
  const auto position_of = [](std::string_view text) -> std::optional<OrbitalPosition> {
    // Without either sign the whole name is taken, as the place behind it is 0 then.
    return ParsePosition(text.substr(text.find_last_of("-_") + 1));
  };
  // The decimals of a position are no extension.
  if (const auto position = position_of(name)) return {name, position};
  const size_t point = name.rfind('.');
  const std::string stem = point == std::string::npos || point == 0 ? name : name.substr(0, point);
  return {stem, position_of(stem)};
}

std::string UpperText(std::string_view text) {
  std::string upper(text);
  for (char& c : upper) c = c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
  return upper;
}

// By its first letter; nothing for another.
std::optional<uint32_t> PolarizationOfLetter(char letter) {
  const size_t code = std::string_view("HVLR").find(letter);
  return code == std::string_view::npos ? std::nullopt : std::optional(static_cast<uint32_t>(code));
}

bool TakeScanFrequency(std::string_view text, ListedCarrier& carrier) {
  const auto number = WholeNumber(text);
  if (!number) return false;
  carrier.frequency = *number < kSmallestKilohertz ? *number : RoundedThousandths(*number);
  return true;
}

bool TakeScanRate(std::string_view text, ListedCarrier& carrier) {
  const auto number = WholeNumber(text);
  carrier.symbol_rate = RoundedThousandths(number.value_or(0));
  return number.has_value();
}

// One "[...]" section.
struct ScanSection {
  size_t line = 0;  // on which it begins, from 1; 0: none has begun
  std::map<std::string, std::pair<std::string, size_t>> values;  // each with its line
};

class ScanReader {
 public:
  ScanReader(const DefaultRecords& defaults, const ListOptions& options, ScanFileName file,
             ListLosses& losses)
      : losses_(losses),
        collector_(defaults, options.pages, options.keep_s2, losses),
        file_(std::move(file)) {}

  void TakeLine(std::string_view line, size_t number) {
    line = Trimmed(line.substr(0, line.find('#')));
    if (line.empty()) return;
    if (line.starts_with('[')) {
      EndSection();
      section_.line = number;
      return;
    }
    const size_t equals = line.find('=');
    if (equals != std::string_view::npos && section_.line > 0) {
      section_.values[UpperText(Trimmed(line.substr(0, equals)))] = {
          UpperText(Trimmed(line.substr(equals + 1))), number};
      return;
    }
    if (!TakeOlderLine(line)) losses_.AddUnreadable(number);
  }
  void EndSection() {
    const size_t unreadable = section_.line > 0 ? TakeSection(section_) : 0;
    if (unreadable > 0) losses_.AddUnreadable(unreadable);
    section_ = {};
  }
  void Finish(WorkRecords& work) const { collector_.Finish(work); }

 private:
  ListedCarrier NewCarrier() const {
    ListedCarrier carrier;
    carrier.satellite = file_.satellite;
    carrier.position = file_.position.value_or(OrbitalPosition{0, false});
    return carrier;
  }

  // 0, or the line that cannot be read: a value's, or the section's where one is missing.
  size_t TakeSection(const ScanSection& section) {
    std::string system, frequency, polarization, rate, fec;
    const auto line_of = [&](const char* key, std::string& value) {
      const auto found = section.values.find(key);
      if (found != section.values.end()) value = found->second.first;
      return found == section.values.end() ? section.line : found->second.second;
    };
    const size_t system_line = line_of("DELIVERY_SYSTEM", system),
                 frequency_line = line_of("FREQUENCY", frequency), rate_line = line_of("SYMBOL_RATE", rate),
                 polarization_line = line_of("POLARIZATION", polarization);
    line_of("INNER_FEC", fec);
    if (system.empty()) return system_line;
    if (system != "DVBS" && system != "DVBS2") {
      collector_.LeaveOut(system + ' ' + frequency + ' ' + polarization);
      return 0;
    }
    constexpr std::string_view kWords[] = {"HORIZONTAL", "VERTICAL", "LEFT", "RIGHT"};  // by code
    const auto* word = std::find(std::begin(kWords), std::end(kWords), polarization);
    ListedCarrier carrier = NewCarrier();
    if (!TakeScanFrequency(frequency, carrier)) return frequency_line;
    if (word == std::end(kWords)) return polarization_line;
    if (!TakeScanRate(rate, carrier)) return rate_line;
    if (system == "DVBS2") carrier.system = DeliverySystem::kDvbS2;
    carrier.polarization = static_cast<uint32_t>(word - std::begin(kWords));
    carrier.fec = FecCodeOf(fec);
    collector_.AddCarrier(carrier);
    return 0;
  }

  // "S 11739000 V 27500000 3/4 ..."
  bool TakeOlderLine(std::string_view line) {
    std::vector<std::string> words;
    for (const std::string_view word : SplitText(line, ' ')) {
      for (const std::string_view part : SplitText(word, '\t')) {
        if (!part.empty()) words.push_back(UpperText(part));
      }
    }
    if (words.size() < 2 || words[0].empty()) return false;
    if (words[0] != "S" && words[0] != "S2") {
      const bool named =
          std::find(std::begin(kOtherSystems), std::end(kOtherSystems), words[0]) != std::end(kOtherSystems);
      if (named) collector_.LeaveOut(words[0] + ' ' + words[1]);
      return named;
    }
    ListedCarrier carrier = NewCarrier();
    if (words.size() < 4 || words[2].size() != 1 || !TakeScanFrequency(words[1], carrier) ||
        !TakeScanRate(words[3], carrier))
      return false;
    const auto polarization = PolarizationOfLetter(words[2][0]);
    if (!polarization) return false;
    carrier.polarization = *polarization;
    carrier.fec = words.size() > 4 ? FecCodeOf(words[4]) : 0;
    if (words[0] == "S2") carrier.system = DeliverySystem::kDvbS2;
    collector_.AddCarrier(carrier);
    return true;
  }

  ListLosses& losses_;
  ChannelCollector collector_;
  ScanFileName file_;
  ScanSection section_;
};

}  // namespace

void ReadDvbv5(std::span<const uint8_t> list, const std::string& name, const DefaultRecords& defaults,
               WorkRecords& work, const Progress& progress, const ListOptions& options, ListLosses& losses) {
  const std::string text = TextOfList(list, options.pages);
  ScanFileName file = ParseScanFileName(name);
  if (!file.position)
    losses.warnings.push_back("\"" + name + "\" has no orbital position at its end, such as -19.2E.");
  ScanReader reader(defaults, options, std::move(file), losses);
  ListProgress bar(progress, LineCount(text));
  for (ListLines lines(text); lines.Next(); bar.Step()) reader.TakeLine(lines.line, lines.number);
  reader.EndSection();
  bar.End();
  reader.Finish(work);
}

bool LooksLikeDvbv5(const Path&, std::string_view start) {
  if (start.starts_with(kByteOrderMark)) start.remove_prefix(kByteOrderMark.size());
  for (ListLines lines(start); lines.Next();) {
    const std::string_view line = Trimmed(lines.line.substr(0, lines.line.find('#')));
    if (line.empty()) continue;
    // A section's name may hold the sign of a comment.
    if (line.starts_with('[')) return lines.line.find(']') != std::string_view::npos;
    const size_t blank = line.find_first_of(" \t");
    const std::string_view system = line.substr(0, blank);
    const bool known =
        system == "S" || system == "S2" ||
        std::find(std::begin(kOtherSystems), std::end(kOtherSystems), system) != std::end(kOtherSystems);
    const std::string_view behind = Trimmed(line.substr(std::min(blank, line.size())));
    return known && !behind.empty() && behind[0] >= '0' && behind[0] <= '9';
  }
  return false;
}

}  // namespace vexa
