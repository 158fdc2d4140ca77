#include "core/find.h"

#include <algorithm>
#include <array>
#include <vector>

#include "core/field_texts.h"
#include "core/rules.h"
#include "platform/text.h"

namespace vexa {

namespace {

// Each byte of the page as its small letter.
using FoldTable = std::array<char, 256>;

FoldTable FoldsOf(const CodePage& page) {
  FoldTable folds{};
  for (size_t byte = 0; byte < folds.size(); ++byte) {
    const auto small =
        std::find(page.characters.begin(), page.characters.end(), SmallLetter(page.characters[byte]));
    folds[byte] = static_cast<char>(
        small == page.characters.end() ? byte : static_cast<size_t>(small - page.characters.begin()));
  }
  return folds;
}

struct Wanted {
  FindBy by;
  FoldTable folds;
  std::string name;  // folded
  int64_t number = -1;

  std::string Folded(std::string_view text) const {
    std::string folded(text);
    for (char& c : folded) c = folds[static_cast<uint8_t>(c)];
    return folded;
  }
};

// Nothing for a text that cannot match.
std::optional<Wanted> WantedOf(const FindQuery& query, const CodePage& page) {
  Wanted wanted{query.by, FoldsOf(page), {}, -1};
  if (query.by == FindBy::kName) {
    size_t lacking = 0;
    wanted.name = wanted.Folded(PageFromUtf8(page, query.text, lacking));
    if (wanted.name.empty()) return std::nullopt;
    return wanted;
  }
  const bool prefixed = query.text.starts_with("0x") || query.text.starts_with("0X");
  const bool hexadecimal = prefixed || (query.by == FindBy::kPid && query.hexadecimal);
  const char* digits = hexadecimal ? "0123456789abcdefABCDEF" : "0123456789";
  const std::string_view number = std::string_view(query.text).substr(prefixed ? 2 : 0);
  if (number.empty() || number.find_first_not_of(digits) != std::string_view::npos) return std::nullopt;
  wanted.number = NumberOf(number, hexadecimal);
  return wanted;
}

bool NameMatches(const Wanted& wanted, std::string_view name) {
  return wanted.by == FindBy::kName && wanted.Folded(name).find(wanted.name) != std::string::npos;
}

bool Matches(const Wanted& wanted, const Carrier& carrier) {
  if (wanted.by == FindBy::kFrequency) return carrier.record.frequency == wanted.number;
  return NameMatches(wanted, NameOf(carrier.record.name));
}

bool Matches(const Wanted& wanted, const Service& service) {
  const ServiceRecord& record = service.record;
  if (wanted.by == FindBy::kProgramNumber) return record.program_number == wanted.number;
  if (wanted.by == FindBy::kPid)
    return record.video_pid == wanted.number || record.audio_pid == wanted.number ||
           record.pcr_pid == wanted.number;
  return NameMatches(wanted, NameOf(record.name));
}

template <class T>
int Count(const std::vector<T>& list) {
  return static_cast<int>(list.size());
}

// All matches in tree order.
std::vector<RecordPlace> MatchesOf(const Document& document, const FindQuery& query) {
  std::vector<RecordPlace> places;
  const auto wanted = WantedOf(query, NamesPage(document));
  if (!wanted) return places;
  for (int sdb = 0; sdb < Count(document.sdbs); ++sdb) {
    const auto& satellites = document.sdbs[static_cast<size_t>(sdb)].database->satellites;
    for (int s = 0; s < Count(satellites); ++s) {
      const Satellite& satellite = *satellites[static_cast<size_t>(s)];
      if (NameMatches(*wanted, NameOf(satellite.record.name))) places.push_back({sdb, s, -1, -1});
      for (int c = 0; c < Count(satellite.carriers); ++c) {
        const Carrier& carrier = *satellite.carriers[static_cast<size_t>(c)];
        if (Matches(*wanted, carrier)) places.push_back({sdb, s, c, -1});
        for (int v = 0; v < Count(carrier.services); ++v)
          if (Matches(*wanted, *carrier.services[static_cast<size_t>(v)])) places.push_back({sdb, s, c, v});
      }
    }
  }
  return places;
}

}  // namespace

std::optional<RecordPlace> FindNext(const Document& document, const FindQuery& query,
                                    const RecordPlace& from) {
  const auto places = MatchesOf(document, query);
  if (places.empty()) return std::nullopt;
  for (const RecordPlace& place : places)
    if (place > from) return place;
  return places.front();
}

std::optional<RecordPlace> FindPrevious(const Document& document, const FindQuery& query,
                                        const RecordPlace& from) {
  const auto places = MatchesOf(document, query);
  if (places.empty()) return std::nullopt;
  for (auto place = places.rbegin(); place != places.rend(); ++place)
    if (*place < from) return *place;
  return places.back();
}

}  // namespace vexa
