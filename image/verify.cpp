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
  void Note(uint64_t address, const std::string& record) {
    if (found.bytes++ > 0) return;
    found.address = static_cast<uint32_t>(address);
    found.record = record;
  }
};

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

int ByteAt(std::span<const uint8_t> bytes, uint64_t place) {
  return place < bytes.size() ? bytes[static_cast<size_t>(place)] : -1;
}

// One block as it was sent, at `from`, beside the one in force, at `to`.
void CompareBlock(Comparison& comparison, std::span<const uint8_t> sent, uint64_t from,
                  std::span<const uint8_t> held, uint64_t to, size_t size, uint64_t base, const char* name) {
  for (size_t i = 0; i < size; ++i) {
    if (ByteAt(sent, from + i) != ByteAt(held, to + i)) comparison.Note(base + to + i, name);
  }
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
  for (uint64_t place = 0; place < std::min(layout.settings, end); ++place) {
    if (ByteAt(sent.adb, place) != ByteAt(adb, place))
      comparison.Note(base + place, comparison.RecordAt(place));
  }
  if (apart) {
    for (uint64_t place = layout.settings; place < end; ++place) {
      if (ByteAt(sent.adb, place) != ByteAt(adb, place)) comparison.Note(base + place, "fill");
    }
    const uint64_t selection = config.partition_sizes[0];
    CompareBlock(comparison, sent.e2p, 0, e2p, 0, kSettingsBlock, 0, "settings");
    // A larger first partition pushes the selection out of what is read back.
    const uint64_t read =
        std::min<uint64_t>(kSelectionBlock, kE2pRequested - std::min<uint64_t>(selection, kE2pRequested));
    CompareBlock(comparison, sent.e2p, selection, e2p, selection, static_cast<size_t>(read), 0, "selection");
  } else {
    const auto settings_of = [&](std::span<const uint8_t> region) {
      return CopyInForce(region, layout.settings, config.partition_sizes[0], kSettingsBlock);
    };
    const auto selection_of = [&](std::span<const uint8_t> region) {
      return CopyInForce(region, layout.selection, config.partition_sizes[2], kSelectionBlock);
    };
    CompareBlock(comparison, sent.adb, settings_of(sent.adb), adb, settings_of(adb), kSettingsBlock, base,
                 "settings");
    CompareBlock(comparison, sent.adb, selection_of(sent.adb), adb, selection_of(adb), kSelectionBlock, base,
                 "selection");
    for (uint64_t place = layout.end; place < end; ++place) {
      if (ByteAt(sent.adb, place) != ByteAt(adb, place)) comparison.Note(base + place, "fill");
    }
  }
  if (comparison.found.bytes == 0) return std::nullopt;
  return comparison.found;
}

}  // namespace vexa
