#include "tests/core/bin_bytes.h"

#include <zlib.h>

#include <cstdlib>

namespace vexa {

Plain& Plain::U8(unsigned value) {
  bytes.push_back(static_cast<uint8_t>(value & 0xFF));
  return *this;
}
Plain& Plain::U16(unsigned value) {
  return U8(value).U8(value >> 8);
}
Plain& Plain::U32(unsigned value) {
  return U16(value).U16(value >> 16);
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

Bytes BlockHeader(const std::string& name, unsigned size, unsigned count, unsigned mark) {
  return Plain{}.Text(name, 8).U16(size).U16(mark).U16(count).U16(mark).bytes;
}

Bytes StreamHeader(unsigned version, unsigned major, unsigned minor, const std::string& initials) {
  Plain out;
  out.U8(0x51).U8(0x7A).U8(2).U8(0).U8(0).U8(0).U16(version).Fill(8, 0).Text(initials, 3);
  return out.U8(0).U8(major).U8(minor).U8(0xFF).U8(0).bytes;
}

Bytes PlainStream::Join() const {
  Plain out;
  out.Add(header).Add(lnbs);
  out.Add(BlockHeader("Satelli", 28, static_cast<unsigned>(satellites.size())));
  for (const auto& s : satellites) out.U16(s.carriers).U8(s.lnb).U8(s.position).U32(s.word1).Text(s.name, 20);
  out.Add(BlockHeader("Carrier", 36, static_cast<unsigned>(carriers.size())));
  for (const auto& c : carriers) {
    out.U32(c.symbol_rate | c.lnb << 24).U16(c.first_service).U16(c.services);
    out.U32(c.satellite | c.word2_high).Text(c.name, 20).U32(c.frequency);
  }
  out.Add(BlockHeader("Service", 32, static_cast<unsigned>(services.size())));
  for (const auto& s : services) out.U16(s.program).U16(s.carrier).U32(s.word1).U32(s.word2).Text(s.name, 20);
  if (has_order) {
    out.Add(BlockHeader("OSL", 2, static_cast<unsigned>(order.size())));
    for (const unsigned entry : order) out.U16(entry);
    if (order.size() % 2 != 0) out.U16(0xFFFF);
  }
  if (groups.empty()) return out.bytes;
  out.Add(BlockHeader("FGLblk", 0, 8));
  for (const auto& g : groups) {
    out.U32(0x50000005u | static_cast<unsigned>(g.tv.size()) << 4 |
            static_cast<unsigned>(g.radio.size()) << 16);
    out.Text(g.tv_name, 20).Text(g.radio_name, 20);
    for (const unsigned entry : g.tv) out.U16(entry);
    for (const unsigned entry : g.radio) out.U16(entry);
    if ((g.tv.size() + g.radio.size()) % 2 != 0) out.U16(0xFFFF);
  }
  return out.bytes;
}

namespace {

const Bytes kSampleLnb = {0x16, 0x26, 0x5A, 0xEA, 0x04, 0x00, 0x0D, 0xAB};
const Bytes kDefaultLnb = {0x16, 0x26, 0x5A, 0x6A, 0x00, 0x00, 0x01, 0x00};

}  // namespace

PlainStream SampleStream() {
  PlainStream s;
  s.header = StreamHeader(6);
  s.lnbs = Plain{}.Add(BlockHeader("lnb", 8, 1)).Add(kSampleLnb).bytes;
  s.satellites = {{2, 0, 5, 0x80000000u | 192 << 2 | 2 | 1, "Astra"}, {1, 3, 255, 130 << 2, "Hot Bird"}};
  s.carriers = {{27500, 3, 0, 1, 1, 1u << 10 | 3u << 12 | 0xABCD0000u, "First", 10853},
                {22000, 0, 1, 2, 0, 2u << 10 | 5u << 12 | 1u << 15, "", 12000},
                {45000, 0, 3, 0, 0, 0, "12345678901234567890", 11778}};
  s.services = {{1, 0, 0x70000000u | 257u << 14 | 256, 1u << 14 | 1u << 16 | 256, "Eins"},
                {28006, 1, 8192u << 14 | 8192, 2u << 14 | 8192, "Zwei"},
                {7, 1, 0xF0000000u | 515u << 14 | 514, 3u << 14 | 0xFFFE0000u | 514, "Drei"}};
  s.order = {2, 0, 1};
  s.groups = {{{1}, {}, "Mine", "Radio"}, {{0, 0}, {2, 1}, "Even", ""}, {{2}, {1}, "One", "One"}};
  for (int i = 4; i <= 8; ++i) s.groups.push_back({{}, {}, "G" + std::to_string(i), "R" + std::to_string(i)});
  return s;
}

PlainStream FilledSampleStream() {
  PlainStream s = SampleStream();
  Plain lnbs;
  lnbs.Add(BlockHeader("lnb", 8, 16)).Add(kSampleLnb);
  for (int i = 1; i < 16; ++i) lnbs.Add(kDefaultLnb);
  s.lnbs = lnbs.bytes;
  for (int i = 1; i <= 83; ++i) s.satellites.push_back({0, 0, 0, 0, "NewSat " + std::to_string(i)});
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
  Plain out;
  out.Add(BlockHeader("UserBox", record_size, static_cast<unsigned>(ubis.size()), 0x00FF));
  for (const auto& [name, record] : ubis) out.Text(name, 8).Add(record);
  return out.bytes;
}

Bytes PlainContainer::Join() const {
  struct Part {
    std::string name;
    Bytes plain, stored;
    bool compressed, ubi;
    unsigned carriers, services;
  };
  std::vector<Part> parts;
  for (const auto& sdb : sdbs)
    parts.push_back({sdb.name, sdb.stream, sdb.compressed ? PackPlain(sdb.stream) : sdb.stream,
                     sdb.compressed, false, sdb.carriers, sdb.services});
  if (ubi_count != 0)
    parts.push_back({"UBIblk", ubis, compress_ubis ? PackPlain(ubis) : ubis, compress_ubis, true, 0, 0});
  Plain payload;
  size_t offset = 24 + 28 * parts.size();
  for (const Part& part : parts) {
    payload.Text(part.name, 7).U8(part.compressed).U32(static_cast<unsigned>(part.plain.size()));
    payload.U32(static_cast<unsigned>(part.stored.size())).U32(static_cast<unsigned>(offset));
    payload.U16(part.ubi ? 0 : 16).U16(part.ubi ? 0 : 85).U16(part.carriers).U16(part.services);
    offset += part.stored.size();
  }
  for (const Part& part : parts) payload.Add(part.stored);
  const Bytes stored = compress_payload ? PackPlain(payload.bytes) : payload.bytes;
  Plain out;
  out.U8(0x51)
      .U8(0x7A)
      .U8(major)
      .U8(minor)
      .U8(0x10)
      .U8(0)
      .U8(0)
      .U8(0xFF)
      .Text(initials, 3)
      .U8(compress_payload);
  out.U32(static_cast<unsigned>(payload.bytes.size())).U32(static_cast<unsigned>(stored.size()));
  return out.U16(static_cast<unsigned>(sdbs.size())).U16(ubi_count).Add(stored).bytes;
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
