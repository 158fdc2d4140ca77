#include <algorithm>

#include "core/bin_file.h"
#include "core/bytes.h"
#include "core/zlib_com.h"
#include "platform/file_reader.h"

namespace vexa {

namespace {

constexpr size_t kUbiNameSize = 8;
constexpr size_t kOldUbiSize = 24;
// deflate makes at most 1032 bytes out of one.
constexpr uint64_t kInflateRatio = 1040;

constexpr const char *kNoHeader = "It is shorter than its header",
                     *kNoDirectory = "The directory of SDBs is empty or cut short",
                     *kPackedSizes = "The sizes of its compressed data do not go with the file's";
constexpr const char* kLessRecords = "Make a file with fewer records in the program that it comes from.";
constexpr const char* kNoDatabase = "It is no database file: choose another one.";

// `why`, a sentence without its full stop, is told below the fixed text, with what to do.
bool Fail(const Context& context, const char* why) {
  TellWhy(context.messages, Icon::kStop, Format("%s. The file is damaged: use another copy of it.", why),
          "Invalid or unknown file format.");
  return false;
}

std::string TextOf(std::span<const uint8_t> field) {
  const auto end = std::find(field.begin(), field.end(), uint8_t{0});
  return {field.begin(), end};
}

struct BlockHeader {
  std::string name;
  uint16_t record_size = 0, count = 0;
};

// What the last blocks of a stream name by its place in the service block. It is resolved when the bytes of
// the file are gone, so that they and the links never stand in memory together.
struct References {
  struct Group {
    std::vector<uint16_t> tv, radio;
  };
  std::vector<uint16_t> order;  // empty: the services' own order
  std::array<Group, kFavouriteGroups> favourites;
};

// False, and the place unchanged, when the bytes do not suffice.
bool ReadBlockHeader(ByteReader& reader, BlockHeader& header) {
  if (reader.remaining() < kBinBlockHeaderSize) return false;
  header.name = TextOf(reader.Take(8));
  header.record_size = reader.U16();
  reader.Skip(2);
  header.count = reader.U16();
  reader.Skip(2);
  return true;
}

// As above, and only when the block here has this name.
bool ReadNamedBlockHeader(ByteReader& reader, const char* name, BlockHeader& header) {
  const size_t start = reader.position();
  if (ReadBlockHeader(reader, header) && header.name == name) return true;
  reader.Seek(start);
  return false;
}

// The two bytes after an odd count of 16-bit entries; built lists leave them out at the end.
void SkipPad(ByteReader& reader, size_t count) {
  if (count % 2 != 0) reader.Skip(std::min<size_t>(2, reader.remaining()));
}

bool ReadLnbs(const Context& context, ByteReader& reader, StaticDatabase& database) {
  BlockHeader header;
  if (!ReadBlockHeader(reader, header)) return Fail(context, "The LNBs are cut short");
  if (header.count > kMaximumLnbs) {
    TellWhy(context.messages, Icon::kStop, Format("%u LNBs. %s", unsigned{header.count}, kLessRecords),
            "LNB records exceeds the limit 16. Can not continue.");
    return false;
  }
  database.lnb_count = header.count;
  for (size_t i = 0; i < header.count; ++i) reader.Read(database.lnbs[i]);
  return reader.ok() || Fail(context, "The LNBs are cut short");
}

bool ReadSatellites(const Context& context, ByteReader& reader, StaticDatabase& database) {
  BlockHeader header;
  if (!ReadBlockHeader(reader, header)) return Fail(context, "The satellites are cut short");
  if (header.count > kMaximumSatellites) {
    TellWhy(context.messages, Icon::kStop,
            Format("%u satellites, at most %u. %s", unsigned{header.count}, kMaximumSatellites, kLessRecords),
            "Satellite records exceed the limit. Can not add.");
    return false;
  }
  for (unsigned i = 0; i < header.count; ++i) {
    Satellite* satellite = database.satellite_pool.Take();
    if (!reader.Read(satellite->record)) return Fail(context, "The satellites are cut short");
    if (satellite->record.lnb_index >= kMaximumLnbs) satellite->record.lnb_index = 0;
    if (satellite->record.name[0] == 0) SetName(satellite->record.name, Format("Satellite%u", i + 1));
    database.satellites.push_back(satellite);
  }
  return true;
}

bool ReadCarriers(const Context& context, ByteReader& reader, StaticDatabase& database) {
  BlockHeader header;
  if (!ReadBlockHeader(reader, header)) return Fail(context, "The carriers are cut short");
  ByteReader records(reader.Take(header.count * sizeof(CarrierRecord)));
  if (!reader.ok()) return Fail(context, "The carriers are cut short");
  database.carrier_pool.Reserve(header.count);
  database.carriers.reserve(header.count);
  std::array<uint16_t, kMaximumSatellites> counts{};
  for (size_t i = 0; i < header.count; ++i) {
    Carrier* carrier = database.carrier_pool.Take();
    records.Read(carrier->record);
    const size_t satellite = carrier->record.satellite_index;
    if (satellite >= database.satellites.size())
      return Fail(context, "A carrier names a satellite that is not there");
    carrier->satellite = database.satellites[satellite];
    ++counts[satellite];
    database.carriers.push_back(carrier);
  }
  for (size_t i = 0; i < database.satellites.size(); ++i)
    database.satellites[i]->record.carrier_count = counts[i];
  return true;
}

bool ReadServices(const Context& context, ByteReader& reader, StaticDatabase& database) {
  BlockHeader header;
  if (!ReadBlockHeader(reader, header)) return Fail(context, "The services are cut short");
  ByteReader records(reader.Take(header.count * sizeof(ServiceRecord)));
  size_t counted = 0;
  for (const Carrier* carrier : database.carriers) counted += carrier->record.service_count;
  if (!reader.ok()) return Fail(context, "The services are cut short");
  if (counted != header.count) return Fail(context, "The carriers count other services than there are");
  database.service_pool.Reserve(header.count);
  database.services.reserve(header.count);
  for (size_t i = 0; i < header.count; ++i) {
    database.services.push_back(database.service_pool.Take());
    records.Read(database.services.back()->record);
  }
  return true;
}

// A list that is missing, cut short or no permutation becomes the services' own order.
void ReadServiceOrder(ByteReader& reader, size_t services, References& references) {
  BlockHeader header;
  if (!ReadNamedBlockHeader(reader, "OSL", header)) return;
  const size_t there = std::min<size_t>(reader.remaining() / 2, header.count);
  std::vector<bool> seen(services);
  bool permutation = there == header.count && there == services;
  references.order.reserve(there);
  for (size_t i = 0; i < there; ++i) {
    const uint16_t index = reader.U16();
    permutation = permutation && index < services && !seen[index];
    if (!permutation) continue;
    seen[index] = true;
    references.order.push_back(index);
  }
  if (!permutation) references.order.clear();
  SkipPad(reader, header.count);
}

// An entry that names no service is dropped.
void ReadEntries(ByteReader& reader, size_t count, size_t services, std::vector<uint16_t>& list) {
  list.reserve(count);
  for (size_t i = 0; i < count; ++i) {
    const uint16_t index = reader.U16();
    if (index < services) list.push_back(index);
  }
}

bool ReadFavourites(const Context& context, ByteReader& reader, StaticDatabase& database,
                    References& references) {
  BlockHeader header;
  if (!ReadNamedBlockHeader(reader, "FGLblk", header)) return true;
  for (size_t i = 0; i < kFavouriteGroups; ++i) {
    FavouriteRecord& record = database.favourites[i].record;
    reader.Read(record);
    const size_t tv = record.tv_count;
    const size_t radio = record.radio_count;
    if (!reader.ok() || tv > kMaximumTvEntries || radio > kMaximumRadioEntries ||
        reader.remaining() < 2 * (tv + radio))
      return Fail(context, "The favourite groups are cut short, or hold more than they may");
    ReadEntries(reader, tv, database.services.size(), references.favourites[i].tv);
    ReadEntries(reader, radio, database.services.size(), references.favourites[i].radio);
    SkipPad(reader, tv + radio);
  }
  return true;
}

bool CheckMagic(const Context& context, std::span<const uint8_t> stream) {
  if (stream[0] == 'Q' && stream[1] == 'z') return true;
  TellWhy(context.messages, Icon::kStop, kNoDatabase, "StaticDB file magic ID mismatch. Input a valid SDB.");
  return false;
}

// The records of a stream, without the links between them. False after a message.
bool ReadRecords(const Context& context, std::span<const uint8_t> stream, StaticDatabase& database,
                 References& references, size_t& used) {
  ByteReader reader(stream);
  const auto header = reader.Take(kBinHeaderSize);
  if (header.empty()) return Fail(context, kNoHeader);
  if (!CheckMagic(context, header)) return false;
  const int version = header[6] | header[7] << 8;
  if (!ReadLnbs(context, reader, database) || !ReadSatellites(context, reader, database) ||
      !ReadCarriers(context, reader, database) || !ReadServices(context, reader, database))
    return false;
  ReadServiceOrder(reader, database.services.size(), references);
  if (version == 6 && !ReadFavourites(context, reader, database, references)) return false;
  used = reader.position();
  return true;
}

std::vector<Service*> Resolve(const std::vector<uint16_t>& places, const StaticDatabase& database) {
  std::vector<Service*> services;
  services.reserve(places.size());
  for (const uint16_t place : places) services.push_back(database.services[place]);
  return services;
}

// Hands the services out by the carriers' counts; carrier indices in the service records mean nothing.
void Link(StaticDatabase& database, const References& references) {
  for (Satellite* satellite : database.satellites)
    satellite->carriers.reserve(satellite->record.carrier_count);
  auto next = database.services.begin();
  for (Carrier* carrier : database.carriers) {
    const auto position = static_cast<uint16_t>(carrier->satellite->carriers.size());
    carrier->satellite->carriers.push_back(carrier);
    carrier->services.assign(next, next + carrier->record.service_count);
    next += carrier->record.service_count;
    for (Service* service : carrier->services) {
      service->carrier = carrier;
      service->carrier_position = position;
    }
  }
  database.service_order = references.order.empty() ? database.services : Resolve(references.order, database);
  for (size_t i = 0; i < kFavouriteGroups; ++i) {
    database.favourites[i].tv = Resolve(references.favourites[i].tv, database);
    database.favourites[i].radio = Resolve(references.favourites[i].radio, database);
  }
}

// A document that is being filled.
struct Opening {
  Document& document;
  std::vector<std::pair<StaticDatabase*, References>> unlinked;
};

void LinkAll(const Opening& opening) {
  for (const auto& [database, references] : opening.unlinked) Link(*database, references);
}

// A directory entry.
struct StreamEntry {
  std::string name;
  bool compressed = false;
  uint32_t size = 0, stored = 0, offset = 0;
};

bool ReadEntry(const Context& context, std::span<const uint8_t> layout, size_t number, StreamEntry& entry) {
  ByteReader reader(layout);
  reader.Seek(kBinHeaderSize + kBinEntrySize * number);
  entry.name = TextOf(reader.Take(7));
  entry.compressed = reader.U8() != 0;
  entry.size = reader.U32();
  entry.stored = reader.U32();
  entry.offset = reader.U32();
  reader.Skip(8);
  return (reader.ok() && entry.offset <= layout.size()) ||
         Fail(context, "An entry of the directory is cut short, or points behind the end");
}

// Whether the two sizes of compressed data go with the bytes that are there.
bool FitsPacked(uint64_t stored, uint64_t size, uint64_t there) {
  return stored <= there && stored <= kMaximumStreamSize && size <= kMaximumStreamSize;
}

// Inflates the first `stored` bytes of `source` behind what `result` holds; they must give `size` bytes.
bool Inflate(const Context& context, std::span<const uint8_t> source, uint64_t stored, uint64_t size,
             Bytes& result) {
  if (!FitsPacked(stored, size, source.size())) return Fail(context, kPackedSizes);
  const size_t before = result.size();
  // More than the data can give is a lie of the header, found by the length below.
  const auto room = static_cast<size_t>(std::min(size, stored * kInflateRatio + 64));
  result.resize(before + room);
  uint64_t length = 0;
  const auto packed = source.first(static_cast<size_t>(stored));
  if (DecompressBuffer(context.messages, packed, std::span(result).subspan(before), length, nullptr) != 0)
    return false;
  return length == size || Fail(context, "Its compressed data has another length than it states");
}

// The stream of an entry: the bytes from its offset on, or `scratch` with the stream inflated.
bool StreamOf(const Context& context, std::span<const uint8_t> layout, const StreamEntry& entry,
              Bytes& scratch, std::span<const uint8_t>& stream) {
  stream = layout.subspan(entry.offset);
  if (!entry.compressed) return true;
  if (!Inflate(context, stream, entry.stored, entry.size, scratch)) return false;
  stream = scratch;
  return true;
}

// Takes the place of an SDB in the document only when the whole stream was good.
bool AddSdb(const Context& context, std::span<const uint8_t> stream, std::string name, bool compressed,
            Opening& opening, size_t& used) {
  Document& document = opening.document;
  auto database = std::make_unique<StaticDatabase>(DefaultsOf(context));
  References references;
  if (!ReadRecords(context, stream, *database, references, used)) return false;
  database->compressed = compressed;
  opening.unlinked.emplace_back(database.get(), std::move(references));
  if (name.empty()) name = Format("SDB%zu", document.sdbs.size() + 1);
  const int slot = ClaimSlot(document);
  document.sdbs.push_back({static_cast<uint32_t>(slot), std::move(name), std::move(database)});
  return true;
}

// False after the message of a record size that no receiver of this kind has.
bool CheckUbiSize(const Context& context, size_t record_size) {
  if (record_size == kOldUbiSize || record_size == sizeof(UserBoxInfo)) return true;
  TellWhy(
      context.messages, Icon::kStop,
      Format(
          "Its user box records have %zu bytes; %zu or %zu can be read. It is of another kind of receiver.",
          record_size, kOldUbiSize, sizeof(UserBoxInfo)),
      "Project type mismatch!!. Can not open user box information.");
  return false;
}

void TellOldUbi(const Context& context, size_t record_size) {
  if (record_size == kOldUbiSize)
    TellWhy(context.messages, Icon::kInformation, "Enter it in each user box record.",
            "Older version static binary!!. Does not contain parental lock code.");
}

void TellUbiLimit(const Context& context) {
  TellWhy(context.messages, Icon::kStop,
          "The user box records beyond it are left out. Delete some, and open the file again.",
          "Can't add USER BOX Information. It exceeds the limit %d.", static_cast<int>(kMaximumUbis));
}

void AddUbi(std::string name, std::span<const uint8_t> record, Document& document) {
  OpenUbi ubi;
  ubi.name = name.empty() ? Format("UBI%zu", document.ubis.size() + 1) : std::move(name);
  std::memcpy(&ubi.record, record.data(),
              record.size());  // the lock code of an old record stays 0
  document.ubis.push_back(std::move(ubi));
}

bool ReadUbiStream(const Context& context, std::span<const uint8_t> stream, size_t count,
                   Document& document) {
  ByteReader reader(stream);
  BlockHeader header;
  if (reader.remaining() < kBinBlockHeaderSize) return Fail(context, "The user box records are cut short");
  if (!ReadNamedBlockHeader(reader, "UserBox", header)) return true;
  if (!CheckUbiSize(context, header.record_size)) return false;
  if (reader.remaining() < count * (kUbiNameSize + header.record_size))
    return Fail(context, "The user box records are cut short");
  TellOldUbi(context, header.record_size);
  for (size_t i = 0; i < count; ++i) {
    if (document.ubis.size() >= kMaximumUbis) {
      TellUbiLimit(context);
      document.read_whole = false;
      break;
    }
    std::string name = TextOf(reader.Take(kUbiNameSize));
    AddUbi(std::move(name), reader.Take(header.record_size), document);
  }
  return true;
}

bool ReadUbis(const Context& context, std::span<const uint8_t> layout, size_t entry_number, size_t count,
              Document& document) {
  StreamEntry entry;
  Bytes scratch;
  std::span<const uint8_t> stream;
  if (!ReadEntry(context, layout, entry_number, entry) || !StreamOf(context, layout, entry, scratch, stream))
    return false;
  document.compress_ubis = entry.compressed;
  return ReadUbiStream(context, stream, count, document);
}

constexpr const char* kSdbsLeftOut =
    "The others are left out. Delete SDBs, or open the file in a new database.";

// Of a container's header, and the size of the layout that it starts.
bool HasDirectory(std::span<const uint8_t> header, uint64_t layout_size) {
  ByteReader reader(header);
  reader.Seek(20);
  const uint64_t sdbs = reader.U16();
  const bool ubis = reader.U16() != 0;
  return sdbs > 0 && layout_size >= kBinHeaderSize + kBinEntrySize * (sdbs + ubis);
}

bool ReadStreams(const Context& context, std::span<const uint8_t> layout, Opening& opening) {
  Document& document = opening.document;
  ByteReader reader(layout);
  reader.Seek(20);
  const size_t sdbs = reader.U16();
  const size_t ubis = reader.U16();
  if (!HasDirectory(layout, layout.size())) return Fail(context, kNoDirectory);
  size_t opened = 0;
  for (; opened < sdbs; ++opened) {
    StreamEntry entry;
    Bytes scratch;
    std::span<const uint8_t> stream;
    const Context part = About(context, Format("SDB %zu of %zu", opened + 1, sdbs));
    if (!ReadEntry(part, layout, opened, entry) || !StreamOf(part, layout, entry, scratch, stream))
      return false;
    if (document.sdbs.size() >= kMaximumSdbs) {
      TellWhy(context.messages, Icon::kInformation, kSdbsLeftOut,
              "Can not open more than %d SDBs (Opened %d of %d SDBs in the bin).",
              static_cast<int>(kMaximumSdbs), static_cast<int>(opened), static_cast<int>(sdbs));
      document.read_whole = false;
      break;
    }
    size_t used = 0;
    if (!AddSdb(part, stream, entry.name, entry.compressed, opening, used)) return false;
  }
  if (ubis == 0 || opened == 0) return true;
  return ReadUbis(About(context, "user box records"), layout, sdbs, ubis, document);
}

bool OpenContainer(const Context& context, std::span<const uint8_t> file, Opening& opening) {
  ByteReader reader(file);
  reader.Seek(11);
  if (reader.U8() == 0) {
    opening.document.compress_payload = false;
    return ReadStreams(context, file, opening);
  }
  const uint32_t size = reader.U32();
  const uint32_t stored = reader.U32();
  const auto header = file.first(kBinHeaderSize);
  Bytes layout(header.begin(), header.end());
  if (!Inflate(context, file.subspan(kBinHeaderSize), stored, size, layout)) return false;
  opening.document.compress_payload = true;
  return ReadStreams(context, layout, opening);
}

// One SDB, and behind it at most one UBI without a name.
bool OpenBareStream(const Context& context, std::span<const uint8_t> file, Opening& opening) {
  Document& document = opening.document;
  if (document.sdbs.size() >= kMaximumSdbs) {
    TellWhy(context.messages, Icon::kInformation, kSdbsLeftOut,
            "Can not open more than %d SDBs (opened 0 of 1 SDBs in the bin).",
            static_cast<int>(kMaximumSdbs));
    document.read_whole = false;
    return true;
  }
  size_t used = 0;
  if (!AddSdb(context, file, {}, false, opening, used)) return false;
  ByteReader reader(file);
  reader.Seek(used);
  BlockHeader header;
  if (!ReadNamedBlockHeader(reader, "UserBox", header)) return true;
  if (document.ubis.size() >= kMaximumUbis) {
    TellUbiLimit(context);
    return false;
  }
  if (!CheckUbiSize(context, header.record_size)) return false;
  if (reader.remaining() < header.record_size) return Fail(context, "The user box record is cut short");
  TellOldUbi(context, header.record_size);
  AddUbi({}, reader.Take(header.record_size), document);
  return true;
}

bool IsContainer(std::span<const uint8_t> file) {
  return file[4] == 0x10;
}

// What the first bytes and the size of a file say against it. False after a message.
bool JudgeHead(const Context& context, std::span<const uint8_t> head, uint64_t size,
               const Document& document) {
  if (head.size() < kBinHeaderSize) return Fail(context, kNoHeader);
  if (!IsContainer(head)) return document.sdbs.size() >= kMaximumSdbs || CheckMagic(context, head);
  if (head[5] != 0) {
    TellWhy(
        context.messages, Icon::kStop,
        Format("Its format has the number %u; only 0 can be read. Save it in that one in the program that "
               "it comes from.",
               unsigned{head[5]}),
        "Unsupport file version. can not open!.");
    return false;
  }
  ByteReader reader(head);
  reader.Seek(11);
  if (reader.U8() == 0) return HasDirectory(head, size) || Fail(context, kNoDirectory);
  const uint32_t unpacked = reader.U32(), stored = reader.U32();
  return FitsPacked(stored, unpacked, size - kBinHeaderSize) || Fail(context, kPackedSizes);
}

bool OpenAny(const Context& context, std::span<const uint8_t> file, Opening& opening) {
  const auto head = file.first(std::min(file.size(), kBinHeaderSize));
  const bool opened =
      JudgeHead(context, head, file.size(), opening.document) &&
      (IsContainer(head) ? OpenContainer(context, file, opening) : OpenBareStream(context, file, opening));
  if (!opened) opening.document.read_whole = false;
  return opened;
}

// As much of the file as an open looks at, once its first bytes were found good. Nothing after a message.
std::optional<Bytes> ReadBin(const Context& context, const Path& path, const Document& document) {
  std::optional<Bytes> file;
  std::error_code why;
  if (std::optional<FileReader> reader = OpenFileReader(path)) {
    file.emplace(static_cast<size_t>(std::min<uint64_t>(reader->size, kBinHeaderSize)));
    bool good = reader->Read(0, *file);
    const Context about = About(context, Utf8FromPath(path));
    if (good && !JudgeHead(about, *file, reader->size, document)) return std::nullopt;
    const size_t head = file->size();
    if (good) file->resize(static_cast<size_t>(std::min(reader->size, kBinHeaderSize + kMaximumStreamSize)));
    good = good && reader->Read(head, std::span(*file).subspan(head));
    why = reader->error;
    if (!good) file.reset();
  } else {  // a pipe, perhaps
    const ReadResult read = ReadWholeFile(path, file.emplace());
    why = read.error;
    if (read != ReadResult::kDone) file.reset();
  }
  if (!file)
    TellWhy(context.messages, Icon::kStop, ReadReason(path, why), "Error No: -3 \n File Access Error!!!");
  return file;
}

}  // namespace

const DefaultRecords& DefaultsOf(const Context& context) {
  return context.defaults ? *context.defaults : FactoryDefaults();
}

bool ReadSdbStream(const Context& context, std::span<const uint8_t> stream, StaticDatabase& database,
                   size_t& used) {
  References references;
  if (!ReadRecords(context, stream, database, references, used)) return false;
  Link(database, references);
  return true;
}

bool OpenBinBytes(const Context& context, std::span<const uint8_t> file, Document& document) {
  Opening opening{document, {}};
  const bool opened = OpenAny(context, file, opening);
  LinkAll(opening);
  return opened;
}

bool OpenBin(const Context& context, const Path& path, Document& document) {
  Opening opening{document, {}};
  std::optional<Bytes> file = ReadBin(context, path, document);
  if (!file) {
    document.read_whole = false;
    return false;
  }
  const bool opened = OpenAny(About(context, Utf8FromPath(path)), *file, opening);
  file.reset();
  LinkAll(opening);
  return opened;
}

}  // namespace vexa
