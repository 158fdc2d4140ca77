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
constexpr uint32_t kTickStep = 200;         // MHz
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

class PlanPainter {
 public:
  PlanPainter(const StaticDatabase& database, const Satellite& satellite, const CodePage& page)
      : page_(page), lnb_type_(LnbOf(database, satellite).type), lnb_(satellite.record.lnb_index) {
    for (const Carrier* carrier : satellite.carriers) most_ = std::max(most_, carrier->services.size());
    for (const CarrierBlock& block : BlocksOf(database, satellite))
      blocks_[PanelOf(block.carrier->record.frequency)][block.carrier->record.polarization].push_back(block);
    drawing_.width = kPlanWidth;
    drawing_.title = "Band plan of " + Utf8FromPage(page, NameOf(satellite.record.name));
  }

  Drawing Draw() {
    for (size_t panel = 0; panel < kPanels; ++panel) {
      const auto& lanes = blocks_[panel];
      const bool empty =
          std::all_of(lanes.begin(), lanes.end(), [](const auto& lane) { return lane.empty(); });
      const FrequencyRange range = RangeOf(kPanelTypes[panel]);
      if (!empty || DistanceFrom(range, RangeOf(lnb_type_).lowest) == 0) AddPanel(panel, range);
    }
    return std::move(drawing_);
  }

 private:
  double At(double mhz) const {
    const double low = range_.lowest - double{kPlanMargin}, high = range_.highest + double{kPlanMargin};
    return kPlanLeft + (std::clamp(mhz, low, high) - low) / (high - low) * (kPlanRight - kPlanLeft);
  }

  void AddPanel(size_t panel, const FrequencyRange& range) {
    range_ = range;
    const double top = drawing_.height;
    drawing_.height += kHead;
    drawing_.shapes.push_back(TextShape(0, top + 18, TextPlace::kStart, kPanelNames[panel]));
    AddLnbRange(top + 15);
    size_t lanes = 0;
    for (size_t polarization = 0; polarization < kLanes; ++polarization) {
      if (blocks_[panel][polarization].empty()) continue;
      AddLane(polarization, blocks_[panel][polarization]);
      ++lanes;
    }
    if (lanes == 0) drawing_.height += kLaneHeight;
    AddAxis(panel, top + kHead);
    drawing_.height += kFoot;
  }

  void AddLnbRange(double y) {
    const FrequencyRange receives = RangeOf(lnb_type_);
    if (DistanceFrom(range_, receives.lowest) != 0) return;
    const double left = At(receives.lowest), right = At(receives.highest);
    const std::string tip = Format("LNB%u %s receives %u to %u MHz", lnb_ + 1, LnbTypeName(lnb_type_).c_str(),
                                   receives.lowest, receives.highest);
    drawing_.shapes.push_back(
        {.paint = Paint::kRange, .x = left, .y = y, .width = right - left, .height = 5, .text = tip});
    drawing_.shapes.push_back(TextShape((left + right) / 2, y - 4, TextPlace::kMiddle, tip));
  }

  void AddLane(size_t polarization, const std::vector<CarrierBlock>& blocks) {
    const double foot = drawing_.height + kLaneHeight;
    drawing_.shapes.push_back(
        TextShape(kPlanLeft - 8, foot - 4, TextPlace::kEnd, {kPolarizations[polarization][0]}));
    drawing_.shapes.push_back(LineShape(Paint::kFaint, kPlanLeft, foot, kPlanRight, foot));
    for (const CarrierBlock& block : blocks) AddBlock(block, foot);
    drawing_.height = foot;
  }

  void AddBlock(const CarrierBlock& block, double foot) {
    const CarrierRecord& record = block.carrier->record;
    const double hz = double{kHzOfMHz};
    double left = At(static_cast<double>(block.start) / hz), right = At(static_cast<double>(block.end) / hz);
    // What is too narrow to be seen, or lies beyond the panel, is widened around its middle.
    if (right - left < kLeastWidth) {
      left = std::clamp((left + right - kLeastWidth) / 2, kPlanLeft, kPlanRight - kLeastWidth);
      right = left + kLeastWidth;
    }
    const double share = static_cast<double>(block.carrier->services.size()) / static_cast<double>(most_);
    const double height = kLeastBlock + (kMostBlock - kLeastBlock) * share;
    drawing_.shapes.push_back({.paint = Paint::kFec,
                               .index = static_cast<uint8_t>(record.fec),
                               .faulty = block.outside || block.overlaps,
                               .x = left,
                               .y = foot - height,
                               .width = right - left,
                               .height = height,
                               .text = TipOf(block)});
  }

  std::string TipOf(const CarrierBlock& block) const {
    const CarrierRecord& record = block.carrier->record;
    const std::string fec = WordOf<CarrierRecord>("fec", record);
    std::string tip =
        Named(record) + Format(": %u MHz %s, %u kS/s, FEC %s, %zu services", record.frequency,
                               kPolarizations[record.polarization], uint32_t{record.symbol_rate}, fec.c_str(),
                               block.carrier->services.size());
    if (block.outside) tip += ", the LNB does not receive it";
    if (block.overlaps)
      tip += Format(", overlaps %u MHz ", block.overlaps->record.frequency) + Named(block.overlaps->record);
    return tip;
  }

  std::string Named(const CarrierRecord& record) const { return Utf8FromPage(page_, NameOf(record.name)); }

  void AddAxis(size_t panel, double top) {
    const double foot = drawing_.height;
    for (uint32_t mhz = (range_.lowest + kTickStep - 1) / kTickStep * kTickStep; mhz <= range_.highest;
         mhz += kTickStep) {
      drawing_.shapes.push_back(LineShape(Paint::kFaint, At(mhz), foot, At(mhz), foot + 4));
      drawing_.shapes.push_back(TextShape(At(mhz), foot + 14, TextPlace::kMiddle, std::to_string(mhz)));
    }
    for (const uint32_t edge : {range_.lowest, range_.highest})
      drawing_.shapes.push_back(LineShape(Paint::kEdge, At(edge), top, At(edge), foot));
    if (kPanelTypes[panel] == kLnbUniversal && lnb_type_ == kLnbUniversal)
      drawing_.shapes.push_back(LineShape(Paint::kEdge, At(kUniversalEdge), top, At(kUniversalEdge), foot));
  }

  const CodePage& page_;
  const uint32_t lnb_type_, lnb_;
  size_t most_ = 1;  // services of a carrier
  std::array<std::array<std::vector<CarrierBlock>, kLanes>, kPanels> blocks_;
  FrequencyRange range_{};  // of the panel
  Drawing drawing_;
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

Drawing BandPlan(const StaticDatabase& database, const Satellite& satellite, const CodePage& page) {
  return satellite.carriers.empty() ? Drawing{} : PlanPainter(database, satellite, page).Draw();
}

}  // namespace vexa
