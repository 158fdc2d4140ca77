#include "view/picture.h"

#include <algorithm>
#include <cmath>

#include "core/match.h"
#include "core/messages.h"
#include "view/orbit.h"

namespace vexa {

namespace {

constexpr uint32_t kLowestShown = 900, kHighestShown = 12800;  // MHz: all bands with their margins

template <typename T>
size_t ItemOf(const std::vector<T*>& list, const T* record) {
  const auto found = std::find(list.begin(), list.end(), record);
  return found == list.end() ? kNoItem : static_cast<size_t>(found - list.begin());
}

PictureKind KindFor(const Document& document, const NodeRef& node) {
  if (node.kind == NodeKind::kNone || node.kind >= NodeKind::kUbiLevel || node.sdb >= document.sdbs.size())
    return PictureKind::kNone;
  return node.satellite ? PictureKind::kPlan : PictureKind::kOrbit;
}

// The satellite of the other database that is the same thing.
const Satellite* Beneath(const StaticDatabase* other, const Satellite& satellite) {
  if (!other) return nullptr;
  const auto same =
      std::find_if(other->satellites.begin(), other->satellites.end(), [&](const Satellite* candidate) {
        return !IsUnusedPlace(*candidate) && OrbitalPositionOf(*candidate) == OrbitalPositionOf(satellite);
      });
  return same == other->satellites.end() ? nullptr : *same;
}

// The panel at this height; nullptr: none.
const PlanPanel* PanelAt(const Picture& picture, double y) {
  const auto panel = std::find_if(picture.panels.begin(), picture.panels.end(),
                                  [y](const PlanPanel& p) { return y >= p.top && y < p.foot; });
  return panel == picture.panels.end() ? nullptr : &*panel;
}

}  // namespace

void ShowPicture(Picture& picture, const Document& document, const NodeRef& node, const NodeRef& record,
                 const PictureBase& base) {
  const PictureKind kind = KindFor(document, node);
  Satellite* satellite = kind == PictureKind::kPlan ? node.satellite : nullptr;
  if (picture.kind != kind || picture.satellite != satellite) picture.range.reset();
  picture.kind = kind;
  picture.sdb = node.sdb;
  picture.satellite = satellite;
  picture.drawing = {};
  picture.panels.clear();
  picture.text.clear();
  picture.selected = kNoItem;
  if (kind == PictureKind::kNone) return;
  const StaticDatabase& database = *document.sdbs[node.sdb].database;
  if (kind == PictureKind::kOrbit) {
    if (!OrbitPlaces(database).empty()) picture.drawing = Orbit(database, base.page, base.place);
    if (picture.drawing.shapes.empty()) picture.text = "No satellite is in use.";
  } else {
    Plan plan = PlanOf(database, *satellite, base.page, picture.range, Beneath(base.beneath, *satellite));
    picture.drawing = std::move(plan.drawing);
    picture.panels = std::move(plan.panels);
    if (picture.drawing.shapes.empty()) picture.text = "The satellite has no carriers.";
  }
  SelectInPicture(picture, document, record);
}

void SelectInPicture(Picture& picture, const Document& document, const NodeRef& record) {
  picture.selected = kNoItem;
  if (picture.kind == PictureKind::kPlan)
    picture.selected = ItemOf<Carrier>(picture.satellite->carriers, record.carrier);
  if (picture.kind == PictureKind::kOrbit)
    picture.selected = ItemOf<Satellite>(document.sdbs[picture.sdb].database->satellites, record.satellite);
}

NodeRef NodeOfItem(const Picture& picture, const Document& document, size_t item) {
  NodeRef node;
  if (picture.kind == PictureKind::kNone || picture.sdb >= document.sdbs.size()) return node;
  const auto index = static_cast<uint32_t>(item);
  if (picture.kind == PictureKind::kPlan && item < picture.satellite->carriers.size()) {
    node = {.kind = NodeKind::kCarrier, .sdb = picture.sdb, .index = index, .satellite = picture.satellite};
    node.carrier = picture.satellite->carriers[item];
  }
  const auto& satellites = document.sdbs[picture.sdb].database->satellites;
  if (picture.kind == PictureKind::kOrbit && item < satellites.size()) {
    node = {.kind = NodeKind::kSatellite, .sdb = picture.sdb, .index = index};
    node.satellite = satellites[item];
  }
  return node;
}

size_t NeighbourItem(const Picture& picture, int step) {
  // By the middle, then as they lie.
  std::vector<std::pair<double, size_t>> items;
  for (const Shape& shape : picture.drawing.shapes) {
    if (shape.item == kNoItem) continue;
    const double half = shape.kind == ShapeKind::kDisc ? 0 : shape.width / 2;
    items.emplace_back(shape.x + half, shape.item);
  }
  std::sort(items.begin(), items.end());
  items.erase(std::unique(items.begin(), items.end()), items.end());
  if (items.empty()) return kNoItem;
  const auto at = std::find_if(items.begin(), items.end(),
                               [&](const auto& item) { return item.second == picture.selected; });
  if (at == items.end()) return step > 0 ? items.front().second : items.back().second;
  if (at == (step > 0 ? items.end() - 1 : items.begin())) return kNoItem;
  return (at + step)->second;
}

bool ZoomBetween(Picture& picture, double y, double x1, double x2) {
  const PlanPanel* panel = PanelAt(picture, y);
  if (!panel) return false;
  const FrequencyRange range = RangeBetween(*panel, x1, x2);
  if (picture.range && picture.range->lowest == range.lowest && picture.range->highest == range.highest)
    return false;
  picture.range = range;
  return true;
}

bool ZoomBy(Picture& picture, double factor, double x, double y) {
  const PlanPanel* at = PanelAt(picture, y);
  if (!at || (!picture.range && factor >= 1)) return false;
  const PlanPanel& panel = *at;
  const double share = (std::clamp(x, kPlanLeft, kPlanRight) - kPlanLeft) / (kPlanRight - kPlanLeft);
  const double span = panel.high - panel.low;
  const double wide = std::max(span * factor, double{kLeastRange});
  const double low =
      std::clamp(panel.low + share * (span - wide), double{kLowestShown}, double{kHighestShown} - 1);
  const FrequencyRange range = {
      static_cast<uint32_t>(std::lround(low)),
      static_cast<uint32_t>(std::lround(std::clamp(low + wide, low + 1, double{kHighestShown})))};
  // Wider than a band is: all of them.
  const FrequencyRange widest = RangeOf(kLnbUniversal);
  if (wide > widest.highest - widest.lowest + 2.0 * kPlanMargin) return ShowWhole(picture);
  if (picture.range && picture.range->lowest == range.lowest && picture.range->highest == range.highest)
    return false;
  picture.range = range;
  return true;
}

bool ShowWhole(Picture& picture) {
  const bool changes = picture.range.has_value();
  picture.range.reset();
  return changes;
}

Fit FitInto(const Drawing& drawing, double width, double height, double dots) {
  if (drawing.width <= 0 || drawing.height <= 0) return {};
  return {width / drawing.width, std::min(height / drawing.height, dots * 1.25)};
}

}  // namespace vexa
