// BIN files laid out by hand, byte by byte, without the engine's writer: what the tests compare with and
// damage.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "platform/files.h"

namespace vexa {

struct Plain {
  Bytes bytes;
  Plain& U8(unsigned value);
  Plain& U16(unsigned value);
  Plain& U32(unsigned value);
  Plain& Text(const std::string& text, size_t width);
  Plain& Fill(size_t count, unsigned value);
  Plain& Add(const Bytes& part);
};

Bytes BlockHeader(const std::string& name, unsigned size, unsigned count, unsigned mark = 0xFFFF);
Bytes StreamHeader(unsigned version, unsigned major = 1, unsigned minor = 0,
                   const std::string& initials = "   ");

struct PlainSatellite {
  unsigned carriers, lnb, position, word1;
  std::string name;
};
struct PlainCarrier {
  unsigned symbol_rate, lnb, first_service, services, satellite,
      word2_high;  // word2_high: bits 10-31 in place
  std::string name;
  unsigned frequency;
};
struct PlainService {
  unsigned program, carrier, word1, word2;
  std::string name;
};
struct PlainGroup {
  std::vector<unsigned> tv, radio;
  std::string tv_name, radio_name;
};

// An SDB stream in parts that a test may change before it joins them.
struct PlainStream {
  Bytes header, lnbs;
  std::vector<PlainSatellite> satellites;
  std::vector<PlainCarrier> carriers;
  std::vector<PlainService> services;
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
  unsigned major = 1, minor = 0;
  std::string initials = "   ";
  std::vector<PlainSdb> sdbs;
  unsigned ubi_count = 0;
  Bytes ubis;
  bool compress_ubis = false, compress_payload = false;
  Bytes Join() const;
};

PlainContainer SampleContainer();

}  // namespace vexa
