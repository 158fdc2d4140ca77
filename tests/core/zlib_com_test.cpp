#include "core/zlib_com.h"

#include <gtest/gtest.h>

#include <random>

#include "tests/support/recorder.h"

namespace vexa {
namespace {

Bytes Noise(size_t size) {
  std::mt19937 random(1);
  Bytes bytes(size);
  for (uint8_t& byte : bytes) byte = static_cast<uint8_t>(random());
  return bytes;
}

TEST(ZlibCom, CapacityIsTruncatedDouble) {
  const std::pair<uint64_t, uint64_t> rows[] = {{0, 12}, {1, 13}, {99, 111}, {1000, 1022}, {131072, 132394}};
  for (const auto& [size, capacity] : rows) EXPECT_EQ(CompressedCapacity(size), capacity) << size;
}

TEST(ZlibCom, RoundTrips) {
  Recorder recorder;
  for (const size_t size : {size_t{0}, size_t{1}, size_t{500}, size_t{300000}}) {
    for (const int level : {0, 1, 6, 9}) {
      const Bytes source = Noise(size);
      Bytes packed(static_cast<size_t>(CompressedCapacity(size)) + 100);
      const uint64_t length = CompressBuffer(recorder.context.messages, source, packed, level, "");
      ASSERT_GT(length, 0u) << size << " at level " << level;
      ASSERT_LE(length, CompressedCapacity(size));
      Bytes result(size);
      uint64_t made = 99;
      ASSERT_EQ(DecompressBuffer(recorder.context.messages,
                                 std::span(packed).first(static_cast<size_t>(length)), result, made, ""),
                0);
      ASSERT_EQ(made, size);
      ASSERT_EQ(result, source);
    }
  }
  EXPECT_TRUE(recorder.shown.empty());
}

TEST(ZlibCom, TooSmallDestinationAndBadLevelFail) {
  const struct {
    const char *given, *shown;
    size_t size;
    int level;
  } rows[] = {{"", "Compression", 900, 6},
              {"Mine", "Mine", 900, 6},
              {nullptr, kApplicationTitle, 900, 6},
              {"", "Compression", 2000, 77}};
  for (const auto& row : rows) {
    Recorder recorder;
    Bytes packed(row.size);
    testing::internal::CaptureStdout();
    EXPECT_EQ(CompressBuffer(recorder.context.messages, Noise(1000), packed, row.level, row.given), 0u);
    std::fflush(stdout);
    EXPECT_EQ(testing::internal::GetCapturedStdout().find("Returning from =>zlib_com.cpp ,Line =>"), 0u);
    ASSERT_EQ(recorder.shown.size(), 1u);
    EXPECT_EQ(recorder.shown[0].text, "Compression failed.");
    EXPECT_EQ(recorder.shown[0].title, row.shown);
    EXPECT_EQ(recorder.shown[0].icon, Icon::kStop);
  }
}

TEST(ZlibCom, DamagedOrTooLongDataFailsToInflate) {
  Recorder recorder;
  const Bytes source = Noise(1000);
  Bytes packed(static_cast<size_t>(CompressedCapacity(1000)));
  packed.resize(static_cast<size_t>(CompressBuffer(recorder.context.messages, source, packed, 6, "")));
  uint64_t length = 0;
  Bytes small(999), enough(1000);
  EXPECT_EQ(DecompressBuffer(recorder.context.messages, packed, small, length, ""), -5);  // Z_BUF_ERROR
  EXPECT_NE(DecompressBuffer(recorder.context.messages, std::span(packed).first(packed.size() - 1), enough,
                             length, ""),
            0);
  packed.back() ^= 1;                                                                       // the checksum
  EXPECT_EQ(DecompressBuffer(recorder.context.messages, packed, enough, length, "T"), -3);  // Z_DATA_ERROR
  ASSERT_EQ(recorder.shown.size(), 3u);
  for (const Message& message : recorder.shown) EXPECT_EQ(message.text, "Decompression failed.");
  EXPECT_EQ(recorder.shown[0].title, "Compression");
  EXPECT_EQ(recorder.shown[2].title, "T");
}

TEST(Messages, TextsOfAnyLengthAndNobodyWhoHears) {
  EXPECT_EQ(Format("%d%s", 5, std::string(5000, 'y').c_str()), "5" + std::string(5000, 'y'));
  const Messages deaf;
  Tell(deaf, Icon::kStop, "nobody hears");
  EXPECT_FALSE(Ask(deaf, "nobody answers"));
}

}  // namespace
}  // namespace vexa
