// The frame of the line, written and looked at.
#include "image/line_frame.h"

#include <gtest/gtest.h>

#include "tests/support/recorder.h"

namespace vexa {
namespace {

const Bytes kExample = {0x02, 0, 0, 2, 0x41, 0x42, 0, 0, 0, 0x83, 0x03};

TEST(LineFrame, IsWrittenAsItsTableSays) {
  EXPECT_EQ(FrameOf(BytesOf("AB")), kExample);
  EXPECT_EQ(FrameOf({}), (Bytes{0x02, 0, 0, 0, 0, 0, 0, 0, 0x03}));
  const Bytes large = FrameOf(Bytes(0x12345, 0xFF));  // a sum and a length of three bytes
  EXPECT_EQ(Bytes(large.begin(), large.begin() + 4), (Bytes{0x02, 0x01, 0x23, 0x45}));
  EXPECT_EQ(Bytes(large.end() - 5, large.end()), (Bytes{0x01, 0x22, 0x21, 0xBB, 0x03}));
  EXPECT_EQ(large.size(), 0x12345 + kFrameOverhead);
}

TEST(LineFrame, IsLookedAtPieceByPiece) {
  Bytes bytes = kExample;
  bytes.push_back(0x02);  // of the next one
  for (size_t count = 0; count <= bytes.size(); ++count) {
    const FrameView frame = LookAtFrame(std::span(bytes).first(count));
    EXPECT_EQ(frame.length.has_value(), count >= 4) << count;
    EXPECT_EQ(frame.whole, count >= kExample.size()) << count;
    if (count > 0) {
      EXPECT_EQ(frame.start, kStx);
    }
    if (frame.length) {
      EXPECT_EQ(frame.size(), kExample.size());
    }
  }
  const FrameView frame = LookAtFrame(bytes);
  EXPECT_EQ(frame.payload.data(), bytes.data() + 4);
  EXPECT_EQ(frame.payload.size(), 2u);
  EXPECT_EQ(frame.end, kEtx);
  EXPECT_EQ(frame.sum, 0x83u);
  EXPECT_EQ(frame.stated, 0x83u);
}

TEST(LineFrame, WhatIsWrongIsLeftToItsReader) {
  const Bytes wrong = {0x05, 0, 0, 1, 0x41, 0x01, 0x02, 0x03, 0x04, 0x06};
  const FrameView frame = LookAtFrame(wrong);
  EXPECT_TRUE(frame.whole);
  EXPECT_EQ(frame.start, 0x05);
  EXPECT_EQ(frame.end, 0x06);
  EXPECT_EQ(frame.stated, 0x01020304u);
  EXPECT_EQ(frame.sum, 0x41u);
  const FrameView longest = LookAtFrame(Bytes{0x02, 0xFF, 0xFF, 0xFF});
  EXPECT_EQ(longest.size(), 0xFFFFFFu + 9);
  EXPECT_FALSE(longest.whole);
}

}  // namespace
}  // namespace vexa
