// What differs between two databases, record by record, as an installer would tell it: added, removed,
// changed, moved. Records are the same by match.h. Not told are fields that follow from places, records that
// only have another number, what is below an added or removed record, and unused places of the satellite
// table.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <variant>
#include <vector>

#include "core/database.h"

namespace vexa {

// A field before and after; texts are UTF-8.
struct FieldChange {
  std::string key;
  std::variant<int64_t, std::string> before, after;
};

enum class DifferenceKind : uint8_t { kSdb, kLnb, kSatellite, kCarrier, kService, kFavourite, kUbi, kFile };

// Where a record is, by places from 0: its LNB or user box; its satellite, carrier and service as far as the
// kind goes; its favourite group, list (0 TV, 1 radio) and entry. kNoPlace: not so far, or not there.
inline constexpr uint32_t kNoPlace = ~uint32_t{0};
using DifferencePlace = std::array<uint32_t, 3>;
inline constexpr DifferencePlace kNowhere = {kNoPlace, kNoPlace, kNoPlace};

struct Difference {
  char sign =
      '~';  // + added, - removed, ~ changed, > moved within its list; = none, where these are asked for
  DifferenceKind kind = DifferenceKind::kSdb;
  std::string path;  // as `check` names records: "SDB1 satellite 3"; empty for the flags of the file
  // Of satellites, carriers, services, favourite entries and user boxes; what an LNB is set to, which lines
  // leave out; else empty.
  std::string name;
  bool has_name = false;            // lines tell it
  std::string from;                 // of a moved record: its path in the first database
  std::vector<FieldChange> fields;  // of a changed one
  size_t moved = 0;                 // services that the running order has elsewhere; then `fields` is empty
  DifferencePlace first = kNowhere,
                  second = kNowhere;  // in the two databases, or of what it belongs to there
};

// The differences of one SDB of each document (positions), in the order of the second one's tree, then of the
// user boxes and of the flags of the files. With `equal`, records that are the same in both stand among them.
// All names are taken to stand in the page of the first document.
std::vector<Difference> CompareDocuments(const Document& first, size_t first_sdb, const Document& second,
                                         size_t second_sdb, bool equal = false);

// A field's value as lines of differences show it: a number, or a text between quotation marks.
std::string ValueText(const std::variant<int64_t, std::string>& value);
// A line each, without its end: "~ SDB1 satellite 3 carrier 2 NAME: fec 3 -> 4".
std::string DifferenceLine(const Difference& difference);
// All of them, a line each with its end; equal records are none.
std::string DifferenceLines(const std::vector<Difference>& differences);
// Six lines: "satellites: 1 added, 0 removed, 2 changed, 0 moved" and so on.
std::string DifferenceSummary(const std::vector<Difference>& differences);

}  // namespace vexa
