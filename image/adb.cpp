#include "image/adb.h"

#include <algorithm>
#include <cstring>

#include "core/bytes.h"
#include "core/field_texts.h"
#include "core/match.h"
#include "image/line_frame.h"
#include "image/receiver_layout.h"
#include "image/transfer_files.h"
#include "image/urt.h"
#include "platform/text.h"

namespace vexa {

namespace {

// False: the message was told, with what does not fit as its detail.
bool RefuseFit(const Context& context, const std::string& why) {
  TellWhy(context.messages, Icon::kStop, why,
          "Unable to upload\nPlease verify carrier and service record count.");
  return false;
}

// "lists.bin: SDB 2 \"Europe\""
std::string NameOfSdb(const Document& document, size_t sdb) {
  return (document.source.empty() ? "" : document.source + ": ") +
         Format("SDB %zu \"%s\"", sdb + 1, NameText(document, document.sdbs[sdb].name).c_str());
}

uint64_t TablesSize(const StaticDatabase& database) {
  return uint64_t{kCarrierEntry} * database.carriers.size() +
         uint64_t{kServiceEntry} * database.services.size();
}

std::string TooMany(const char* what, size_t count, size_t most) {
  return Format("%zu %s, at most %zu. Delete some, or divide them between SDBs.", count, what, most);
}

bool CheckLimits(const Context& context, const StaticDatabase& database) {
  const auto lnbs = static_cast<int>(database.lnb_count);
  const auto satellites = static_cast<int>(database.satellites.size());
  if (database.lnb_count > kMaximumLnbs) {
    TellWhy(context.messages, Icon::kStop, TooMany("LNBs", database.lnb_count, kMaximumLnbs),
            "Upload as ADB process failed.\nLNB record count exceeds the limit %d [ %d ]", 16, lnbs);
    return false;
  }
  if (database.satellites.size() > kMaximumSatellites) {
    TellWhy(
        context.messages, Icon::kStop, TooMany("satellites", database.satellites.size(), kMaximumSatellites),
        "Upload as ADB process failed.\nSatellite record count exceeds the limit %d [ %d ]", 85, satellites);
    return false;
  }
  // The texts of the next two show the figures of LNBs and satellites on purpose: users know them like that.
  if (database.carriers.size() > kImageCarriers) {
    TellWhy(context.messages, Icon::kStop, TooMany("carriers", database.carriers.size(), kImageCarriers),
            "Upload as ADB process failed.\nCarrier record count exceeds the limit %d [ %d ]", 16, lnbs);
    return false;
  }
  if (database.services.size() > kImageServices) {
    TellWhy(context.messages, Icon::kStop, TooMany("services", database.services.size(), kImageServices),
            "Upload as ADB process failed.\nService record count exceeds the limit %d [ %d ]", 85,
            satellites);
    return false;
  }
  return TablesSize(database) <= kImageTables ||
         RefuseFit(context, TooMany("bytes of carriers and services",
                                    static_cast<size_t>(TablesSize(database)), kImageTables));
}

// A table and where it goes, in bytes.
struct TableRoom {
  const char* table;
  uint64_t size, room;
};

// Each table with its partition, each list with its place, and what holds them all. E2P: settings stand in a
// file of their own.
std::vector<TableRoom> RoomsOf(const StaticDatabase& database, const ProjectConfig& config,
                               const RegionEntry& region, bool e2p) {
  const auto& sizes = config.partition_sizes;
  const AdbLayout layout = LayoutOf(config);
  const uint32_t marker = e2p ? 0 : kMarker;
  const uint64_t space = region.end >= region.start ? region.end - region.start : 0;
  std::vector<TableRoom> rooms = {
      {"LNBs and satellites", kSatelliteTable + kMaximumSatellites * kSatelliteEntry, sizes[3]},
      {"carriers and services", TablesSize(database), sizes[4]},
      {"service index", 2 * database.services.size(), sizes[5]},
      {"favourites", kFavouriteGroups * kFavouriteEntry, sizes[6]},
      {"settings", marker + kSettingsBlock, sizes[0]},
      {"selected favourites", marker + kSelectionBlock, sizes[2]},
      {"all partitions", e2p ? layout.settings : layout.end, space},
      {"region", space, kMaximumImageSize}};
  if (e2p) rooms.push_back({"settings file", uint64_t{sizes[0]} + sizes[2], kMaximumImageSize});
  for (const FavouriteGroup& group : database.favourites) {
    rooms.push_back({"TV list of a favourite group", 2 * group.tv.size(), kTvList});
    rooms.push_back({"radio list of a favourite group", 2 * group.radio.size(), kRadioList});
  }
  return rooms;
}

// False after a message when a table does not fit.
bool ExpectFit(const Context& context, const ProjectConfig& config, const std::vector<TableRoom>& rooms) {
  const auto fits = [](const TableRoom& room) { return room.size <= room.room; };
  const auto found = std::find_if_not(rooms.begin(), rooms.end(), fits);
  if (found == rooms.end()) return true;
  return RefuseFit(context,
                   Format("%s: %llu bytes of %s, room for %llu. Delete records, or choose another "
                          "configuration.",
                          ConfigurationName(config).c_str(), static_cast<unsigned long long>(found->size),
                          found->table, static_cast<unsigned long long>(found->room)));
}

void WriteLsd(const StaticDatabase& database, std::span<uint8_t> image) {
  for (size_t i = 0; i < kMaximumLnbs; ++i)
    PackLnb(database.lnbs[i], image.subspan(i * kLnbEntry, kLnbEntry));
  const size_t used = database.satellites.size();
  for (size_t i = 0; i < kMaximumSatellites; ++i) {
    const auto entry = image.subspan(kSatelliteTable + i * kSatelliteEntry, kSatelliteEntry);
    if (i < used) {
      PackSatellite(database.satellites[i]->record, entry);
    } else {
      PackEmptySatellite(static_cast<uint32_t>(i - used + 1), entry);
    }
  }
}

// Writes both tables. The result says where each service stands in its table.
Places<Service> WriteTables(const StaticDatabase& database, const AdbLayout& layout,
                            std::span<uint8_t> image) {
  Places<Service> positions(database.service_pool);
  uint32_t place = 0;
  for (size_t i = 0; i < database.carriers.size(); ++i) {
    const Carrier& carrier = *database.carriers[i];
    CarrierRecord record = carrier.record;
    record.first_service = place & 0xFFFF;
    const auto at = static_cast<size_t>(layout.tables_end - (i + 1) * kCarrierEntry);
    PackCarrier(record, image.subspan(at, kCarrierEntry));
    for (const Service* service : carrier.services) {
      ServiceRecord packed = service->record;
      packed.carrier_index = i & 0xFFFF;
      const auto entry =
          image.subspan(static_cast<size_t>(layout.tables + uint64_t{place} * kServiceEntry), kServiceEntry);
      PackService(packed, entry);
      positions.Set(*service, place++);
    }
  }
  return positions;
}

void WriteList(const std::vector<Service*>& list, const Places<Service>& positions,
               std::span<uint8_t> place) {
  for (size_t i = 0; i < list.size(); ++i) {
    const uint16_t position = positions.Of(*list[i]);
    place[2 * i] = static_cast<uint8_t>(position);
    place[2 * i + 1] = static_cast<uint8_t>(position >> 8);
  }
}

void WriteFavourites(const StaticDatabase& database, const Places<Service>& positions,
                     std::span<uint8_t> partition) {
  for (size_t i = 0; i < kFavouriteGroups; ++i) {
    const FavouriteGroup& group = database.favourites[i];
    FavouriteRecord record = group.record;
    record.tv_count = group.tv.size() & 0xFFF;
    record.radio_count = group.radio.size() & 0xFFF;
    const auto entry = partition.subspan(i * kFavouriteEntry, kFavouriteEntry);
    PackFavourite(record, entry);
    WriteList(group.tv, positions, entry.subspan(kFavouriteHeader, kTvList));
    WriteList(group.radio, positions, entry.subspan(kFavouriteHeader + kTvList, kRadioList));
  }
}

std::optional<uint32_t> FirstGroupWith(const StaticDatabase& database, uint32_t flag) {
  for (uint32_t i = 0; i < kFavouriteGroups; ++i) {
    if (database.favourites[i].record.kept_0 & flag) return i;
  }
  return std::nullopt;
}

SettingsBlock SettingsFor(const Document& document, const StaticDatabase& database, bool e2p) {
  SettingsBlock block = document.settings_block;
  if (!document.ubis.empty())
    std::memcpy(block.data() + kSettingsUserBox, &document.ubis[0].record, sizeof(UserBoxInfo));
  const auto& services = database.services;
  const bool tv =
      std::any_of(services.begin(), services.end(), [](const Service* s) { return s->record.type == kTv; });
  WriteField(block, 1, 14, 1, e2p);
  WriteField(block, 1, 15, 1, tv);
  WriteField(block, 1, 16, 1, !services.empty() && !tv);
  WriteField(block, 1, 17, 6, kMaximumLnbs);
  WriteField(block, 1, 23, 8, kMaximumSatellites);
  WriteField(block, 0, 19, 12, static_cast<uint32_t>(database.carriers.size()));
  WriteField(block, 0, 0, 13, static_cast<uint32_t>(services.size()));
  if (const auto group = FirstGroupWith(database, 1)) {
    WriteField(block, 6, 16, 5, *group);
    WriteField(block, 10, 16, 5, *group);
  }
  if (const auto group = FirstGroupWith(database, 2)) WriteField(block, 8, 0, 5, *group);
  return block;
}

SelectionBlock SelectionFor(const StaticDatabase& database) {
  SelectionBlock block{};
  for (size_t i = 0; i < kFavouriteGroups; ++i) {
    const FavouriteGroup& group = database.favourites[i];
    WriteField(block, 2 * i, 0, 16, static_cast<uint32_t>(group.tv.size()));
    WriteField(block, 2 * i, 16, 16, static_cast<uint32_t>(group.radio.size()));
    WriteField(block, 2 * i + 1, 0, 16, group.record.kept_0);
  }
  return block;
}

// The high word of the marker comes first.
void WriteMarked(std::span<uint8_t> image, uint64_t offset, std::span<const uint8_t> block) {
  const auto place = image.subspan(static_cast<size_t>(offset), kMarker + block.size());
  WriteField(place, 0, 0, 32, static_cast<uint32_t>(kFirstMarker >> 32));
  WriteField(place, 1, 0, 32, static_cast<uint32_t>(kFirstMarker));
  std::copy(block.begin(), block.end(), place.begin() + kMarker);
}

// One piece of the ADB file and what is said when it cannot be written.
struct Piece {
  uint64_t end;
  const char* failure;
};

constexpr const char* kNoAdbFile = "File access error - Vexa_CreateADBPartitionFiles.";

bool WritePieces(const Context& context, const Path& path, std::span<const uint8_t> image,
                 std::span<const Piece> pieces) {
  const Made<std::FILE*> file = context.files->create(path);
  if (!file) {
    TellWhy(context.messages, Icon::kStop, WriteReason(path, file.error), "%s", kNoAdbFile);
    return false;
  }
  const auto tell = [&](const Outcome& outcome, const char* failure) {
    TellWhy(context.messages, Icon::kStop, WriteReason(path, outcome.error), "%s", failure);
    return false;
  };
  uint64_t start = 0;
  for (const Piece& piece : pieces) {
    const auto part = image.subspan(static_cast<size_t>(start), static_cast<size_t>(piece.end - start));
    const Outcome written = context.files->write(file.value, part);
    if (!written) {
      context.files->finish(file.value);
      return tell(written, piece.failure);
    }
    start = piece.end;
  }
  const Outcome finished = context.files->finish(file.value);
  return finished || tell(finished, pieces.back().failure);
}

constexpr const char* kLsdFailure = "File write access error :- LSD Partition";
constexpr const char* kTableFailure = "File write-access error";
constexpr const char* kNodvbFailure = "File write access error :- Nodvb Partition";

// The converter tells by itself why it refuses an image; a file that cannot be written is told of here.
bool MakeUrt(const Context& context, const ConversionParameters& parameters,
             const ImageDescription& description, std::span<const uint8_t> image, const char* name) {
  Bytes urt;
  if (BuildUrt(context, parameters, description, image, urt) != ConversionResult::kDone) return false;
  const Path path = context.temporary_folder / name;
  const WriteResult written = WriteWholeFile(path, urt, *context.files);
  if (written == WriteResult::kDone) return true;
  TellWhy(context.messages, Icon::kStop, WriteReason(path, written.error), "%s",
          written == WriteResult::kCannotCreate ? kNoAdbFile : kTableFailure);
  return false;
}

void AppendRequestRecord(ByteWriter& file, uint32_t count, uint32_t region, uint32_t start, uint32_t end) {
  ByteWriter payload;
  payload.U32Big(count);
  payload.U8(region);
  payload.U32Big(start);
  payload.U32Big(end);
  payload.Fill(3, 0);
  file.Append(FrameOf(payload.bytes()));
}

bool IsLaidOutAlike(const ProjectConfig& one, const ProjectConfig& other) {
  const RegionEntry *first = AdbRegion(one), *second = AdbRegion(other);
  return first && second && first->start == second->start && first->end == second->end &&
         one.configuration_index == other.configuration_index && one.partition_sizes == other.partition_sizes;
}

// The last `header` bytes of the first region are the image header.
void TakeHeld(const AdbImages& held, uint32_t header, AdbImages& images) {
  const auto take = [](const Bytes& from, Bytes& to, size_t end) {
    std::copy_n(from.begin(), std::min({from.size(), to.size(), end}), to.begin());
  };
  take(held.adb, images.adb, images.adb.size() - header);
  take(held.e2p, images.e2p, images.e2p.size());
}

}  // namespace

uint32_t AdbHeaderSize(const ProjectConfig& config) {
  return RoomOfImage(0, config.configuration_index != 0).header;
}

std::vector<TableUse> AdbRooms(const StaticDatabase& database, const ProjectConfig& config) {
  if (!AdbRegion(config) || config.partitions.empty()) return {};
  const auto& sizes = config.partition_sizes;
  const auto unused = std::count_if(database.satellites.begin(), database.satellites.end(),
                                    [](const auto& satellite) { return IsUnusedPlace(*satellite); });
  std::vector<TableUse> rooms = {
      {"lnbs", database.lnb_count, kMaximumLnbs},
      {"satellites", database.satellites.size() - static_cast<size_t>(unused), kMaximumSatellites},
      {"carriers", database.carriers.size(), kImageCarriers},
      {"services", database.services.size(), std::min<uint64_t>(kImageServices, sizes[5] / 2)},
      {"tables", TablesSize(database), std::min<uint64_t>(kImageTables, sizes[4])}};
  const auto add_group = [&rooms](const char* list, size_t group, size_t used, size_t bytes) {
    rooms.push_back({list + std::to_string(group + 1), used, bytes / 2});
  };
  for (size_t i = 0; i < database.favourites.size(); ++i) {
    add_group("tv-group-", i, database.favourites[i].tv.size(), kTvList);
    add_group("radio-group-", i, database.favourites[i].radio.size(), kRadioList);
  }
  return rooms;
}

std::optional<AdbImages> BuildAdbImages(const Context& caller, const Document& document, size_t sdb,
                                        const ProjectConfig& config, const HeldMemory* held) {
  const StaticDatabase& database = *document.sdbs.at(sdb).database;
  const RegionEntry* region = AdbRegion(config);
  if (!region || config.partitions.empty()) {
    RefuseSettings(caller, config, "It has no regions or no partitions.");
    return std::nullopt;
  }
  const Context context = About(caller, NameOfSdb(document, sdb));
  const bool e2p = config.configuration_index == 1;
  if (!CheckLimits(context, database)) return std::nullopt;
  if (!ExpectFit(context, config, RoomsOf(database, config, *region, e2p))) return std::nullopt;

  const AdbLayout layout = LayoutOf(config);
  AdbImages images;
  images.adb.assign(region->end - region->start, 0xFF);
  const std::span<uint8_t> adb = images.adb;
  WriteLsd(database, adb);
  const Places<Service> positions = WriteTables(database, layout, adb);
  WriteList(database.service_order, positions, adb.subspan(static_cast<size_t>(layout.tables_end)));
  WriteFavourites(database, positions, adb.subspan(static_cast<size_t>(layout.favourites)));
  const SettingsBlock settings = SettingsFor(document, database, e2p);
  const SelectionBlock selection = SelectionFor(database);
  if (e2p) {
    const size_t first = config.partition_sizes[0];
    images.e2p.assign(first + config.partition_sizes[2], 0xFF);
    std::copy(settings.begin(), settings.end(), images.e2p.begin());
    std::copy(selection.begin(), selection.end(), images.e2p.begin() + static_cast<std::ptrdiff_t>(first));
  } else {
    WriteMarked(adb, layout.settings, settings);
    WriteMarked(adb, layout.selection, selection);
  }
  // The converter puts the image header over the end of the region.
  const uint32_t header = AdbHeaderSize(config);
  const bool free = adb.size() >= header &&
                    std::all_of(adb.end() - header, adb.end(), [](uint8_t byte) { return byte == 0xFF; });
  if (!free) {
    RefuseFit(context,
              Format("%s: no room for the image header, the last %u bytes of \"%s\". Choose another "
                     "configuration.",
                     ConfigurationName(config).c_str(), header, Utf8FromLatin(region->name).c_str()));
    return std::nullopt;
  }
  if (held && IsLaidOutAlike(held->config, config)) TakeHeld(held->regions, header, images);
  return images;
}

bool CreateAdbPartitionFiles(const Context& context, const Document& document, size_t sdb,
                             const ProjectConfig& config, const LocalTime& time, int& files,
                             const HeldMemory* held) {
  files = 0;
  auto images = BuildAdbImages(context, document, sdb, config, held);
  if (!images) return false;
  const bool e2p = config.configuration_index == 1;
  const AdbLayout layout = LayoutOf(config);
  const Path& folder = context.temporary_folder;
  const Piece adb_pieces[] = {{layout.tables, kLsdFailure},
                              {layout.settings, kTableFailure},
                              {images->adb.size(), e2p ? kTableFailure : kNodvbFailure}};
  if (!WritePieces(context, folder / kAdbImageFile, images->adb, adb_pieces)) return false;
  const Piece e2p_pieces[] = {{images->e2p.size(), kNodvbFailure}};
  if (e2p && !WritePieces(context, folder / kE2pImageFile, images->e2p, e2p_pieces)) return false;

  const RegionEntry& region = *AdbRegion(config);
  const ConversionParameters parameters = SetConversionParameters(config, time);
  ImageDescription description = DescribeImage(config);
  description.kind = 4;
  description.flag = config.configuration_index != 0;
  description.name = region.name;
  description.start = region.start;
  description.end = region.end;
  const auto adb = std::span(images->adb).first(images->adb.size() - AdbHeaderSize(config));
  if (!MakeUrt(context, parameters, description, adb, kAdbUrtFile)) return false;
  files = 1;
  if (!e2p) return true;
  description.type = 3;
  description.kind = 5;
  description.name = "E2P Data";
  description.start = 0;
  description.end = static_cast<uint32_t>(images->e2p.size());
  if (!MakeUrt(context, parameters, description, images->e2p, kE2pUrtFile)) return false;
  files = 2;
  return true;
}

std::optional<Bytes> BuildDownloadRequest(const Context& context, const ProjectConfig& config) {
  const RegionEntry* region = AdbRegion(config);
  if (!region || region->type != 3) {
    TellWhy(context.messages, Icon::kStop,
            ConfigurationName(config) + ": It has no region of type 3. Choose another configuration.",
            "Vexa Editor is not configured for ADB image download.");
    return std::nullopt;
  }
  const uint32_t count = config.configuration_index == 0 ? 1 : 2;
  ByteWriter file;
  file.Text("MZ", 2);
  file.U32Big(count);
  AppendRequestRecord(file, count, 1, region->start, region->end);
  if (count == 2) AppendRequestRecord(file, count, 2, 0, kE2pRequested);
  return std::move(file.bytes());
}

bool WriteDownloadRequest(const Context& context, const ProjectConfig& config) {
  const auto request = BuildDownloadRequest(context, config);
  if (!request) return false;
  const Path path = context.temporary_folder / kRequestFile;
  const WriteResult written = WriteWholeFile(path, *request, *context.files);
  if (written == WriteResult::kDone) return true;
  TellWhy(context.messages, Icon::kStop, WriteReason(path, written.error),
          "Error No: -3 \n File Access Error!!!");
  return false;
}

}  // namespace vexa
