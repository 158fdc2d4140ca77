#include "view/changes.h"

#include <algorithm>
#include <cstring>
#include <unordered_map>

#include "core/match.h"

namespace vexa {

namespace {

constexpr uint64_t kStart = 0xCBF29CE484222325, kFactor = 0x100000001B3;

uint64_t Mixed(uint64_t mark, uint64_t value) {
  return (mark ^ value) * kFactor + (value >> 29);
}

template <class Record>
uint64_t MarkOfBytes(const Record& record, uint64_t mark = kStart) {
  uint8_t bytes[sizeof record];
  std::memcpy(bytes, &record, sizeof record);
  for (const uint8_t byte : bytes) mark = (mark ^ byte) * kFactor;
  return mark;
}

uint64_t MarkOfText(std::string_view text) {
  uint64_t mark = kStart;
  for (const char c : text) mark = (mark ^ static_cast<uint8_t>(c)) * kFactor;
  return mark;
}

// Of what is known by its place; satellites, carriers and services are marked by what they say.
uint64_t OwnMark(const Document& document, const NodeRef& node) {
  const StaticDatabase* database =
      node.sdb < document.sdbs.size() ? document.sdbs[node.sdb].database.get() : nullptr;
  switch (node.kind) {
    case NodeKind::kSdb:
      return Mixed(MarkOfText(document.sdbs[node.sdb].name),
                   document.sdbs[node.sdb].slot * 2 + database->compressed);
    case NodeKind::kLnb:
      return MarkOfBytes(database->lnbs[node.index]);
    case NodeKind::kTvGroup:
      return MarkOfBytes(database->favourites[node.index].record.tv_name);
    case NodeKind::kRadioGroup:
      return MarkOfBytes(database->favourites[node.index].record.radio_name);
    case NodeKind::kUbi:
      return MarkOfBytes(document.ubis[node.index].record, MarkOfText(document.ubis[node.index].name));
    default:
      return 0;
  }
}

// An entry is known by what the service says that it names.
std::vector<NodeRef> EntriesBelow(const Document& document, const NodeRef& group) {
  return ListBelow(document, group, ListView::kBelow, false).rows;
}

bool IsGroup(NodeKind kind) {
  return kind == NodeKind::kTvGroup || kind == NodeKind::kRadioGroup;
}

void MarkBelow(const Document& document, const NodeRef* parent, DocumentMarks& marks) {
  const bool group = parent && IsGroup(parent->kind);
  const std::vector<NodeRef> nodes = !parent ? RootNodes(document)
                                     : group ? EntriesBelow(document, *parent)
                                             : ChildNodes(document, *parent);
  const std::vector<uint64_t> contents = NodeContents(nodes);
  marks.deep = marks.own;
  marks.below.resize(nodes.size());
  for (size_t i = 0; i < nodes.size(); ++i) {
    DocumentMarks& below = marks.below[i];
    below.own = contents[i] != 0 ? contents[i] : OwnMark(document, nodes[i]);
    below.deep = below.own;
    if (IsGroup(nodes[i].kind) || HasChildNodes(document, nodes[i])) MarkBelow(document, &nodes[i], below);
    marks.deep = Mixed(marks.deep, below.deep);
  }
}

// Which places of `after` hold what was not in `before`, or was in another order there.
struct PlacesOfChange {
  std::vector<size_t> changed;   // ascending
  std::vector<size_t> in_place;  // those of them where a record says something else than before
};
PlacesOfChange ChangedPlaces(const std::vector<DocumentMarks>& before,
                             const std::vector<DocumentMarks>& after) {
  std::unordered_map<uint64_t, std::vector<size_t>> places;
  for (size_t i = before.size(); i-- > 0;) places[before[i].deep].push_back(i);
  PlacesOfChange found_places;
  std::vector<size_t> known, order;
  for (size_t i = 0; i < after.size(); ++i) {
    const auto found = places.find(after[i].deep);
    if (found != places.end() && !found->second.empty()) {
      known.push_back(i);
      order.push_back(found->second.back());
      found->second.pop_back();
    } else if (before.size() != after.size()) {
      found_places.changed.push_back(i);
    } else if (before[i].own != after[i].own) {
      found_places.changed.push_back(i);
      found_places.in_place.push_back(i);
    }
  }
  const std::vector<bool> stays = LongestAscending(order);
  for (size_t i = 0; i < known.size(); ++i) {
    if (!stays[i]) found_places.changed.push_back(known[i]);
  }
  std::sort(found_places.changed.begin(), found_places.changed.end());
  return found_places;
}

void TellBelow(const DocumentMarks& before, const DocumentMarks& after, const TreePath& path,
               std::vector<ChangedRows>& changes) {
  const bool same_size = before.below.size() == after.below.size();
  bool same = same_size;
  for (size_t i = 0; same && i < after.below.size(); ++i) same = before.below[i].own == after.below[i].own;
  std::vector<bool> goes_on(same_size ? after.below.size() : 0);
  for (size_t i = 0; i < goes_on.size(); ++i) goes_on[i] = before.below[i].own == after.below[i].own;
  if (!same) {
    PlacesOfChange places = ChangedPlaces(before.below, after.below);
    for (const size_t place : places.in_place) goes_on[place] = true;
    if (!places.changed.empty() || !same_size) changes.push_back({path, std::move(places.changed)});
  }
  for (size_t i = 0; i < goes_on.size(); ++i) {
    if (!goes_on[i] || before.below[i].deep == after.below[i].deep) continue;
    TreePath below = path;
    below.push_back(static_cast<uint32_t>(i));
    TellBelow(before.below[i], after.below[i], below, changes);
  }
}

}  // namespace

DocumentMarks MarksOf(const Document& document) {
  DocumentMarks marks;
  MarkBelow(document, nullptr, marks);
  return marks;
}

std::vector<ChangedRows> ChangesSince(const DocumentMarks& before, const Document& document) {
  std::vector<ChangedRows> changes;
  TellBelow(before, MarksOf(document), {}, changes);
  return changes;
}

std::vector<NodeRef> ChangedNodes(const Document& document, const ChangedRows& change) {
  std::vector<NodeRef> all = RootNodes(document), chosen;
  if (!change.parent.empty()) {
    const auto along = NodesAlong(document, change.parent);
    if (along.size() != change.parent.size()) return {};
    all = IsGroup(along.back().kind) ? EntriesBelow(document, along.back())
                                     : ChildNodes(document, along.back());
  }
  for (const size_t row : change.rows) {
    if (row < all.size()) chosen.push_back(all[row]);
  }
  return chosen;
}

ChangesInView ViewOfChanges(const Document& document, const std::vector<ChangedRows>& changes) {
  if (changes.empty()) return {};
  const auto with_rows =
      std::find_if(changes.begin(), changes.end(), [](const ChangedRows& c) { return !c.rows.empty(); });
  const ChangedRows& first = with_rows == changes.end() ? changes.front() : *with_rows;
  if (first.parent.empty()) {
    if (first.rows.empty()) return {};
    return {{static_cast<uint32_t>(first.rows[0])}, ListView::kBelow, {}};
  }
  ChangesInView in_view{first.parent, ListView::kBelow, {}};
  TreePath& node = in_view.node;
  const auto is_beside = [&](const ChangedRows& change) {
    return change.parent.size() == first.parent.size() && change.parent.size() > 2 &&
           std::equal(change.parent.begin(), change.parent.begin() + 2, first.parent.begin()) &&
           first.parent[1] == kSatelliteLevelPosition && change.rows.empty() == first.rows.empty();
  };
  for (const ChangedRows& change : changes) {
    if (&change != &first && !is_beside(change)) continue;
    node.erase(std::mismatch(node.begin(), node.end(), change.parent.begin()).first, node.end());
    const std::vector<NodeRef> rows = ChangedNodes(document, change);
    in_view.rows.insert(in_view.rows.end(), rows.begin(), rows.end());
  }
  constexpr size_t kSatelliteDepth = 3;
  if (node.size() < first.parent.size())
    in_view.view = first.parent.size() > kSatelliteDepth ? ListView::kServices : ListView::kCarriers;
  return in_view;
}

}  // namespace vexa
