#include "image/crc32_mpeg2.h"

#include <array>

// Processors that multiply polynomials take 64 bytes at a time; all others, and all other compilers, the
// tables.
#if defined(__x86_64__) && defined(__GNUC__)
#define VEXA_FOLDS __attribute__((target("pclmul,ssse3")))
#include <immintrin.h>
#endif

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

uint32_t CrcByTables(std::span<const uint8_t> bytes, uint32_t crc) {
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

#ifdef VEXA_FOLDS

constexpr size_t kLane = 16, kFoldedAtOnce = 4 * kLane;

// x to the power of `bits`, modulo the polynomial.
constexpr uint32_t PowerOfBits(int bits) {
  uint32_t power = 1;
  for (; bits > 0; --bits) power = power & 0x80000000 ? power << 1 ^ kPolynomial : power << 1;
  return power;
}

VEXA_FOLDS __m128i Reversed(__m128i bytes) {
  return _mm_shuffle_epi8(bytes, _mm_set_epi8(0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15));
}

// Sixteen bytes as a polynomial, the first byte highest.
VEXA_FOLDS __m128i Load(const uint8_t* bytes) {
  return Reversed(_mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes)));
}

// Sixteen bytes with the CRC of `lane` and, some distance behind it, `next`. `powers` are x to the power of
// that distance in bits: above for the upper half of the lane, below for the lower.
VEXA_FOLDS __m128i Fold(__m128i lane, __m128i powers, __m128i next) {
  const __m128i upper = _mm_clmulepi64_si128(lane, powers, 0x11);
  const __m128i lower = _mm_clmulepi64_si128(lane, powers, 0x00);
  return _mm_xor_si128(_mm_xor_si128(upper, lower), next);
}

// The CRC of at least kFoldedAtOnce bytes: folds them into sixteen bytes that have the same CRC.
VEXA_FOLDS uint32_t CrcByFolding(std::span<const uint8_t> bytes, uint32_t crc) {
  constexpr uint32_t kFarUpper = PowerOfBits(512 + 64), kFarLower = PowerOfBits(512);
  constexpr uint32_t kNearUpper = PowerOfBits(128 + 64), kNearLower = PowerOfBits(128);
  const __m128i far_powers = _mm_set_epi64x(kFarUpper, kFarLower),
                near_powers = _mm_set_epi64x(kNearUpper, kNearLower);
  const uint8_t* p = bytes.data();
  size_t left = bytes.size();
  __m128i lanes[4];
  for (size_t i = 0; i < 4; ++i) lanes[i] = Load(p + i * kLane);
  lanes[0] = _mm_xor_si128(lanes[0], _mm_set_epi32(static_cast<int>(crc), 0, 0, 0));
  for (p += kFoldedAtOnce, left -= kFoldedAtOnce; left >= kFoldedAtOnce;
       p += kFoldedAtOnce, left -= kFoldedAtOnce) {
    for (size_t i = 0; i < 4; ++i) lanes[i] = Fold(lanes[i], far_powers, Load(p + i * kLane));
  }
  for (size_t i = 1; i < 4; ++i) lanes[i] = Fold(lanes[i - 1], near_powers, lanes[i]);
  uint8_t folded[kLane];
  _mm_storeu_si128(reinterpret_cast<__m128i*>(folded), Reversed(lanes[3]));
  return CrcByTables({p, left}, CrcByTables(folded, 0));
}

#endif

}  // namespace

uint32_t Crc32Mpeg2(std::span<const uint8_t> bytes, uint32_t crc) {
#ifdef VEXA_FOLDS
  static const bool folds = __builtin_cpu_supports("pclmul") && __builtin_cpu_supports("ssse3");
  if (folds && bytes.size() >= kFoldedAtOnce) return CrcByFolding(bytes, crc);
#endif
  return CrcByTables(bytes, crc);
}

uint32_t JoinCrc32Mpeg2(uint32_t crc_a, uint32_t crc_b, uint64_t length_b) {
  // The CRC of B began with kCrcStart, which has gone through all of B: its part is taken out, and that of
  // the CRC of A put in its place.
  return Multiply(crc_a ^ kCrcStart, PowerOfBytes(length_b)) ^ crc_b;
}

}  // namespace vexa
