// "Select Duplicates": which rows of the editor's list repeat an earlier record.
#include <algorithm>
#include <map>

#include "core/duplicates.h"
#include "core/messages.h"
#include "view/node_edit.h"

namespace vexa {

namespace {

// The list that a record stands in, among those of its kind in its SDB.
struct Owner {
  NodeKind kind;
  uint32_t sdb, group;
  const void* parent;
  auto operator<=>(const Owner&) const = default;
};

Owner OwnerOf(const NodeRef& row) {
  switch (row.kind) {
    case NodeKind::kCarrier:
      return {row.kind, row.sdb, 0, row.satellite};
    case NodeKind::kService:
      return {row.kind, row.sdb, 0, row.carrier};
    default:
      return {row.kind, row.sdb, row.group, nullptr};
  }
}

template <class Record>
std::vector<Record*> RecordsOf(const std::vector<NodeRef>& rows, const Rows& places,
                               Record* NodeRef::*record) {
  std::vector<Record*> records;
  records.reserve(places.size());
  for (const size_t place : places) records.push_back(rows[place].*record);
  return records;
}

Repeats RepeatsOf(NodeKind kind, const std::vector<NodeRef>& rows, const Rows& places) {
  switch (kind) {
    case NodeKind::kSatellite:
      return RepeatedSatellites(RecordsOf(rows, places, &NodeRef::satellite));
    case NodeKind::kCarrier:
      return RepeatedCarriers(RecordsOf(rows, places, &NodeRef::carrier));
    case NodeKind::kService:
      return RepeatedServices(RecordsOf(rows, places, &NodeRef::service));
    case NodeKind::kFavouriteTvEntry:
    case NodeKind::kFavouriteRadioEntry:
      return RepeatedEntries(RecordsOf(rows, places, &NodeRef::service));
    default:
      return {};
  }
}

}  // namespace

Rows DuplicateRows(const std::vector<NodeRef>& rows) {
  std::map<Owner, Rows> lists;
  for (size_t i = 0; i < rows.size(); ++i) lists[OwnerOf(rows[i])].push_back(i);
  Rows duplicates;
  for (auto& [owner, places] : lists) {
    std::sort(places.begin(), places.end(),
              [&](size_t left, size_t right) { return rows[left].index < rows[right].index; });
    const Repeats repeats = RepeatsOf(owner.kind, rows, places);
    for (size_t i = 0; i < repeats.size(); ++i) {
      if (repeats[i]) duplicates.push_back(places[i]);
    }
  }
  std::sort(duplicates.begin(), duplicates.end());
  return duplicates;
}

std::string DuplicatesText(size_t count) {
  if (count == 0) return "No record of this list repeats an earlier one.";
  return count == 1 ? "1 duplicate is selected." : Format("%zu duplicates are selected.", count);
}

}  // namespace vexa
