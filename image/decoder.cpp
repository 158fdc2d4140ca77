#include "image/decoder.h"

#include <algorithm>
#include <bit>
#include <numeric>

#include "core/bin_file.h"
#include "core/bytes.h"
#include "core/match.h"
#include "image/transfer_files.h"
#include "image/urt.h"

namespace vexa {

namespace {

struct Counts {
  uint32_t lnbs = 0, satellites = 0, carriers = 0, services = 0;
};

Counts CountsOf(const SettingsBlock& settings) {
  return {ReadField(settings, 1, 17, 6), ReadField(settings, 1, 23, 8), ReadField(settings, 0, 19, 12),
          ReadField(settings, 0, 0, 13)};
}

// Copies what the image has at `offset`; the rest of the block keeps its preset.
void CopyBlock(std::span<const uint8_t> image, uint64_t offset, std::span<uint8_t> block) {
  if (offset >= image.size()) return;
  const size_t count = std::min<size_t>(block.size(), image.size() - static_cast<size_t>(offset));
  const auto part = image.subspan(static_cast<size_t>(offset), count);
  std::copy(part.begin(), part.end(), block.begin());
}

void CopyCurrent(std::span<const uint8_t> image, uint64_t offset, std::span<uint8_t> block) {
  if (offset + kMarker > image.size()) return;
  const auto marker = image.subspan(static_cast<size_t>(offset), kMarker);
  const uint64_t value = uint64_t{ReadField(marker, 0, 0, 32)} << 32 | ReadField(marker, 1, 0, 32);
  CopyBlock(image, offset + kMarker + JournalSlot(value) * block.size(), block);
}

// The image with its layout; every table known to lie inside.
struct Source {
  std::span<const uint8_t> image;
  AdbLayout layout;
  Counts counts;

  std::span<const uint8_t> At(uint64_t offset, size_t size) const {
    return image.subspan(static_cast<size_t>(offset), size);
  }
  // What its settings say that cannot be; empty when every table lies inside.
  std::string Fault() const {
    const uint64_t size = image.size();
    const struct {
      const char* what;
      uint64_t stated, most;
    } rows[] = {
        {"count of LNBs", counts.lnbs, kMaximumLnbs},
        {"count of satellites", counts.satellites, kMaximumSatellites},
        {"end of the satellites", kSatelliteTable + uint64_t{counts.satellites} * kSatelliteEntry, size},
        {"end of the carriers", layout.tables_end, size},
        {"size of the carriers", uint64_t{counts.carriers} * kCarrierEntry, layout.tables_end},
        {"end of the services", layout.tables + uint64_t{counts.services} * kServiceEntry, size},
        {"end of the service index", layout.tables_end + uint64_t{counts.services} * 2, size},
        {"end of the favourites", layout.favourites + kFavouriteGroups * kFavouriteEntry, size}};
    for (const auto& [what, stated, most] : rows) {
      if (stated <= most) continue;
      return Format("The %s is %llu, at most %llu fits.", what, static_cast<unsigned long long>(stated),
                    static_cast<unsigned long long>(most));
    }
    return {};
  }
};

void WriteBlockHeader(ByteWriter& file, const char* name, uint32_t record_size, uint32_t count) {
  file.Text(name, 8);
  file.U16(record_size);
  file.U16(0xFFFF);
  file.U16(count);
  file.U16(0xFFFF);
}

void WriteFileHeader(ByteWriter& file) {
  file.Text("Qz", 2);
  file.U8(2);
  file.Fill(3, 0xFF);
  file.U16(6);
  file.Fill(16, 0xFF);
}

// Gives back the LNB index of each satellite.
std::vector<uint8_t> WriteSatellites(const Source& source, ByteWriter& file) {
  std::vector<uint8_t> lnbs;
  WriteBlockHeader(file, "Satelli", sizeof(SatelliteRecord), source.counts.satellites);
  for (uint32_t i = 0; i < source.counts.satellites; ++i) {
    SatelliteRecord record =
        UnpackSatellite(source.At(kSatelliteTable + i * kSatelliteEntry, kSatelliteEntry));
    if (record.name[0] == 0) SetName(record.name, EmptySlotName(i + 1));
    lnbs.push_back(static_cast<uint8_t>(record.lnb_index));
    file.Write(record);
  }
  return lnbs;
}

void WriteCarriers(const Source& source, const std::vector<uint8_t>& satellite_lnbs, ByteWriter& file) {
  WriteBlockHeader(file, "Carrier", sizeof(CarrierRecord), source.counts.carriers);
  for (uint32_t i = 0; i < source.counts.carriers; ++i) {
    const uint64_t at = source.layout.tables_end - uint64_t{i + 1} * kCarrierEntry;
    CarrierRecord record = UnpackCarrier(source.At(at, kCarrierEntry));
    if (record.name[0] == 0) SetName(record.name, Format("Carrier_%u", i));
    if (record.satellite_index < satellite_lnbs.size())
      record.lnb_index = satellite_lnbs[record.satellite_index];
    file.Write(record);
  }
}

std::vector<uint16_t> PlacesIn(std::span<const uint8_t> bytes) {
  std::vector<uint16_t> places;
  ByteReader reader(bytes);
  while (reader.remaining() >= 2) places.push_back(reader.U16());
  return places;
}

// An order that does not name each service once becomes the services' own.
void MendOrder(std::vector<uint16_t>& order) {
  std::vector<bool> seen(order.size());
  for (const uint16_t place : order) {
    if (place < seen.size()) seen[place] = true;
  }
  if (std::find(seen.begin(), seen.end(), false) != seen.end())
    std::iota(order.begin(), order.end(), uint16_t{0});
}

void WriteServices(const Source& source, ByteWriter& file) {
  const uint32_t count = source.counts.services;
  WriteBlockHeader(file, "Service", sizeof(ServiceRecord), count);
  for (uint32_t i = 0; i < count; ++i) {
    file.Write(UnpackService(source.At(source.layout.tables + uint64_t{i} * kServiceEntry, kServiceEntry)));
  }
  WriteBlockHeader(file, "OSL", 2, count);
  auto order = PlacesIn(source.At(source.layout.tables_end, 2 * size_t{count}));
  MendOrder(order);
  for (const uint16_t place : order) file.U16(place);
  if (count % 2 != 0) file.U16(0xFFFF);
}

// Without the entries that name no service.
std::vector<uint16_t> FavouritesIn(const Source& source, std::span<const uint8_t> list) {
  auto places = PlacesIn(list);
  std::erase_if(places, [&source](uint16_t place) { return place >= source.counts.services; });
  return places;
}

// False when a group claims more entries than its lists hold.
bool WriteFavourites(const Source& source, ByteWriter& file) {
  WriteBlockHeader(file, "FGLblk", 0, kFavouriteGroups);
  for (uint32_t i = 0; i < kFavouriteGroups; ++i) {
    const auto entry = source.At(source.layout.favourites + uint64_t{i} * kFavouriteEntry, kFavouriteEntry);
    FavouriteRecord record = UnpackFavourite(entry.first(kFavouriteHeader));
    if (record.tv_count * 2 > kTvList || record.radio_count * 2 > kRadioList) return false;
    if (record.tv_name[0] == 0 && record.radio_name[0] == 0) {
      SetName(record.tv_name, Format("Favourite%u", i + 1));
      SetName(record.radio_name, Format("Favourite%u", i + 1));
    }
    const auto tv = FavouritesIn(source, entry.subspan(kFavouriteHeader, 2 * size_t{record.tv_count}));
    const auto radio =
        FavouritesIn(source, entry.subspan(kFavouriteHeader + kTvList, 2 * size_t{record.radio_count}));
    record.tv_count = tv.size() & 0xFFF;
    record.radio_count = radio.size() & 0xFFF;
    file.Write(record);
    for (const uint16_t place : tv) file.U16(place);
    for (const uint16_t place : radio) file.U16(place);
    if ((record.tv_count + record.radio_count) % 2 != 0) file.U16(0xFFFF);
  }
  return true;
}

}  // namespace

size_t JournalSlot(uint64_t marker) {
  const size_t zeros = marker <= 1 ? 63 : static_cast<size_t>(std::countl_zero(marker));
  return zeros == 0 || zeros - 1 >= kJournalCopies ? 0 : zeros - 1;
}

std::optional<DecodedImage> DecodeImage(const Context& context, const ProjectConfig& config,
                                        std::span<const uint8_t> adb, std::span<const uint8_t> e2p,
                                        const UserBoxInfo& user_box) {
  if (config.partitions.empty()) {
    RefuseSettings(context, config, "It has no partitions.");
    return std::nullopt;
  }
  DecodedImage decoded;
  decoded.settings.fill(0xFF);
  decoded.selection.fill(0);
  Source source{adb, LayoutOf(config), {}};
  if (config.configuration_index == 1) {
    CopyBlock(e2p, 0, decoded.settings);
    CopyBlock(e2p, config.partition_sizes[0], decoded.selection);
  } else {
    CopyCurrent(adb, source.layout.settings, decoded.settings);
    CopyCurrent(adb, source.layout.selection, decoded.selection);
  }
  source.counts = CountsOf(decoded.settings);
  ByteWriter file;
  std::string fault = source.Fault();
  if (fault.empty()) {
    WriteFileHeader(file);
    WriteBlockHeader(file, "lnb", sizeof(LnbRecord), source.counts.lnbs);
    for (uint32_t i = 0; i < source.counts.lnbs; ++i)
      file.Write(UnpackLnb(source.At(i * kLnbEntry, kLnbEntry)));
    const auto lnbs = WriteSatellites(source, file);
    WriteCarriers(source, lnbs, file);
    WriteServices(source, file);
    if (!WriteFavourites(source, file)) fault = "A favourite group has more entries than its lists hold.";
  }
  if (!fault.empty()) {
    TellWhy(context.messages, Icon::kStop,
            fault + " Download it again, or choose the configuration that it was made for.",
            "File access error");
    return std::nullopt;
  }
  WriteBlockHeader(file, "UserBox", sizeof user_box, 1);
  file.Write(user_box);
  decoded.file = std::move(file.bytes());
  // Tables that contradict each other are found by whoever opens the file; then none is made.
  StaticDatabase opened;
  size_t used = 0;
  if (!ReadSdbStream(context, decoded.file, opened, used)) return std::nullopt;
  return decoded;
}

std::optional<DecodedImage> DecodeFolder(const Context& context, const ProjectConfig& config,
                                         const Path& folder, const UserBoxInfo& user_box) {
  Bytes adb, e2p;
  const Path adb_path = folder / kAdbImageFile, e2p_path = folder / kE2pImageFile;
  ReadResult read = ReadWholeFile(adb_path, adb, kMaximumImageSize);
  if (read != ReadResult::kDone) {
    TellWhy(context.messages, Icon::kStop, ReadReason(adb_path, read.error), "File access error");
    return std::nullopt;
  }
  if (config.configuration_index == 1) read = ReadWholeFile(e2p_path, e2p, kMaximumImageSize);
  if (read != ReadResult::kDone) {
    TellWhy(context.messages, Icon::kStop, ReadReason(e2p_path, read.error), "E2P File access error.");
    return std::nullopt;
  }
  return DecodeImage(About(context, Utf8FromPath(adb_path)), config, adb, e2p, user_box);
}

std::optional<DecodedImage> DecodeDownload(const Context& context, const ProjectConfig& config,
                                           const UserBoxInfo& user_box) {
  auto decoded = DecodeFolder(context, config, context.temporary_folder, user_box);
  if (!decoded) return std::nullopt;
  const Path path = context.temporary_folder / kDecodedFile;
  const WriteResult written = WriteWholeFile(path, decoded->file, *context.files);
  if (written == WriteResult::kDone) return decoded;
  TellWhy(context.messages, Icon::kStop, WriteReason(path, written.error), "%s",
          written == WriteResult::kCannotCreate ? "File access error" : "File write-access error");
  return std::nullopt;
}

bool OpenDecoded(const Context& context, const DecodedImage& decoded, Document& document) {
  if (!OpenBinBytes(context, decoded.file, document)) return false;
  document.settings_block = decoded.settings;
  return true;
}

}  // namespace vexa
