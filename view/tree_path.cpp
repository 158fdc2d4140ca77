#include "view/tree_path.h"

#include <algorithm>

namespace vexa {

namespace {

template <class T>
int PositionOf(const std::vector<T*>& list, const T* record) {
  const auto found = std::find(list.begin(), list.end(), record);
  return found == list.end() ? -1 : static_cast<int>(found - list.begin());
}

// The tree does not show the entries of a favourite list; the list does.
std::vector<NodeRef> NodesBelow(const Document& document, const NodeRef& node) {
  const bool group = node.kind == NodeKind::kTvGroup || node.kind == NodeKind::kRadioGroup;
  return group ? ListBelow(document, node, ListView::kBelow, false).rows : ChildNodes(document, node);
}

}  // namespace

std::vector<NodeRef> NodesAlong(const Document& document, const TreePath& path) {
  std::vector<NodeRef> nodes;
  for (const uint32_t position : path) {
    const auto siblings = nodes.empty() ? RootNodes(document) : NodesBelow(document, nodes.back());
    if (position >= siblings.size()) break;
    nodes.push_back(siblings[position]);
  }
  return nodes;
}

TreePath PathOf(const RecordPlace& place) {
  TreePath path;
  for (const int position : {place.sdb, static_cast<int>(kSatelliteLevelPosition), place.satellite,
                             place.carrier, place.service}) {
    if (position < 0) break;
    path.push_back(static_cast<uint32_t>(position));
  }
  return path;
}

TreePath PathOf(const Document& document, const FindingPlace& place) {
  const auto position = [](int value) { return static_cast<uint32_t>(value); };
  if (place.ubi >= 0) return {position(static_cast<int>(document.sdbs.size())), position(place.ubi)};
  const uint32_t sdb = position(place.record.sdb);
  if (place.tv_group >= 0) return {sdb, kTvGroupLevelPosition, position(place.tv_group)};
  if (place.radio_group >= 0) return {sdb, kRadioGroupLevelPosition, position(place.radio_group)};
  return place.record.satellite < 0 ? TreePath{sdb} : PathOf(place.record);
}

TreePath PathOf(const Document& document, const NodeRef& node) {
  const auto boxes = static_cast<uint32_t>(document.sdbs.size());
  switch (node.kind) {
    case NodeKind::kNone:
      return {};
    case NodeKind::kUbiLevel:
      return {boxes};
    case NodeKind::kUbi:
      return {boxes, node.index};
    case NodeKind::kSdb:
      return {node.sdb};
    case NodeKind::kLnbLevel:
      return {node.sdb, kLnbLevelPosition};
    case NodeKind::kLnb:
      return {node.sdb, kLnbLevelPosition, node.index};
    case NodeKind::kSatelliteLevel:
      return {node.sdb, kSatelliteLevelPosition};
    case NodeKind::kTvGroupLevel:
      return {node.sdb, kTvGroupLevelPosition};
    case NodeKind::kRadioGroupLevel:
      return {node.sdb, kRadioGroupLevelPosition};
    case NodeKind::kTvGroup:
      return {node.sdb, kTvGroupLevelPosition, node.index};
    case NodeKind::kRadioGroup:
      return {node.sdb, kRadioGroupLevelPosition, node.index};
    case NodeKind::kFavouriteTvEntry:
      return {node.sdb, kTvGroupLevelPosition, node.group, node.index};
    case NodeKind::kFavouriteRadioEntry:
      return {node.sdb, kRadioGroupLevelPosition, node.group, node.index};
    default:
      return PathOf(PlaceOf(document, node));
  }
}

RecordPlace PlaceOf(const Document& document, const NodeRef& node) {
  RecordPlace place;
  if (node.sdb >= document.sdbs.size()) return place;
  place.sdb = static_cast<int>(node.sdb);
  if (!node.satellite) return place;
  place.satellite = PositionOf(document.sdbs[node.sdb].database->satellites, node.satellite);
  if (!node.carrier || place.satellite < 0) return place;
  place.carrier = PositionOf(node.satellite->carriers, node.carrier);
  if (!node.service || place.carrier < 0) return place;
  place.service = PositionOf(node.carrier->services, node.service);
  return place;
}

}  // namespace vexa
