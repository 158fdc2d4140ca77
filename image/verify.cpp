#include "image/verify.h"

#include <algorithm>

#include "core/messages.h"
#include "image/decoder.h"
#include "image/receiver_layout.h"

namespace vexa {

namespace {

struct Comparison {
  const StaticDatabase& database;
  AdbLayout layout;
  ImageDifference found;

  std::string RecordAt(uint64_t place) const;
  std::string FavouriteAt(uint64_t place) const;
  // Counts the bytes that differ; a byte that only one side has is one. `address` is that of the first byte,
  // `record` names what its argument, the place of the first difference from there, lies in.
  template <typename Record>
  void Compare(std::span<const uint8_t> sent, std::span<const uint8_t> held, uint64_t address, Record record);
};

template <typename Record>
void Comparison::Compare(std::span<const uint8_t> sent, std::span<const uint8_t> held, uint64_t address,
                         Record record) {
  const auto [one, other] = std::ranges::mismatch(sent, held);
  if (one == sent.end() && other == held.end()) return;
  const auto first = static_cast<uint64_t>(one - sent.begin());
  if (found.bytes == 0) {
    found.address = static_cast<uint32_t>(address + first);
    found.record = record(first);
  }
  const size_t both = std::min(sent.size(), held.size());
  found.bytes += std::max(sent.size(), held.size()) - both;
  for (auto i = static_cast<size_t>(first); i < both; ++i) found.bytes += sent[i] != held[i];
}

std::string Numbered(const char* name, uint64_t place) {
  return Format("%s %llu", name, static_cast<unsigned long long>(place + 1));
}

// `place` counts from the start of the favourites.
std::string Comparison::FavouriteAt(uint64_t place) const {
  const uint64_t group = place / kFavouriteEntry, inside = place % kFavouriteEntry;
  // The header: both names, then both counts.
  const bool radio = inside < kFavouriteHeader
                         ? (inside >= kNameSize && inside < 2 * kNameSize) || inside >= 2 * kNameSize + 2
                         : inside >= kFavouriteHeader + kTvList;
  return Numbered(radio ? "radio group" : "TV group", group);
}

// `place` counts from the start of the region and lies before the settings.
std::string Comparison::RecordAt(uint64_t place) const {
  const uint64_t services = database.services.size();
  const uint64_t carriers = layout.tables_end - uint64_t{kCarrierEntry} * database.carriers.size();
  if (place < kSatelliteTable) return Numbered("LNB", place / kLnbEntry);
  if (place < kSatelliteTable + kMaximumSatellites * kSatelliteEntry)
    return Numbered("satellite", (place - kSatelliteTable) / kSatelliteEntry);
  if (place < layout.tables) return "fill";
  if (place < layout.tables + services * kServiceEntry)
    return Numbered("service", (place - layout.tables) / kServiceEntry);
  if (place < carriers) return "fill";
  if (place < layout.tables_end) return Numbered("carrier", (layout.tables_end - 1 - place) / kCarrierEntry);
  if (place < layout.tables_end + 2 * services) return Numbered("service", (place - layout.tables_end) / 2);
  if (place < layout.favourites || place >= layout.favourites + kFavouriteGroups * kFavouriteEntry)
    return "fill";
  return FavouriteAt(place - layout.favourites);
}

// What there is of the `size` bytes from `place` on.
std::span<const uint8_t> PartOf(std::span<const uint8_t> bytes, uint64_t place, uint64_t size) {
  const uint64_t from = std::min<uint64_t>(place, bytes.size());
  return bytes.subspan(static_cast<size_t>(from), static_cast<size_t>(std::min(size, bytes.size() - from)));
}

// The place of the copy in force, in the partition of `size` bytes whose marker stands at `partition`.
uint64_t CopyInForce(std::span<const uint8_t> held, uint64_t partition, uint64_t size, size_t block) {
  size_t slot = 0;
  if (partition + kMarker <= held.size()) {
    const auto marker = held.subspan(static_cast<size_t>(partition), kMarker);
    slot = JournalSlot(uint64_t{ReadField(marker, 0, 0, 32)} << 32 | ReadField(marker, 1, 0, 32));
  }
  // A marker that names a copy beyond the partition names none.
  return partition + kMarker + (kMarker + (slot + 1) * block <= size ? slot * block : 0);
}

}  // namespace

std::optional<ImageDifference> CompareImages(const ProjectConfig& config, const StaticDatabase& database,
                                             const AdbImages& sent, std::span<const uint8_t> adb,
                                             std::span<const uint8_t> e2p) {
  Comparison comparison{database, LayoutOf(config), {}};
  const AdbLayout& layout = comparison.layout;
  const RegionEntry* region = AdbRegion(config);
  const uint64_t base = region ? region->start : 0;
  const bool apart = config.configuration_index == 1;
  const uint64_t end = sent.adb.size() - std::min<uint64_t>(AdbHeaderSize(config), sent.adb.size());
  const auto named = [](const char* name) { return [name](uint64_t) { return std::string(name); }; };
  const auto compare_adb = [&](uint64_t from, uint64_t to, auto record) {
    const uint64_t size = to - std::min(from, to);
    comparison.Compare(PartOf(sent.adb, from, size), PartOf(adb, from, size), base + from, record);
  };
  compare_adb(0, std::min(layout.settings, end), [&](uint64_t place) { return comparison.RecordAt(place); });
  if (apart) {
    compare_adb(layout.settings, end, named("fill"));
    const uint64_t selection = config.partition_sizes[0];
    const auto compare_e2p = [&](uint64_t place, uint64_t size, const char* name) {
      comparison.Compare(PartOf(sent.e2p, place, size), PartOf(e2p, place, size), place, named(name));
    };
    compare_e2p(0, kSettingsBlock, "settings");
    // A larger first partition pushes the selection out of what is read back.
    compare_e2p(
        selection,
        std::min<uint64_t>(kSelectionBlock, kE2pRequested - std::min<uint64_t>(selection, kE2pRequested)),
        "selection");
  } else {
    // The copies in force may stand in different slots on both sides.
    const auto compare_copy = [&](uint64_t partition, uint64_t size, size_t block, const char* name) {
      const uint64_t place = CopyInForce(adb, partition, size, block);
      comparison.Compare(PartOf(sent.adb, CopyInForce(sent.adb, partition, size, block), block),
                         PartOf(adb, place, block), base + place, named(name));
    };
    compare_copy(layout.settings, config.partition_sizes[0], kSettingsBlock, "settings");
    compare_copy(layout.selection, config.partition_sizes[2], kSelectionBlock, "selection");
    compare_adb(layout.end, end, named("fill"));
  }
  if (comparison.found.bytes == 0) return std::nullopt;
  return comparison.found;
}

}  // namespace vexa
