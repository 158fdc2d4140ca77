#include <algorithm>
#include <functional>

#include "core/bin_file.h"
#include "core/bytes.h"
#include "core/field_texts.h"
#include "core/match.h"
#include "core/zlib_com.h"
#include "platform/text.h"

namespace vexa {

namespace {

constexpr size_t kPieceSize = size_t{64} << 10;  // of a large file, as it is handed on
constexpr uint16_t kFullStream = 6;
constexpr uint16_t kSubsetStream = 5;  // no favourite groups
constexpr uint16_t kMark = 0xFFFF;
constexpr uint16_t kUbiMark = 0x00FF;

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

// Entries of two bytes, with the filler behind an odd number of them.
size_t Even(size_t count) {
  return count + count % 2;
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

// The exact size of the stream in bytes.
size_t StreamSize(const StreamPlan& plan) {
  size_t size = kBinHeaderSize + 5 * kBinBlockHeaderSize + kMaximumLnbs * sizeof(LnbRecord) +
                kMaximumSatellites * sizeof(SatelliteRecord) + plan.carriers * sizeof(CarrierRecord) +
                plan.services * sizeof(ServiceRecord) + 2 * Even(plan.services);
  if (plan.stream_version != kFullStream) return size;
  size += kBinBlockHeaderSize;
  for (const FavouriteGroup& group : plan.database->favourites)
    size += sizeof(FavouriteRecord) + 2 * Even(group.tv.size() + group.radio.size());
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
    SetName(filler.name, EmptySlotName(i));
    out.Write(filler);
  }
}

// Called within a large block; it may take what was written so far out of the writer.
using Flush = std::function<void()>;

void WriteCarriers(ByteWriter& out, const StreamPlan& plan, const Flush& flush) {
  WriteBlockHeader(out, "Carrier", sizeof(CarrierRecord), plan.carriers);
  RecordWriter<CarrierRecord> records(out);
  size_t services = 0;
  for (const Carrier* carrier : plan.database->carriers) {
    if (!Takes(plan, *carrier)) continue;
    CarrierRecord& record = records.Next();
    record = carrier->record;
    record.lnb_index = carrier->satellite->record.lnb_index;
    record.first_service = static_cast<uint16_t>(services);
    record.service_count = static_cast<uint16_t>(carrier->services.size());
    record.satellite_index = static_cast<uint32_t>(plan.places[record.satellite_index]) & 0x3FF;
    services += carrier->services.size();
    flush();
  }
  records.End();
}

// The result says where each service stands in the block.
Places<Service> WriteServices(ByteWriter& out, const StreamPlan& plan, const Flush& flush) {
  WriteBlockHeader(out, "Service", sizeof(ServiceRecord), plan.services);
  Places<Service> places(plan.database->service_pool);
  RecordWriter<ServiceRecord> records(out);
  size_t carriers = 0, services = 0;
  for (const Carrier* carrier : plan.database->carriers) {
    if (!Takes(plan, *carrier)) continue;
    for (const Service* service : carrier->services) {
      places.Set(*service, services++);
      ServiceRecord& record = records.Next();
      record = service->record;
      record.carrier_index = static_cast<uint16_t>(carriers);
    }
    flush();
    ++carriers;
  }
  records.End();
  return places;
}

void WriteServiceOrder(ByteWriter& out, const StreamPlan& plan, const Places<Service>& places) {
  WriteBlockHeader(out, "OSL", 2, plan.services);
  // Looking up every service's carrier costs more than writing the list.
  const bool all = plan.services == plan.database->services.size();
  for (const Service* service : plan.database->service_order) {
    if (all || Takes(plan, *service->carrier)) out.U16(places.Of(*service));
  }
  if (plan.services % 2 != 0) out.U16(kMark);
}

void WriteFavourites(ByteWriter& out, const StaticDatabase& database, const Places<Service>& places) {
  WriteBlockHeader(out, "FGLblk", 0, kFavouriteGroups);
  for (const FavouriteGroup& group : database.favourites) {
    FavouriteRecord record = group.record;
    record.tv_count = group.tv.size() & 0xFFF;
    record.radio_count = group.radio.size() & 0xFFF;
    out.Write(record);
    for (const Service* service : group.tv) out.U16(places.Of(*service));
    for (const Service* service : group.radio) out.U16(places.Of(*service));
    if ((group.tv.size() + group.radio.size()) % 2 != 0) out.U16(kMark);
  }
}

void WriteStream(
    ByteWriter& out, const StreamPlan& plan, const BinVersion& version, const DefaultRecords& defaults,
    const Flush& flush = [] {}) {
  WriteStreamHeader(out, plan, version);
  WriteLnbs(out, *plan.database, defaults);
  WriteSatellites(out, plan, defaults);
  WriteCarriers(out, plan, flush);
  const Places<Service> places = WriteServices(out, plan, flush);
  WriteServiceOrder(out, plan, places);
  if (plan.stream_version == kFullStream) WriteFavourites(out, *plan.database, places);
}

void WriteUbiStream(ByteWriter& out, const std::vector<const OpenUbi*>& ubis) {
  WriteBlockHeader(out, "UserBox", sizeof(UserBoxInfo), ubis.size(), kUbiMark);
  for (const OpenUbi* ubi : ubis) {
    out.Text(std::string_view(ubi->name).substr(0, 7), 8);
    out.Write(ubi->record);
  }
}

// One stream of a container and its directory entry.
struct ContainerPart {
  std::string name;
  bool compressed = false;
  std::optional<StreamPlan> sdb;  // none: the user box records
  size_t size = 0, stored = 0;
  Bytes packed;  // the stream, when it is stored compressed
};

struct ContainerPlan {
  std::vector<ContainerPart> parts;
  std::vector<const OpenUbi*> ubis;
  bool compress_payload = false;
  const CodePage* names = &Windows1252();  // in which messages name the SDBs

  size_t SdbCount() const { return parts.size() - (ubis.empty() ? 0 : 1); }
  // Of everything behind the header, as it is before the payload is compressed.
  size_t PayloadSize() const {
    size_t size = kBinEntrySize * parts.size();
    for (const ContainerPart& part : parts) size += part.stored;
    return size;
  }
};

void WritePart(
    ByteWriter& out, const ContainerPlan& plan, const ContainerPart& part, const BinVersion& version,
    const DefaultRecords& defaults, const Flush& flush = [] {}) {
  if (part.sdb) {
    WriteStream(out, *part.sdb, version, defaults, flush);
  } else {
    WriteUbiStream(out, plan.ubis);
  }
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

// Finds the size of every stream, and compresses those that are stored so.
bool PrepareParts(const Context& context, ContainerPlan& plan, const BinVersion& version) {
  for (ContainerPart& part : plan.parts) {
    part.size = part.stored =
        part.sdb ? StreamSize(*part.sdb) : kBinBlockHeaderSize + (8 + sizeof(UserBoxInfo)) * plan.ubis.size();
    if (!part.compressed) continue;
    ByteWriter stream;
    stream.bytes().reserve(part.size);
    WritePart(stream, plan, part, version, DefaultsOf(context));
    if (!AppendCompressed(context, stream.bytes(), part.packed)) return false;
    part.stored = part.packed.size();
  }
  return true;
}

void WriteContainerHeader(ByteWriter& out, const ContainerPlan& plan, const BinVersion& version,
                          size_t stored) {
  out.Text("Qz", 2);
  out.U8(version.major);
  out.U8(version.minor);
  out.U8(0x10);
  out.U8(0);
  out.U8(0);
  out.U8(0xFF);
  WriteInitials(out, version);
  out.U8(plan.compress_payload ? 1 : 0);
  out.U32(static_cast<uint32_t>(plan.PayloadSize()));
  out.U32(static_cast<uint32_t>(stored));
  out.U16(static_cast<uint32_t>(plan.SdbCount()));
  out.U16(static_cast<uint32_t>(plan.ubis.size()));
}

void WriteDirectory(ByteWriter& out, const ContainerPlan& plan) {
  size_t offset = kBinHeaderSize + kBinEntrySize * plan.parts.size();
  for (const ContainerPart& part : plan.parts) {
    out.Text(std::string_view(part.name).substr(0, 6), 7);
    out.U8(part.compressed ? 1 : 0);
    out.U32(static_cast<uint32_t>(part.size));
    out.U32(static_cast<uint32_t>(part.stored));
    out.U32(static_cast<uint32_t>(offset));
    out.U16(part.sdb ? kMaximumLnbs : 0);
    out.U16(part.sdb ? kMaximumSatellites : 0);
    out.U16(part.sdb ? static_cast<uint32_t>(part.sdb->carriers) : 0);
    out.U16(part.sdb ? static_cast<uint32_t>(part.sdb->services) : 0);
    offset += part.stored;
  }
}

// Directory and streams behind what `out` holds, handed to `write` in pieces, so that a large file and the
// database never stand in memory together. False as soon as `write` says so.
bool WritePayload(const Context& context, const ContainerPlan& plan, const BinVersion& version,
                  ByteWriter& out, const PieceWriter& write) {
  bool going = true;
  const auto flush = [&] {
    if (out.size() < kPieceSize) return;
    going = going && write(out.bytes());
    out.bytes().clear();
  };
  WriteDirectory(out, plan);
  for (const ContainerPart& part : plan.parts) {
    if (part.compressed) {
      out.Append(part.packed);
    } else {
      WritePart(out, plan, part, version, DefaultsOf(context), flush);
    }
  }
  return going && write(out.bytes());
}

// The prepared container with its payload compressed. Nothing after a message.
std::optional<Bytes> PackContainer(const Context& context, const ContainerPlan& plan,
                                   const BinVersion& version) {
  Bytes payload, packed;
  payload.reserve(plan.PayloadSize());
  ByteWriter out;
  WritePayload(context, plan, version, out, AppendingTo(payload));
  if (!AppendCompressed(context, payload, packed)) return std::nullopt;
  out.bytes().clear();
  WriteContainerHeader(out, plan, version, packed.size());
  out.Append(packed);
  return std::move(out.bytes());
}

bool Selected(uint32_t mask, size_t number) {
  return number < 32 && (mask >> number & 1) != 0;
}

void PlanSdb(ContainerPlan& plan, const OpenSdb& sdb, StreamPlan stream) {
  plan.parts.push_back({sdb.name, sdb.database->compressed, std::move(stream), 0, 0, {}});
}

ContainerPlan PlanContainer(const Document& document, const BinSelection& selection) {
  ContainerPlan plan;
  plan.compress_payload = document.compress_payload;
  plan.names = &NamesPage(document);
  for (size_t i = 0; i < document.sdbs.size(); ++i) {
    if (Selected(selection.sdbs, i))
      PlanSdb(plan, document.sdbs[i], PlanWholeStream(*document.sdbs[i].database));
  }
  for (size_t i = 0; i < document.ubis.size(); ++i) {
    if (Selected(selection.ubis, i)) plan.ubis.push_back(&document.ubis[i]);
  }
  if (!plan.ubis.empty()) plan.parts.push_back({"UBIblk", document.compress_ubis, std::nullopt, 0, 0, {}});
  return plan;
}

// Whether there is an SDB, and each has an LNB and a satellite, without which no receiver takes it. False
// after a message.
bool HasLnbAndSatellite(const Context& context, const ContainerPlan& plan) {
  const auto lacking = std::find_if(plan.parts.begin(), plan.parts.end(), [](const ContainerPart& part) {
    return part.sdb && (part.sdb->database->lnb_count == 0 || part.sdb->satellites.empty());
  });
  if (plan.SdbCount() > 0 && lacking == plan.parts.end()) return true;
  std::string detail = "No SDB is chosen.";
  if (lacking != plan.parts.end()) {
    detail = Utf8FromPage(*plan.names, lacking->name) + " has no " +
             (lacking->sdb->database->lnb_count == 0 ? "LNB." : "satellite.");
  }
  TellWhy(context.messages, Icon::kStop, detail, "Add atleast one LNB and Satellite to save as a bin");
  return false;
}

// A container that is about to be written: packed whole where it is compressed, else made piece by piece.
struct ReadyContainer {
  ContainerPlan plan;
  std::optional<Bytes> packed;

  uint64_t Size() const { return packed ? packed->size() : kBinHeaderSize + plan.PayloadSize(); }
};

// False after a message.
bool MakeReady(const Context& context, ReadyContainer& ready, const BinVersion& version) {
  if (!PrepareParts(context, ready.plan, version)) return false;
  if (ready.plan.compress_payload) ready.packed = PackContainer(context, ready.plan, version);
  return ready.packed || !ready.plan.compress_payload;
}

bool WriteReady(const Context& context, const ReadyContainer& ready, const BinVersion& version,
                const PieceWriter& write) {
  if (ready.packed) return write(*ready.packed);
  ByteWriter out;
  WriteContainerHeader(out, ready.plan, version, ready.plan.PayloadSize());
  return WritePayload(context, ready.plan, version, out, write);
}

std::optional<uint64_t> SaveContainer(const Context& context, ContainerPlan plan, const Path& path,
                                      const BinVersion& version) {
  ReadyContainer ready{std::move(plan), {}};
  if (!HasLnbAndSatellite(context, ready.plan) || !MakeReady(context, ready, version)) return std::nullopt;
  const auto produce = [&](const PieceWriter& write) { return WriteReady(context, ready, version, write); };
  const WriteResult written = WriteWholeFileBy(path, produce, *context.files);
  if (written == WriteResult::kDone) return ready.Size();
  TellUnsaved(context.messages, path, written);
  return std::nullopt;
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

bool MayBeSaved(const Context& context, const Document& document, const BinSelection& selection) {
  return HasLnbAndSatellite(context, PlanContainer(document, selection));
}

std::optional<Bytes> BuildBin(const Context& context, const Document& document, const BinVersion& version,
                              const BinSelection& selection) {
  ReadyContainer ready{PlanContainer(document, selection), {}};
  if (!MakeReady(context, ready, version)) return std::nullopt;
  if (ready.packed) return std::move(ready.packed);
  Bytes file;
  file.reserve(static_cast<size_t>(ready.Size()));
  WriteReady(context, ready, version, AppendingTo(file));
  return file;
}

std::optional<uint64_t> SaveBin(const Context& context, const Document& document, const Path& path,
                                const BinVersion& version, const BinSelection& selection) {
  return SaveContainer(context, PlanContainer(document, selection), path, version);
}

std::optional<uint64_t> SaveSatellites(const Context& context, const Document& document, size_t sdb,
                                       const std::vector<size_t>& satellites, const Path& path,
                                       const BinVersion& version) {
  ContainerPlan plan;
  plan.compress_payload = document.compress_payload;
  const OpenSdb& source = document.sdbs.at(sdb);
  plan.names = &NamesPage(document);
  PlanSdb(plan, source, PlanStream(*source.database, kSubsetStream, satellites));
  return SaveContainer(context, std::move(plan), path, version);
}

void TellUnsaved(const Messages& messages, const Path& path, const WriteResult& written) {
  const std::string why = WriteReason(path, written.error);
  if (written == WriteResult::kCannotCreate) {
    TellWhy(messages, Icon::kStop, why, "Could not creat file \"%s\".", Utf8FromPath(path).c_str());
  } else {
    TellWhy(messages, Icon::kStop, why, "Error No: -11 \n Save as BIN File");
  }
}

bool CheckBinSize(const Context& context, const Path& path, uint64_t size) {
  if (size <= kMaximumBinSize) return true;
  TellWhy(context.messages, Icon::kStop,
          Format("%s: %llu bytes, %llu are allowed. Leave out SDBs or records, or compress them.",
                 Utf8FromPath(path).c_str(), static_cast<unsigned long long>(size),
                 static_cast<unsigned long long>(kMaximumBinSize)),
          "File size exceeds the limit. Can not continue.");
  return false;
}

std::optional<BinSizes> SizesWhenSaved(const Context& context, const Document& document) {
  ContainerPlan plan = PlanContainer(document, {});
  if (!PrepareParts(context, plan, {})) return std::nullopt;
  BinSizes sizes;
  for (size_t i = 0; i < document.sdbs.size(); ++i) sizes.sdbs.push_back(plan.parts[i].stored);
  sizes.ubis = plan.ubis.empty() ? 0 : plan.parts.back().stored;
  sizes.total = kBinHeaderSize + plan.PayloadSize();
  if (!plan.compress_payload) return sizes;
  const std::optional<Bytes> packed = PackContainer(context, plan, {});
  if (!packed) return std::nullopt;
  sizes.total = packed->size();
  return sizes;
}

std::string BinInformation(const Context& context, const Document& document) {
  const std::optional<BinSizes> sizes = SizesWhenSaved(context, document);
  if (!sizes) return {};
  std::string text = "SDB     Comp\tLNB\tSat\tCar\tSer\tSize(KB/bytes)\n";
  const auto kilobytes = [](size_t bytes) { return static_cast<double>(bytes) / 1024; };
  for (size_t i = 0; i < document.sdbs.size(); ++i) {
    const OpenSdb& sdb = document.sdbs[i];
    const size_t size = sizes->sdbs[i];
    text += Format("\n%-8s", sdb.name.c_str());
    text += sdb.database->compressed ? "Yes\t" : "No \t";
    text += Format("%03d\t%03d\t%03d\t%03d\t%5.2f/%03d", static_cast<int>(sdb.database->lnb_count),
                   static_cast<int>(sdb.database->satellites.size()),
                   static_cast<int>(sdb.database->carriers.size()),
                   static_cast<int>(sdb.database->services.size()), kilobytes(size), static_cast<int>(size));
  }
  text +=
      Format("\n\nUBI size\t\t: %5.2fKB/%dbytes\n", kilobytes(sizes->ubis), static_cast<int>(sizes->ubis));
  text +=
      Format("Total bin size \t: %5.2fKB/%dbytes\n", kilobytes(sizes->total), static_cast<int>(sizes->total));
  text += document.compress_payload ? "(Compressed)" : "(Uncompressed)";
  return NameText(document, text);
}

}  // namespace vexa
