#include "view/band_plan.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "core/code_names.h"
#include "core/field_texts.h"
#include "core/messages.h"
#include "import/table_cells.h"

namespace vexa {

namespace {

constexpr int64_t kHzOfMHz = 1'000'000;
constexpr int64_t kRollOff = 1350;  // Hz of band for each kS/s
constexpr size_t kLanes = 4, kPanels = 3;
constexpr double kPlanWidth = 1000, kHead = 22, kLaneHeight = 30, kFoot = 22;
constexpr double kLeastBlock = 10, kMostBlock = 26, kLeastWidth = 1;
constexpr double kMostTicks = 11;
constexpr uint32_t kUniversalEdge = 11700;  // MHz

// The panels from left to right of the spectrum.
constexpr uint32_t kPanelTypes[kPanels] = {kLnbIfInput, kLnbLnbf, kLnbUniversal};
constexpr const char* kPanelNames[kPanels] = {"IF", "C", "Ku"};

uint32_t DistanceFrom(const FrequencyRange& range, uint32_t frequency) {
  if (frequency < range.lowest) return range.lowest - frequency;
  return frequency > range.highest ? frequency - range.highest : 0;
}

size_t PanelOf(uint32_t frequency) {
  size_t nearest = 0;
  for (size_t i = 1; i < kPanels; ++i) {
    if (DistanceFrom(RangeOf(kPanelTypes[i]), frequency) <
        DistanceFrom(RangeOf(kPanelTypes[nearest]), frequency))
      nearest = i;
  }
  return nearest;
}

// Each block of one lane, sorted by start, is given one that it overlaps.
void FindOverlaps(std::vector<CarrierBlock*>& lane) {
  std::stable_sort(lane.begin(), lane.end(),
                   [](const CarrierBlock* a, const CarrierBlock* b) { return a->start < b->start; });
  const CarrierBlock* farthest = nullptr;  // of those before, the one that ends last
  for (size_t i = 0; i < lane.size(); ++i) {
    CarrierBlock& block = *lane[i];
    if (farthest && block.start < farthest->end) block.overlaps = farthest->carrier;
    if (!block.overlaps && i + 1 < lane.size() && lane[i + 1]->start < block.end)
      block.overlaps = lane[i + 1]->carrier;
    if (!farthest || block.end > farthest->end) farthest = &block;
  }
}

// MHz between two marks: 1, 2 or 5 times a power of ten, at least 1.
uint32_t TickStep(double span) {
  uint32_t step = 1;
  for (uint32_t i = 0; span / step > kMostTicks; ++i) step = step * (i % 3 == 1 ? 5 : 4) / 2;
  return step;
}

struct LaneBlock {
  CarrierBlock block;
  size_t item = kNoItem;  // none: it lies beneath
};

class PlanPainter {
 public:
  PlanPainter(const StaticDatabase& database, const Satellite& satellite, const CodePage& page)
      : page_(page), lnb_type_(LnbOf(database, satellite).type), lnb_(satellite.record.lnb_index) {
    for (const Carrier* carrier : satellite.carriers) most_ = std::max(most_, carrier->services.size());
    plan_.drawing.width = kPlanWidth;
    plan_.drawing.title = "Band plan of " + Utf8FromPage(page, NameOf(satellite.record.name));
  }

  void Add(const StaticDatabase& database, const Satellite& satellite, bool beneath) {
    size_t item = 0;
    for (const CarrierBlock& block : BlocksOf(database, satellite)) {
      const CarrierRecord& record = block.carrier->record;
      blocks_[PanelOf(record.frequency)][record.polarization].push_back({block, beneath ? kNoItem : item});
      ++item;
    }
  }

  Plan Draw(const std::optional<FrequencyRange>& range) {
    zoomed_ = range.has_value();
    if (range) {
      AddPanel(PanelOf((range->lowest + range->highest) / 2), range->lowest, range->highest);
      return std::move(plan_);
    }
    for (size_t panel = 0; panel < kPanels; ++panel) {
      const auto& lanes = blocks_[panel];
      const bool empty =
          std::all_of(lanes.begin(), lanes.end(), [](const auto& lane) { return lane.empty(); });
      const FrequencyRange band = RangeOf(kPanelTypes[panel]);
      if (!empty || DistanceFrom(band, RangeOf(lnb_type_).lowest) == 0)
        AddPanel(panel, band.lowest - double{kPlanMargin}, band.highest + double{kPlanMargin});
    }
    return std::move(plan_);
  }

 private:
  bool Shows(double mhz) const { return mhz >= panel_.low && mhz <= panel_.high; }
  double At(double mhz) const {
    return kPlanLeft + (std::clamp(mhz, panel_.low, panel_.high) - panel_.low) / (panel_.high - panel_.low) *
                           (kPlanRight - kPlanLeft);
  }
  void Add(Shape shape) { plan_.drawing.shapes.push_back(std::move(shape)); }

  void AddPanel(size_t panel, double low, double high) {
    double& height = plan_.drawing.height;
    panel_ = {height, height, low, high};
    height += kHead;
    Add(TextShape(0, panel_.top + 18, TextPlace::kStart, kPanelNames[panel]));
    AddLnbRange(panel_.top + 15);
    size_t lanes = 0;
    for (size_t polarization = 0; polarization < kLanes; ++polarization) {
      if (blocks_[panel][polarization].empty()) continue;
      AddLane(polarization, blocks_[panel][polarization]);
      ++lanes;
    }
    if (lanes == 0) height += kLaneHeight;
    AddAxis(panel, panel_.top + kHead);
    height += kFoot;
    panel_.foot = height;
    plan_.panels.push_back(panel_);
  }

  void AddLnbRange(double y) {
    const FrequencyRange receives = RangeOf(lnb_type_);
    if (receives.highest < panel_.low || receives.lowest > panel_.high) return;
    const double left = At(receives.lowest), right = At(receives.highest);
    const std::string tip = Format("LNB%u %s receives %u to %u MHz", lnb_ + 1, LnbTypeName(lnb_type_).c_str(),
                                   receives.lowest, receives.highest);
    Add({.paint = Paint::kRange, .x = left, .y = y, .width = right - left, .height = 5, .text = tip});
    Add(TextShape((left + right) / 2, y - 4, TextPlace::kMiddle, tip));
  }

  void AddLane(size_t polarization, const std::vector<LaneBlock>& blocks) {
    const double foot = plan_.drawing.height + kLaneHeight;
    Add(TextShape(kPlanLeft - 8, foot - 4, TextPlace::kEnd, {kPolarizations[polarization][0]}));
    Add(LineShape(Paint::kFaint, kPlanLeft, foot, kPlanRight, foot));
    for (const LaneBlock& block : blocks) AddBlock(block, foot);
    plan_.drawing.height = foot;
  }

  void AddBlock(const LaneBlock& lane_block, double foot) {
    const CarrierBlock& block = lane_block.block;
    const bool beneath = lane_block.item == kNoItem;
    const double start = static_cast<double>(block.start) / double{kHzOfMHz},
                 end = static_cast<double>(block.end) / double{kHzOfMHz};
    if (zoomed_ && (end < panel_.low || start > panel_.high)) return;
    double left = At(start), right = At(end);
    // What is too narrow to be seen, or lies beyond the panel, is widened around its middle.
    if (right - left < kLeastWidth) {
      left = std::clamp((left + right - kLeastWidth) / 2, kPlanLeft, kPlanRight - kLeastWidth);
      right = left + kLeastWidth;
    }
    const double share =
        std::min(1.0, static_cast<double>(block.carrier->services.size()) / static_cast<double>(most_));
    const double height = beneath ? kMostBlock : kLeastBlock + (kMostBlock - kLeastBlock) * share;
    Add({.paint = beneath ? Paint::kBeneath : Paint::kFec,
         .index = static_cast<uint8_t>(block.carrier->record.fec),
         .faulty = !beneath && (block.outside || block.overlaps),
         .x = left,
         .y = foot - height,
         .width = right - left,
         .height = height,
         .text = beneath ? "Other database: " + FiguresOf(block) : TipOf(block),
         .item = lane_block.item});
  }

  std::string FiguresOf(const CarrierBlock& block) const {
    const CarrierRecord& record = block.carrier->record;
    const std::string fec = WordOf<CarrierRecord>("fec", record);
    return Named(record) + Format(": %u MHz %s, %u kS/s, FEC %s, %zu services", record.frequency,
                                  kPolarizations[record.polarization], uint32_t{record.symbol_rate},
                                  fec.c_str(), block.carrier->services.size());
  }

  std::string TipOf(const CarrierBlock& block) const {
    std::string tip = FiguresOf(block);
    if (block.outside) tip += ", the LNB does not receive it";
    if (block.overlaps)
      tip += Format(", overlaps %u MHz ", block.overlaps->record.frequency) + Named(block.overlaps->record);
    return tip;
  }

  std::string Named(const CarrierRecord& record) const { return Utf8FromPage(page_, NameOf(record.name)); }

  void AddAxis(size_t panel, double top) {
    const double foot = plan_.drawing.height;
    const uint32_t step = TickStep(panel_.high - panel_.low);
    for (auto mhz = static_cast<uint32_t>(std::ceil(panel_.low / step)) * step; mhz <= panel_.high;
         mhz += step) {
      Add(LineShape(Paint::kFaint, At(mhz), foot, At(mhz), foot + 4));
      Add(TextShape(At(mhz), foot + 14, TextPlace::kMiddle, std::to_string(mhz)));
    }
    const FrequencyRange band = RangeOf(kPanelTypes[panel]);
    std::vector<uint32_t> edges = {band.lowest, band.highest};
    if (kPanelTypes[panel] == kLnbUniversal && lnb_type_ == kLnbUniversal) edges.push_back(kUniversalEdge);
    for (const uint32_t edge : edges)
      if (Shows(edge)) Add(LineShape(Paint::kEdge, At(edge), top, At(edge), foot));
  }

  const CodePage& page_;
  const uint32_t lnb_type_, lnb_;
  size_t most_ = 1;  // services of a carrier
  std::array<std::array<std::vector<LaneBlock>, kLanes>, kPanels> blocks_;
  bool zoomed_ = false;
  PlanPanel panel_;  // the one that is drawn
  Plan plan_;
};

}  // namespace

std::vector<CarrierBlock> BlocksOf(const StaticDatabase& database, const Satellite& satellite) {
  const FrequencyRange range = RangeOf(LnbOf(database, satellite).type);
  std::vector<CarrierBlock> blocks;
  blocks.reserve(satellite.carriers.size());
  std::array<std::vector<CarrierBlock*>, kLanes> lanes;
  for (const Carrier* carrier : satellite.carriers) {
    const CarrierRecord& record = carrier->record;
    const int64_t centre = record.frequency * kHzOfMHz, half = record.symbol_rate * kRollOff / 2;
    blocks.push_back(
        {carrier, centre - half, centre + half, DistanceFrom(range, record.frequency) != 0, nullptr});
    lanes[record.polarization].push_back(&blocks.back());
  }
  for (auto& lane : lanes) FindOverlaps(lane);
  return blocks;
}

Plan PlanOf(const StaticDatabase& database, const Satellite& satellite, const CodePage& page,
            const std::optional<FrequencyRange>& range, const Satellite* beneath) {
  if (satellite.carriers.empty() && !range) return {};
  PlanPainter painter(database, satellite, page);
  if (beneath) painter.Add(database, *beneath, true);
  painter.Add(database, satellite, false);
  return painter.Draw(range);
}

FrequencyRange RangeBetween(const PlanPanel& panel, double x1, double x2) {
  const auto at = [&](double x) {
    const double share = (std::clamp(x, kPlanLeft, kPlanRight) - kPlanLeft) / (kPlanRight - kPlanLeft);
    return panel.low + share * (panel.high - panel.low);
  };
  const double least = kLeastRange, middle = (at(x1) + at(x2)) / 2;
  const double half = std::max(std::abs(at(x1) - at(x2)), least) / 2;
  const double low = std::clamp(middle - half, panel.low, std::max(panel.low, panel.high - 2 * half));
  return {static_cast<uint32_t>(std::lround(low)), static_cast<uint32_t>(std::lround(low + 2 * half))};
}

}  // namespace vexa
