#include <gtest/gtest.h>

#include <random>

#include "image/bin2cod.h"
#include "image/crc32_mpeg2.h"
#include "image/rc4.h"
#include "image/sha256.h"
#include "tests/image/image_maker.h"
#include "tests/support/recorder.h"

namespace vexa {
namespace {

Bytes RandomBytes(std::mt19937& random, size_t size, unsigned values = 256) {
  Bytes bytes(size);
  for (uint8_t& byte : bytes) byte = static_cast<uint8_t>(random() % values);
  return bytes;
}

TEST(Crc, KnownValueAndEveryLengthAsBitByBit) {
  EXPECT_EQ(Crc32Mpeg2(BytesOf("123456789")), 0x0376E6E7u);
  std::mt19937 random(1);
  for (size_t size = 0; size < 100; ++size) {
    const Bytes bytes = RandomBytes(random, size);
    EXPECT_EQ(Crc32Mpeg2(bytes), SlowCrc(bytes)) << size;
  }
}

TEST(Crc, JoinsAndContinues) {
  std::mt19937 random(2);
  for (const auto& [first, second] :
       std::vector<std::pair<size_t, size_t>>{{0, 0}, {0, 5}, {5, 0}, {1, 1}, {70000, 3}, {3, 70001}}) {
    const Bytes whole = RandomBytes(random, first + second);
    const auto a = std::span(whole).first(first), b = std::span(whole).subspan(first);
    const uint32_t expected = SlowCrc(whole);
    EXPECT_EQ(JoinCrc32Mpeg2(Crc32Mpeg2(a), Crc32Mpeg2(b), second), expected) << first << " " << second;
    EXPECT_EQ(Crc32Mpeg2(b, Crc32Mpeg2(a)), expected) << first << " " << second;
  }
}

TEST(Cipher, PublishedVectorsAndBack) {
  const struct {
    const char *key, *plain;
    Bytes enciphered;
  } rows[] = {
      {"Key", "Plaintext", {0xBB, 0xF3, 0x16, 0xE8, 0xD9, 0x40, 0xAF, 0x0A, 0xD3}},
      {"Wiki", "pedia", {0x10, 0x21, 0xBF, 0x04, 0x20}},
      {"Secret",
       "Attack at dawn",
       {0x45, 0xA0, 0x1F, 0x64, 0x5F, 0xC3, 0x5B, 0x38, 0x35, 0x52, 0x54, 0x4B, 0x9B, 0xF5}},
  };
  for (const auto& row : rows) {
    Bytes bytes = BytesOf(row.plain);
    Rc4(bytes, row.key);
    EXPECT_EQ(bytes, row.enciphered) << row.key;
    Rc4(bytes, row.key);
    EXPECT_EQ(bytes, BytesOf(row.plain)) << row.key;
  }
}

TEST(Bin2Cod, StreamsByHand) {
  const struct {
    Bytes stream;
    std::string text;
  } rows[] = {
      {{}, ""},
      {{0x01, 'a'}, "a"},
      {{0x01, 'a', 0x00, 0x0F}, "aaaaaaaaaaaaaaaaaaa"},  // a match that reaches into itself
      {{0x07, 'a', 'b', 'c', 0x02, 0x01}, "abcabca"},    // distance 3, length 4
      {{0xFF, 'a', 'b', 'c', 'd', 'e', 'f', 'g', 'h', 0x00, 0x07, 0x00},
       "abcdefghabc"},  // a second flag byte
  };
  for (const auto& row : rows) {
    EXPECT_EQ(ExpandBin2Cod(row.stream, row.text.size()), BytesOf(row.text)) << row.text;
    EXPECT_EQ(CompressBin2Cod(BytesOf(row.text)), row.stream) << row.text;
  }
}

TEST(Bin2Cod, DamagedStreamsGiveNothing) {
  const struct {
    const char* what;
    Bytes stream;
    uint64_t size;
  } rows[] = {
      {"match before any byte", {0x00, 0x00, 0x00}, 3},
      {"distance too far", {0x01, 'a', 0x01, 0x00}, 4},
      {"half a match", {0x01, 'a', 0x00}, 4},
      {"too long", {0x03, 'a', 'b'}, 1},
      {"match too long", {0x01, 'a', 0x00, 0x01}, 4},
      {"too short", {0x01, 'a'}, 2},
      {"size beyond reason", {0x01, 'a'}, uint64_t{1} << 40},
  };
  for (const auto& row : rows) EXPECT_EQ(ExpandBin2Cod(row.stream, row.size), std::nullopt) << row.what;
}

TEST(Bin2Cod, RoundTripsWhateverTheContent) {
  std::mt19937 random(3);
  for (const unsigned values : {1u, 2u, 5u, 256u}) {
    for (const size_t size : {1u, 2u, 3u, 18u, 19u, 4095u, 4096u, 4097u, 4115u, 20000u}) {
      const Bytes source = RandomBytes(random, size, values);
      const Bytes stream = CompressBin2Cod(source);
      EXPECT_LE(stream.size(), size + (size + 7) / 8);
      EXPECT_EQ(ExpandBin2Cod(stream, size), source) << values << " " << size;
    }
  }
  // The same text just inside and just outside of the window.
  for (const size_t gap : {4091u, 4092u, 4093u, 4094u}) {
    Bytes source = BytesOf("needle");
    const Bytes filling = RandomBytes(random, gap - 2);
    source.insert(source.end(), filling.begin(), filling.end());
    source.insert(source.end(), {'n', 'e', 'e', 'd', 'l', 'e'});
    EXPECT_EQ(ExpandBin2Cod(CompressBin2Cod(source), source.size()), source) << gap;
  }
}

// The published examples, and the lengths around which the last block breaks.
TEST(Sha256, IsThePublishedOne) {
  const std::pair<std::string, const char*> rows[] = {
      {"", "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855"},
      {"abc", "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad"},
      {"abcdbcdecdefdefgefghfghighijhijkijkljklmklmnlmnomnopnopq",
       "248d6a61d20638b8e5c026930c3e6039a33ce45964ff2167f6ecedd419db06c1"},
      {std::string(55, 'a'), "9f4390f8d30c2dd92ec9f095b65e2b9ae9b0a925a5258e241c9f1e910f734318"},
      {std::string(64, 'a'), "ffe054fe7ae0cb6dc65c3af9b61d5209f439851db43d0ba5997337df154668eb"},
      {std::string(1000000, 'a'), "cdc76e5c9914fb9281a1c7e284d73e67f1809a48a497200e046d39ccc7112cd0"}};
  for (const auto& [text, digest] : rows) EXPECT_EQ(Sha256Text(BytesOf(text)), digest) << text.size();
}

}  // namespace
}  // namespace vexa
