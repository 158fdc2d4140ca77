#include "tests/core/bin_bytes.h"

#include <zlib.h>

#include <algorithm>
#include <array>
#include <cstdlib>

namespace vexa {

Plain& Plain::U8(size_t value) {
  bytes.push_back(static_cast<uint8_t>(value & 0xFF));
  return *this;
}
Plain& Plain::Text(const std::string& text, size_t width) {
  for (size_t i = 0; i < width; ++i) U8(i < text.size() ? static_cast<unsigned char>(text[i]) : 0);
  return *this;
}
Plain& Plain::Fill(size_t count, unsigned value) {
  for (size_t i = 0; i < count; ++i) U8(value);
  return *this;
}
Plain& Plain::Add(const Bytes& part) {
  bytes.insert(bytes.end(), part.begin(), part.end());
  return *this;
}

Bytes BlockHeader(const std::string& name, size_t size, size_t count, unsigned mark) {
  return Plain{}.Text(name, 8).U16(size).U16(mark).U16(count).U16(mark).bytes;
}

Bytes StreamHeader(unsigned version, uint8_t major, uint8_t minor, const std::string& initials) {
  Plain out{{0x51, 0x7A, 2, 0, 0, 0}};
  return out.U16(version).Fill(8, 0).Text(initials, 3).Add({0, major, minor, 0xFF, 0}).bytes;
}

namespace {

template <class Record>
Bytes Table(const std::string& name, const std::vector<Record>& records) {
  const auto* bytes = reinterpret_cast<const uint8_t*>(records.data());
  return Plain{BlockHeader(name, sizeof(Record), records.size())}
      .Add(Bytes(bytes, bytes + records.size() * sizeof(Record)))
      .bytes;
}

void AddPlaces(Plain& out, const std::vector<unsigned>& places) {
  for (const unsigned place : places) out.U16(place);
}

const Bytes kSampleLnb = {0x16, 0x26, 0x5A, 0xEA, 0x04, 0x00, 0x0D, 0xAB};
const Bytes kDefaultLnb = {0x16, 0x26, 0x5A, 0x6A, 0x00, 0x00, 0x01, 0x00};

}  // namespace

Bytes PlainStream::Join() const {
  Plain out{header};
  out.Add(lnbs)
      .Add(Table("Satelli", satellites))
      .Add(Table("Carrier", carriers))
      .Add(Table("Service", services));
  if (has_order) {
    out.Add(BlockHeader("OSL", 2, order.size()));
    AddPlaces(out, order);
    if (order.size() % 2 != 0) out.U16(0xFFFF);
  }
  if (groups.empty()) return out.bytes;
  out.Add(BlockHeader("FGLblk", 0, 8));
  for (const auto& g : groups) {
    out.U32(0x50000005u | g.tv.size() << 4 | g.radio.size() << 16).Text(g.tv_name, 20).Text(g.radio_name, 20);
    AddPlaces(out, g.tv);
    AddPlaces(out, g.radio);
    if ((g.tv.size() + g.radio.size()) % 2 != 0) out.U16(0xFFFF);
  }
  return out.bytes;
}

PlainStream SampleStream() {
  PlainStream s;
  s.header = StreamHeader(6);
  s.lnbs = Plain{BlockHeader("lnb", 8, 1)}.Add(kSampleLnb).bytes;
  s.satellites = {{2, 0, 5, 1, 1, 192, 1u << 17, "Astra"}, {1, 3, 255, 0, 0, 130, 0, "Hot Bird"}};
  s.carriers = {{27500, 3, 0, 1, 1, 1, 3, 0, 0xABCD, "First", 10853},
                {22000, 0, 1, 2, 0, 2, 5, 1, 0, "", 12000},
                {45000, 0, 3, 0, 0, 0, 0, 0, 0, "", 11778}};
  std::fill_n(s.carriers[2].name, kNameSize, 'x');  // without a NUL
  s.services = {{1, 0, 256, 257, 7, 256, 1, 1, 0, "Eins"},
                {28006, 1, 8192, 8192, 0, 8192, 2, 0, 0, "Zwei"},
                {7, 1, 514, 515, 15, 514, 3, 0, 0x7FFF, "Drei"}};
  s.order = {2, 0, 1};
  s.groups = {{{1}, {}, "Mine", "Radio"}, {{0, 0}, {2, 1}, "Even", ""}, {{2}, {1}, "One", "One"}};
  for (int i = 4; i <= 8; ++i) s.groups.push_back({{}, {}, "G" + std::to_string(i), "R" + std::to_string(i)});
  return s;
}

PlainStream FilledSampleStream() {
  PlainStream s = SampleStream();
  Plain lnbs{BlockHeader("lnb", 8, 16)};
  lnbs.Add(kSampleLnb);
  for (int i = 1; i < 16; ++i) lnbs.Add(kDefaultLnb);
  s.lnbs = lnbs.bytes;
  for (int i = 1; i <= 83; ++i) SetName(s.satellites.emplace_back().name, "NewSat " + std::to_string(i));
  return s;
}

Bytes PackPlain(const Bytes& plain) {
  uLongf length = compressBound(static_cast<uLong>(plain.size()));
  Bytes packed(length);
  if (compress2(packed.data(), &length, plain.data(), static_cast<uLong>(plain.size()), 6) != Z_OK)
    std::abort();
  packed.resize(length);
  return packed;
}

Bytes UbiStream(const std::vector<std::pair<std::string, Bytes>>& ubis, unsigned record_size) {
  Plain out{BlockHeader("UserBox", record_size, ubis.size(), 0x00FF)};
  for (const auto& [name, record] : ubis) out.Text(name, 8).Add(record);
  return out.bytes;
}

Bytes PlainContainer::Join() const {
  Plain directory, streams;
  const size_t parts = sdbs.size() + (ubi_count != 0 ? 1 : 0);
  const auto add = [&](const std::string& name, const Bytes& plain, bool compressed,
                       const std::array<unsigned, 4>& counts) {
    const Bytes stored = compressed ? PackPlain(plain) : plain;
    directory.Text(name, 7).U8(compressed).U32(plain.size()).U32(stored.size());
    directory.U32(24 + 28 * parts + streams.bytes.size());
    for (const unsigned count : counts) directory.U16(count);
    streams.Add(stored);
  };
  for (const PlainSdb& sdb : sdbs)
    add(sdb.name, sdb.stream, sdb.compressed, {16, 85, sdb.carriers, sdb.services});
  if (ubi_count != 0) add("UBIblk", ubis, compress_ubis, {});
  const Bytes payload = directory.Add(streams.bytes).bytes;
  const Bytes stored = compress_payload ? PackPlain(payload) : payload;
  Plain out{{0x51, 0x7A, major, minor, 0x10, 0, 0, 0xFF}};
  out.Text(initials, 3).U8(compress_payload).U32(payload.size()).U32(stored.size());
  return out.U16(sdbs.size()).U16(ubi_count).Add(stored).bytes;
}

PlainContainer SampleContainer() {
  PlainContainer container;
  container.sdbs = {{"SDB1", FilledSampleStream().Join()}};
  Bytes box(28);
  for (unsigned i = 0; i < 28; ++i) box[i] = static_cast<uint8_t>(i + 1);
  container.ubis = UbiStream({{"UBI1", box}});
  container.ubi_count = 1;
  return container;
}

}  // namespace vexa
