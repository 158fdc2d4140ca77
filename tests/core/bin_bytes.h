// BIN files laid out by hand, byte by byte, without the engine's writer: what the tests compare with and
// damage.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "core/records.h"
#include "platform/files.h"

namespace vexa {

struct Plain {
  Bytes bytes;
  Plain& U8(size_t value);
  Plain& U16(size_t value) { return U8(value).U8(value >> 8); }
  Plain& U32(size_t value) { return U16(value).U16(value >> 16); }
  Plain& Text(const std::string& text, size_t width);
  Plain& Fill(size_t count, unsigned value);
  Plain& Add(const Bytes& part);
};

Bytes BlockHeader(const std::string& name, size_t size, size_t count, unsigned mark = 0xFFFF);
Bytes StreamHeader(unsigned version, uint8_t major = 1, uint8_t minor = 0,
                   const std::string& initials = "   ");

struct PlainGroup {
  std::vector<unsigned> tv, radio;
  std::string tv_name, radio_name;
};

// An SDB stream in parts that a test may change before it joins them. Records are their own bytes:
// records_test.cpp says where each field stands in them.
struct PlainStream {
  Bytes header, lnbs;
  std::vector<SatelliteRecord> satellites;
  std::vector<CarrierRecord> carriers;
  std::vector<ServiceRecord> services;
  std::vector<unsigned> order;
  bool has_order = true;
  std::vector<PlainGroup> groups;  // none: no block
  Bytes Join() const;
};

// 1 LNB, satellites "Astra" and "Hot Bird", three carriers, three services, order 2 0 1, groups 1 and 2
// filled.
PlainStream SampleStream();
// As a save writes it: 16 LNBs and 85 satellites.
PlainStream FilledSampleStream();

Bytes PackPlain(const Bytes& plain);
Bytes UbiStream(const std::vector<std::pair<std::string, Bytes>>& ubis, unsigned record_size = 28);

struct PlainSdb {
  std::string name;
  Bytes stream;
  bool compressed = false;
  unsigned carriers = 3, services = 3;
};
struct PlainContainer {
  uint8_t major = 1, minor = 0;
  std::string initials = "   ";
  std::vector<PlainSdb> sdbs;
  unsigned ubi_count = 0;
  Bytes ubis;
  bool compress_ubis = false, compress_payload = false;
  Bytes Join() const;
};

PlainContainer SampleContainer();

}  // namespace vexa
