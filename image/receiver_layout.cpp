#include "image/receiver_layout.h"

#include <algorithm>
#include <cstring>

#include "core/match.h"
#include "core/messages.h"

namespace vexa {

namespace {

constexpr size_t kMaximumWords = 9;

// `width` bits of a record's word that stand elsewhere in the entry; inverted ones are stored as their
// complement. In this order: word and lowest bit in the record, word and lowest bit in the entry, width.
struct Move {
  uint8_t record_word, record_bit, entry_word, entry_bit, width;
  bool inverted = false;
};

constexpr uint32_t MaskOf(int bit, int width) {
  return static_cast<uint32_t>(((uint64_t{1} << width) - 1) << bit);
}

// Words of the entry that are set whatever the record holds.
struct Layout {
  std::span<const Move> moves;
  std::array<uint32_t, 4> ones;
};

constexpr Move kLnbMoves[] = {
    {0, 0, 0, 0, 30},   // frequencies, type
    {0, 30, 1, 27, 1},  // power
    {0, 31, 1, 28, 1},  // kept bits
    {1, 2, 1, 17, 3},   // DiSEqC switch
    {1, 5, 1, 20, 5},   // plain switch
    {1, 10, 1, 25, 2},  // tone-burst switch
    {1, 15, 1, 12, 2},  // 22 kHz tone
    {1, 17, 1, 14, 2},  // switch type
    {1, 19, 1, 16, 1},  // motor
    {1, 20, 1, 0, 12},  // kept bits
};
constexpr Move kSatelliteMoves[] = {
    {0, 0, 0, 0, 16},    // carrier count
    {0, 24, 0, 16, 8},   // position
    {0, 16, 1, 12, 4},   // LNB index
    {1, 0, 0, 31, 1},    // user
    {1, 1, 0, 30, 1},    // East
    {1, 2, 1, 0, 12},    // angle
    {1, 14, 0, 24, 2},   // kept bits
    {1, 16, 1, 16, 16},  // kept bits
};
constexpr Move kCarrierMoves[] = {
    {0, 0, 0, 0, 24},    // symbol rate
    {2, 10, 0, 24, 2},   // polarisation
    {2, 15, 0, 26, 1},   // user
    {2, 12, 0, 27, 3},   // FEC
    {8, 0, 1, 0, 32},    // frequency
    {1, 0, 2, 0, 32},    // first service, service count
    {2, 0, 3, 0, 10},    // satellite
    {2, 16, 3, 16, 16},  // kept bits
};
constexpr Move kServiceMoves[] = {
    {1, 0, 0, 0, 32},         // video and audio PID
    {2, 0, 1, 0, 16},         // PCR PID, type
    {2, 16, 1, 16, 1, true},  // free: scrambled in the receiver
    {2, 17, 1, 17, 15},       // kept bits
    {0, 0, 2, 0, 16},         // program number
    {0, 16, 2, 16, 12},       // carrier
};
constexpr Layout kLnb{kLnbMoves, {0xC0000000, 0xE0000000}};
constexpr Layout kSatellite{kSatelliteMoves, {0x10000000, 0}};
constexpr Layout kCarrier{kCarrierMoves, {0, 0, 0, 0x0000FC00}};
constexpr Layout kService{kServiceMoves, {0, 0, 0xF0000000}};
constexpr uint32_t kEmptySlot = 1u << 26;  // in a satellite's first word

uint32_t LoadWord(std::span<const uint8_t> bytes, size_t word) {
  const auto part = bytes.subspan(4 * word, 4);
  return static_cast<uint32_t>(part[0]) | static_cast<uint32_t>(part[1]) << 8 |
         static_cast<uint32_t>(part[2]) << 16 | static_cast<uint32_t>(part[3]) << 24;
}

void StoreWord(std::span<uint8_t> bytes, size_t word, uint32_t value) {
  for (size_t i = 0; i < 4; ++i) bytes[4 * word + i] = static_cast<uint8_t>(value >> (8 * i));
}

template <class Record>
std::array<uint32_t, kMaximumWords> WordsOf(const Record& record) {
  std::array<uint32_t, kMaximumWords> words{};
  std::memcpy(words.data(), &record, sizeof record);
  return words;
}

template <class Record>
void Pack(const Layout& layout, const Record& record, size_t words, std::span<uint8_t> entry) {
  const auto source = WordsOf(record);
  std::array<uint32_t, 4> packed = layout.ones;
  for (const Move& move : layout.moves) {
    uint32_t value = source[move.record_word] >> move.record_bit;
    if (move.inverted) value = ~value;
    packed[move.entry_word] |= (value & MaskOf(0, move.width)) << move.entry_bit;
  }
  for (size_t i = 0; i < words; ++i) StoreWord(entry, i, packed[i]);
}

template <class Record>
Record Unpack(const Layout& layout, std::span<const uint8_t> entry) {
  std::array<uint32_t, kMaximumWords> words{};
  for (const Move& move : layout.moves) {
    uint32_t value = LoadWord(entry, move.entry_word) >> move.entry_bit;
    if (move.inverted) value = ~value;
    words[move.record_word] |= (value & MaskOf(0, move.width)) << move.record_bit;
  }
  Record record;
  std::memcpy(&record, words.data(), sizeof record);
  return record;
}

void PackName(std::string_view name, std::span<uint8_t> field) {
  std::fill(field.begin(), field.end(), uint8_t{0xFF});
  std::copy(name.begin(), name.end(), field.begin());
  if (name.size() < field.size()) field[name.size()] = 0;
}

void UnpackName(std::span<const uint8_t> field, char (&name)[kNameSize]) {
  std::fill(std::begin(name), std::end(name), '\0');
  for (size_t i = 0; i < kNameSize && field[i] != 0; ++i) name[i] = static_cast<char>(field[i]);
}

}  // namespace

void PackLnb(const LnbRecord& record, std::span<uint8_t> entry) {
  Pack(kLnb, record, 2, entry);
}

void PackSatellite(const SatelliteRecord& record, std::span<uint8_t> entry) {
  Pack(kSatellite, record, 2, entry);
  PackName(NameOf(record.name), entry.subspan(8, kNameSize));
}

void PackEmptySatellite(uint32_t number, std::span<uint8_t> entry) {
  StoreWord(entry, 0, 0x16FFFFFF);
  StoreWord(entry, 1, 0xFFFFF000);
  PackName(EmptySlotName(number), entry.subspan(8, kNameSize));
}

void PackCarrier(const CarrierRecord& record, std::span<uint8_t> entry) {
  Pack(kCarrier, record, 4, entry);
  // Besides its own code the receiver wants the plane alone: left counts as horizontal, right as vertical.
  WriteField(entry, 0, 30, 2, record.polarization & 1);
  PackName(NameOf(record.name), entry.subspan(16, kNameSize));
}

void PackService(const ServiceRecord& record, std::span<uint8_t> entry) {
  Pack(kService, record, 3, entry);
  PackName(NameOf(record.name), entry.subspan(12, 32));
}

void PackFavourite(const FavouriteRecord& record, std::span<uint8_t> entry) {
  std::memcpy(entry.data(), record.tv_name, kNameSize);
  std::memcpy(entry.data() + kNameSize, record.radio_name, kNameSize);
  WriteField(entry, 10, 0, 12, record.tv_count);
  WriteField(entry, 10, 12, 4, record.kept_0);
  WriteField(entry, 10, 16, 12, record.radio_count);
  WriteField(entry, 10, 28, 4, record.kept_28);
}

LnbRecord UnpackLnb(std::span<const uint8_t> entry) {
  return Unpack<LnbRecord>(kLnb, entry);
}

SatelliteRecord UnpackSatellite(std::span<const uint8_t> entry) {
  SatelliteRecord record{};
  if ((LoadWord(entry, 0) & kEmptySlot) == 0) record = Unpack<SatelliteRecord>(kSatellite, entry);
  UnpackName(entry.subspan(8), record.name);
  return record;
}

CarrierRecord UnpackCarrier(std::span<const uint8_t> entry) {
  auto record = Unpack<CarrierRecord>(kCarrier, entry);
  UnpackName(entry.subspan(16), record.name);
  return record;
}

ServiceRecord UnpackService(std::span<const uint8_t> entry) {
  auto record = Unpack<ServiceRecord>(kService, entry);
  UnpackName(entry.subspan(12), record.name);
  return record;
}

FavouriteRecord UnpackFavourite(std::span<const uint8_t> entry) {
  FavouriteRecord record{};
  std::memcpy(record.tv_name, entry.data(), kNameSize);
  std::memcpy(record.radio_name, entry.data() + kNameSize, kNameSize);
  if (ReadField(entry, 10, 0, 16) != 0xFFFF) {
    record.tv_count = ReadField(entry, 10, 0, 12) & 0xFFF;
    record.kept_0 = ReadField(entry, 10, 12, 4) & 15;
  }
  if (ReadField(entry, 10, 16, 16) != 0xFFFF) {
    record.radio_count = ReadField(entry, 10, 16, 12) & 0xFFF;
    record.kept_28 = ReadField(entry, 10, 28, 4) & 15;
  }
  return record;
}

uint32_t ReadField(std::span<const uint8_t> bytes, size_t word, int bit, int width) {
  return LoadWord(bytes, word) >> bit & MaskOf(0, width);
}

void WriteField(std::span<uint8_t> bytes, size_t word, int bit, int width, uint32_t value) {
  const uint32_t mask = MaskOf(bit, width);
  StoreWord(bytes, word, (LoadWord(bytes, word) & ~mask) | (value << bit & mask));
}

AdbLayout LayoutOf(const ProjectConfig& config) {
  const auto& sizes = config.partition_sizes;
  AdbLayout layout;
  layout.tables = sizes[3];
  layout.tables_end = layout.tables + sizes[4];
  layout.favourites = layout.tables_end + sizes[5];
  layout.settings = layout.favourites + sizes[6];
  layout.selection = layout.settings + sizes[0];
  layout.end = layout.selection + sizes[2];
  return layout;
}

const RegionEntry* AdbRegion(const ProjectConfig& config) {
  const RegionEntry* region = config.regions.empty() ? nullptr : &config.regions.front();
  for (const RegionEntry& entry : config.regions) {
    if (entry.type == 3) region = &entry;
  }
  return region;
}

}  // namespace vexa
