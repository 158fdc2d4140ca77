#include <algorithm>
#include <filesystem>
#include <fstream>

#include "core/bin_file.h"
#include "core/bytes.h"
#include "core/zlib_com.h"
#include "platform/text.h"

namespace vexa {

namespace {

constexpr size_t kHeaderSize = 24;
constexpr uint16_t kFullStream = 6;
constexpr uint16_t kSubsetStream = 5;  // no favourite groups
constexpr uint16_t kMark = 0xFFFF;
constexpr uint16_t kUbiMark = 0x00FF;

const DefaultRecords& DefaultsOf(const Context& context) {
  return context.defaults ? *context.defaults : FactoryDefaults();
}

void WriteInitials(ByteWriter& out, const BinVersion& version) {
  out.Text(version.initials, 3, ' ');
}

void WriteBlockHeader(ByteWriter& out, std::string_view name, size_t record_size, size_t count,
                      uint16_t mark = kMark) {
  out.Text(name, 8);
  out.U16(static_cast<uint32_t>(record_size));
  out.U16(mark);
  out.U16(static_cast<uint32_t>(count));
  out.U16(mark);
}

// What a stream takes of a database: satellites with their new places, and all that stands on them.
struct StreamPlan {
  const StaticDatabase* database = nullptr;
  uint16_t stream_version = kFullStream;
  std::vector<const Satellite*> satellites;
  std::array<int, kMaximumSatellites> places{};  // by table position; below 0: left out
  size_t carriers = 0, services = 0;
};

bool Takes(const StreamPlan& plan, const Carrier& carrier) {
  return plan.places[carrier.record.satellite_index] >= 0;
}

StreamPlan PlanStream(const StaticDatabase& database, uint16_t stream_version,
                      const std::vector<size_t>& positions) {
  StreamPlan plan;
  plan.database = &database;
  plan.stream_version = stream_version;
  plan.places.fill(-1);
  for (const size_t position : positions) {
    if (position >= database.satellites.size() || plan.places[position] >= 0) continue;
    plan.places[position] = static_cast<int>(plan.satellites.size());
    plan.satellites.push_back(database.satellites[position]);
  }
  for (const Carrier* carrier : database.carriers) {
    if (!Takes(plan, *carrier)) continue;
    ++plan.carriers;
    plan.services += carrier->services.size();
  }
  return plan;
}

StreamPlan PlanWholeStream(const StaticDatabase& database) {
  std::vector<size_t> positions(database.satellites.size());
  for (size_t i = 0; i < positions.size(); ++i) positions[i] = i;
  return PlanStream(database, kFullStream, positions);
}

size_t StreamSize(const StreamPlan& plan) {
  size_t size = kHeaderSize + 6 * 16 + kMaximumLnbs * sizeof(LnbRecord) +
                kMaximumSatellites * sizeof(SatelliteRecord) + plan.carriers * sizeof(CarrierRecord) +
                plan.services * (sizeof(ServiceRecord) + 2) + 2;
  for (const FavouriteGroup& group : plan.database->favourites)
    size += sizeof(FavouriteRecord) + 2 * (group.tv.size() + group.radio.size()) + 2;
  return size;
}

void WriteStreamHeader(ByteWriter& out, const StreamPlan& plan, const BinVersion& version) {
  out.Text("Qz", 2);
  out.U8(2);
  out.Fill(3, 0);
  out.U16(plan.stream_version);
  out.Fill(8, 0);
  WriteInitials(out, version);
  out.U8(0);
  out.U8(version.major);
  out.U8(version.minor);
  out.U8(0xFF);
  out.U8(0);
}

void WriteLnbs(ByteWriter& out, const StaticDatabase& database, const DefaultRecords& defaults) {
  WriteBlockHeader(out, "lnb", sizeof(LnbRecord), kMaximumLnbs);
  for (size_t i = 0; i < kMaximumLnbs; ++i)
    out.Write(i < database.lnb_count ? database.lnbs[i] : defaults.lnb);
}

void WriteSatellites(ByteWriter& out, const StreamPlan& plan, const DefaultRecords& defaults) {
  WriteBlockHeader(out, "Satelli", sizeof(SatelliteRecord), kMaximumSatellites);
  for (const Satellite* satellite : plan.satellites) {
    SatelliteRecord record = satellite->record;
    record.carrier_count = static_cast<uint16_t>(satellite->carriers.size());
    out.Write(record);
  }
  SatelliteRecord filler = defaults.satellite;
  filler.carrier_count = 0;
  for (unsigned i = 1; i <= kMaximumSatellites - plan.satellites.size(); ++i) {
    SetName(filler.name, Format("NewSat %u", i));
    out.Write(filler);
  }
}

void WriteCarriers(ByteWriter& out, const StreamPlan& plan) {
  WriteBlockHeader(out, "Carrier", sizeof(CarrierRecord), plan.carriers);
  size_t number = 0, services = 0;
  for (Carrier* carrier : plan.database->carriers) {
    if (!Takes(plan, *carrier)) continue;
    carrier->place = static_cast<uint16_t>(number++);
    CarrierRecord record = carrier->record;
    record.lnb_index = carrier->satellite->record.lnb_index;
    record.first_service = static_cast<uint16_t>(services);
    record.service_count = static_cast<uint16_t>(carrier->services.size());
    record.satellite_index = static_cast<uint32_t>(plan.places[record.satellite_index]) & 0x3FF;
    out.Write(record);
    services += carrier->services.size();
  }
}

void WriteServices(ByteWriter& out, const StreamPlan& plan) {
  WriteBlockHeader(out, "Service", sizeof(ServiceRecord), plan.services);
  size_t number = 0;
  for (const Carrier* carrier : plan.database->carriers) {
    if (!Takes(plan, *carrier)) continue;
    for (Service* service : carrier->services) {
      service->place = static_cast<uint16_t>(number++);
      ServiceRecord record = service->record;
      record.carrier_index = carrier->place;
      out.Write(record);
    }
  }
}

void WriteServiceOrder(ByteWriter& out, const StreamPlan& plan) {
  WriteBlockHeader(out, "OSL", 2, plan.services);
  for (const Service* service : plan.database->service_order) {
    if (Takes(plan, *service->carrier)) out.U16(service->place);
  }
  if (plan.services % 2 != 0) out.U16(kMark);
}

void WriteFavourites(ByteWriter& out, const StaticDatabase& database) {
  WriteBlockHeader(out, "FGLblk", 0, kFavouriteGroups);
  for (const FavouriteGroup& group : database.favourites) {
    FavouriteRecord record = group.record;
    record.tv_count = group.tv.size() & 0xFFF;
    record.radio_count = group.radio.size() & 0xFFF;
    out.Write(record);
    for (const Service* service : group.tv) out.U16(service->place);
    for (const Service* service : group.radio) out.U16(service->place);
    if ((group.tv.size() + group.radio.size()) % 2 != 0) out.U16(kMark);
  }
}

void WriteStream(ByteWriter& out, const StreamPlan& plan, const BinVersion& version,
                 const DefaultRecords& defaults) {
  WriteStreamHeader(out, plan, version);
  WriteLnbs(out, *plan.database, defaults);
  WriteSatellites(out, plan, defaults);
  WriteCarriers(out, plan);
  WriteServices(out, plan);
  WriteServiceOrder(out, plan);
  if (plan.stream_version == kFullStream) WriteFavourites(out, *plan.database);
}

void WriteUbiStream(ByteWriter& out, const std::vector<const OpenUbi*>& ubis) {
  WriteBlockHeader(out, "UserBox", sizeof(UserBoxInfo), ubis.size(), kUbiMark);
  for (const OpenUbi* ubi : ubis) {
    out.Text(std::string_view(ubi->name).substr(0, 7), 8);
    out.Write(ubi->record);
  }
}

// One SDB of a container.
struct SdbPart {
  std::string name;
  StreamPlan plan;
};

struct ContainerPlan {
  std::vector<SdbPart> sdbs;
  std::vector<const OpenUbi*> ubis;
  bool compress_ubis = false, compress_payload = false;
};

void WriteEntry(ByteWriter& out, std::string_view name, bool compressed, bool slots, size_t carriers,
                size_t services) {
  out.Text(name.substr(0, 6), 7);
  out.U8(compressed ? 1 : 0);
  out.Fill(12, 0xFF);  // the sizes and the offset, known when the stream is written
  out.U16(slots ? kMaximumLnbs : 0);
  out.U16(slots ? kMaximumSatellites : 0);
  out.U16(static_cast<uint32_t>(carriers));
  out.U16(static_cast<uint32_t>(services));
}

// Compresses `source` behind what `out` holds.
bool AppendCompressed(const Context& context, std::span<const uint8_t> source, Bytes& out) {
  const size_t before = out.size();
  out.resize(before + static_cast<size_t>(CompressedCapacity(source.size())));
  const uint64_t length =
      CompressBuffer(context.messages, source, std::span(out).subspan(before), kDefaultLevel, nullptr);
  out.resize(before + static_cast<size_t>(length));
  return length != 0;
}

// Appends a stream and completes its directory entry.
template <class WriteStreamTo>
bool AppendStream(const Context& context, ByteWriter& out, size_t entry, bool compressed,
                  WriteStreamTo write) {
  const size_t offset = out.size();
  size_t size = 0;
  if (compressed) {
    ByteWriter stream;
    write(stream);
    size = stream.size();
    if (!AppendCompressed(context, stream.bytes(), out.bytes())) return false;
  } else {
    write(out);
    size = out.size() - offset;
  }
  out.PatchU32(entry + 8, static_cast<uint32_t>(size));
  out.PatchU32(entry + 12, static_cast<uint32_t>(out.size() - offset));
  out.PatchU32(entry + 16, static_cast<uint32_t>(offset));
  return true;
}

void WriteContainerHeader(ByteWriter& out, const ContainerPlan& plan, const BinVersion& version) {
  out.Text("Qz", 2);
  out.U8(version.major);
  out.U8(version.minor);
  out.U8(0x10);
  out.U8(0);
  out.U8(0);
  out.U8(0xFF);
  WriteInitials(out, version);
  out.U8(plan.compress_payload ? 1 : 0);
  out.U32(0xFFFFFFFF);
  out.U32(0xFFFFFFFF);
  out.U16(static_cast<uint32_t>(plan.sdbs.size()));
  out.U16(static_cast<uint32_t>(plan.ubis.size()));
}

// Compresses everything behind the header where asked, and completes the header.
bool FinishPayload(const Context& context, ByteWriter& out, bool compress) {
  const size_t size = out.size() - kHeaderSize;
  if (compress) {
    const auto header = std::span(out.bytes()).first(kHeaderSize);
    Bytes packed(header.begin(), header.end());
    if (!AppendCompressed(context, std::span(out.bytes()).subspan(kHeaderSize), packed)) return false;
    out.bytes() = std::move(packed);
  }
  out.PatchU32(12, static_cast<uint32_t>(size));
  out.PatchU32(16, static_cast<uint32_t>(out.size() - kHeaderSize));
  return true;
}

std::optional<Bytes> BuildContainer(const Context& context, const ContainerPlan& plan,
                                    const BinVersion& version) {
  ByteWriter out;
  size_t expected = kHeaderSize + 28 * (plan.sdbs.size() + 1) + 16 + 36 * plan.ubis.size();
  for (const SdbPart& sdb : plan.sdbs) {
    if (!sdb.plan.database->compressed) expected += StreamSize(sdb.plan);
  }
  out.bytes().reserve(expected);
  WriteContainerHeader(out, plan, version);
  size_t entry = out.size();
  for (const SdbPart& sdb : plan.sdbs)
    WriteEntry(out, sdb.name, sdb.plan.database->compressed, true, sdb.plan.carriers, sdb.plan.services);
  if (!plan.ubis.empty()) WriteEntry(out, "UBIblk", plan.compress_ubis, false, 0, 0);
  for (const SdbPart& sdb : plan.sdbs) {
    const auto write = [&](ByteWriter& to) { WriteStream(to, sdb.plan, version, DefaultsOf(context)); };
    if (!AppendStream(context, out, entry, sdb.plan.database->compressed, write)) return std::nullopt;
    entry += 28;
  }
  if (!plan.ubis.empty()) {
    const auto write = [&](ByteWriter& to) { WriteUbiStream(to, plan.ubis); };
    if (!AppendStream(context, out, entry, plan.compress_ubis, write)) return std::nullopt;
  }
  if (!FinishPayload(context, out, plan.compress_payload)) return std::nullopt;
  return std::move(out.bytes());
}

bool Selected(uint32_t mask, size_t number) {
  return number < 32 && (mask >> number & 1) != 0;
}

ContainerPlan PlanContainer(const Document& document, const BinSelection& selection) {
  ContainerPlan plan;
  plan.compress_payload = document.compress_payload;
  plan.compress_ubis = document.compress_ubis;
  for (size_t i = 0; i < document.sdbs.size(); ++i) {
    if (Selected(selection.sdbs, i))
      plan.sdbs.push_back({document.sdbs[i].name, PlanWholeStream(*document.sdbs[i].database)});
  }
  for (size_t i = 0; i < document.ubis.size(); ++i) {
    if (Selected(selection.ubis, i)) plan.ubis.push_back(&document.ubis[i]);
  }
  return plan;
}

// A receiver takes no database without them.
bool HasLnbAndSatellite(const Context& context, const ContainerPlan& plan) {
  const bool complete =
      !plan.sdbs.empty() && std::all_of(plan.sdbs.begin(), plan.sdbs.end(), [](const SdbPart& sdb) {
        return sdb.plan.database->lnb_count > 0 && !sdb.plan.satellites.empty();
      });
  if (!complete) Tell(context.messages, Icon::kStop, "Add atleast one LNB and Satellite to save as a bin");
  return complete;
}

bool SaveContainer(const Context& context, const ContainerPlan& plan, const Path& path,
                   const BinVersion& version) {
  if (!HasLnbAndSatellite(context, plan)) return false;
  const std::optional<Bytes> file = BuildContainer(context, plan, version);
  if (!file) return false;
  switch (WriteWholeFile(path, *file, *context.files)) {
    case WriteResult::kDone:
      return true;
    case WriteResult::kCannotCreate:
      Tell(context.messages, Icon::kStop, "Could not creat file \"%s\".", Utf8FromPath(path).c_str());
      return false;
    case WriteResult::kFailed:
      break;
  }
  Tell(context.messages, Icon::kStop, "Error No: -11 \n Save as BIN File");
  return false;
}

uint32_t EntryField(std::span<const uint8_t> layout, size_t entry, size_t offset) {
  ByteReader reader(layout);
  reader.Seek(kHeaderSize + 28 * entry + offset);
  return reader.U32();
}

}  // namespace

Bytes WriteSdbStream(const StaticDatabase& database, const BinVersion& version,
                     const DefaultRecords& defaults) {
  const StreamPlan plan = PlanWholeStream(database);
  ByteWriter out;
  out.bytes().reserve(StreamSize(plan));
  WriteStream(out, plan, version, defaults);
  return std::move(out.bytes());
}

Bytes WriteSatelliteStream(const StaticDatabase& database, const BinVersion& version,
                           const std::vector<size_t>& satellites, const DefaultRecords& defaults) {
  ByteWriter out;
  WriteStream(out, PlanStream(database, kSubsetStream, satellites), version, defaults);
  return std::move(out.bytes());
}

std::optional<Bytes> BuildBin(const Context& context, const Document& document, const BinVersion& version,
                              const BinSelection& selection) {
  return BuildContainer(context, PlanContainer(document, selection), version);
}

bool SaveBin(const Context& context, const Document& document, const Path& path, const BinVersion& version,
             const BinSelection& selection) {
  return SaveContainer(context, PlanContainer(document, selection), path, version);
}

bool SaveSatellites(const Context& context, const Document& document, size_t sdb,
                    const std::vector<size_t>& satellites, const Path& path, const BinVersion& version) {
  ContainerPlan plan;
  plan.compress_payload = document.compress_payload;
  const OpenSdb& source = document.sdbs.at(sdb);
  plan.sdbs.push_back({source.name, PlanStream(*source.database, kSubsetStream, satellites)});
  return SaveContainer(context, plan, path, version);
}

bool CheckBinSize(const Context& context, const Path& path) {
  std::error_code error;
  const bool opens = std::ifstream(path, std::ios::binary).is_open();
  const bool has_size = std::filesystem::is_regular_file(path, error);  // a device or pipe has none
  const uint64_t size = opens && has_size ? std::filesystem::file_size(path, error) : 0;
  if (!opens || error) {
    Tell(context.messages, Icon::kStop, "Error No: -11 \n Save as BIN File");
    return false;
  }
  if (size <= kMaximumBinSize) return true;
  Tell(context.messages, Icon::kStop, "File size exceeds the limit. Can not continue.");
  return false;
}

std::string BinInformation(const Context& context, const Document& document) {
  // The directory tells the sizes; the payload is built plain to read it, then packed for the total.
  ContainerPlan plan = PlanContainer(document, {});
  plan.compress_payload = false;
  const std::optional<Bytes> built = BuildContainer(context, plan, {});
  if (!built) return {};
  std::string text = "SDB     Comp\tLNB\tSat\tCar\tSer\tSize(KB/bytes)\n";
  const auto kilobytes = [](size_t bytes) { return static_cast<double>(bytes) / 1024; };
  for (size_t i = 0; i < document.sdbs.size(); ++i) {
    const OpenSdb& sdb = document.sdbs[i];
    const uint32_t size = EntryField(*built, i, 12);
    text += Format("\n%-8s", sdb.name.c_str());
    text += sdb.database->compressed ? "Yes\t" : "No \t";
    text += Format("%03d\t%03d\t%03d\t%03d\t%5.2f/%03d", static_cast<int>(sdb.database->lnb_count),
                   static_cast<int>(sdb.database->satellites.size()),
                   static_cast<int>(sdb.database->carriers.size()),
                   static_cast<int>(sdb.database->services.size()), kilobytes(size), static_cast<int>(size));
  }
  const uint32_t ubis = document.ubis.empty() ? 0 : EntryField(*built, document.sdbs.size(), 12);
  size_t total = built->size();
  if (document.compress_payload) {
    Bytes packed;
    if (!AppendCompressed(context, std::span(*built).subspan(kHeaderSize), packed)) return {};
    total = kHeaderSize + packed.size();
  }
  text += Format("\n\nUBI size\t\t: %5.2fKB/%dbytes\n", kilobytes(ubis), static_cast<int>(ubis));
  text += Format("Total bin size \t: %5.2fKB/%dbytes\n", kilobytes(total), static_cast<int>(total));
  text += document.compress_payload ? "(Compressed)" : "(Uncompressed)";
  return Utf8FromLatin(text);
}

}  // namespace vexa
