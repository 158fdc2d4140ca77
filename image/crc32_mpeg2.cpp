#include "image/crc32_mpeg2.h"

#include <array>

namespace vexa {

namespace {

constexpr uint32_t kPolynomial = 0x04C11DB7;
constexpr size_t kSlices = 16;

using Table = std::array<std::array<uint32_t, 256>, kSlices>;

// tables[k][b]: the CRC, from 0, of byte b followed by k zero bytes; sixteen bytes are then taken at a time.
constexpr Table MakeTables() {
  Table tables{};
  for (uint32_t byte = 0; byte < 256; ++byte) {
    uint32_t crc = byte << 24;
    for (int bit = 0; bit < 8; ++bit) crc = crc & 0x80000000 ? crc << 1 ^ kPolynomial : crc << 1;
    tables[0][byte] = crc;
  }
  for (size_t k = 1; k < kSlices; ++k) {
    for (size_t byte = 0; byte < 256; ++byte) {
      const uint32_t before = tables[k - 1][byte];
      tables[k][byte] = before << 8 ^ tables[0][before >> 24];
    }
  }
  return tables;
}

constexpr Table kTables = MakeTables();

uint32_t Multiply(uint32_t a, uint32_t b) {
  uint32_t product = 0;
  for (int bit = 31; bit >= 0; --bit) {
    product = product & 0x80000000 ? product << 1 ^ kPolynomial : product << 1;
    if (b >> bit & 1) product ^= a;
  }
  return product;
}

// x to the power of 8 * length, modulo the polynomial.
uint32_t PowerOfBytes(uint64_t length) {
  uint32_t power = 1, square = 0x100;  // x^8
  for (; length != 0; length >>= 1) {
    if (length & 1) power = Multiply(power, square);
    square = Multiply(square, square);
  }
  return power;
}

}  // namespace

uint32_t Crc32Mpeg2(std::span<const uint8_t> bytes, uint32_t crc) {
  const uint8_t* p = bytes.data();
  size_t left = bytes.size();
  for (; left >= kSlices; left -= kSlices, p += kSlices) {
    uint32_t next = kTables[15][p[0] ^ crc >> 24] ^ kTables[14][p[1] ^ (crc >> 16 & 0xFF)] ^
                    kTables[13][p[2] ^ (crc >> 8 & 0xFF)] ^ kTables[12][p[3] ^ (crc & 0xFF)];
    for (size_t i = 4; i < kSlices; ++i) next ^= kTables[kSlices - 1 - i][p[i]];
    crc = next;
  }
  for (; left > 0; --left, ++p) crc = crc << 8 ^ kTables[0][*p ^ crc >> 24];
  return crc;
}

uint32_t JoinCrc32Mpeg2(uint32_t crc_a, uint32_t crc_b, uint64_t length_b) {
  // The start value of B's own CRC has gone through all of B: taken out and A's put in its place.
  return Multiply(crc_a ^ kCrcStart, PowerOfBytes(length_b)) ^ crc_b;
}

}  // namespace vexa
