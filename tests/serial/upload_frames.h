// Small files for the receiver: an upload's and a request's.
#pragma once

#include <gtest/gtest.h>

#include <vector>

#include "core/bytes.h"
#include "image/line_frame.h"
#include "image/urt.h"
#include "tests/support/recorder.h"

namespace vexa {

// An upload of the image in packets of 100 bytes; type 3 goes to the second address space, without a header.
inline Bytes UploadFile(const Bytes& image, uint16_t type = 3, uint8_t flag = 0) {
  Recorder recorder;
  ConversionParameters parameters;
  parameters.header_tag = 0xF0;
  parameters.packet_tag = 0xF5;
  parameters.block_size = 1024;
  parameters.packet_size = 100;
  ImageDescription description;
  description.type = type;
  description.flag = flag;
  description.kind = 5;
  description.name = "Test";
  description.start = 0x40;
  description.end = static_cast<uint32_t>(0x40 + image.size() + RoomOfImage(type, flag).header);
  Bytes urt;
  EXPECT_EQ(BuildUrt(recorder.context, parameters, description, image, urt), ConversionResult::kDone);
  return urt;
}

// Its frames, without the file's first six bytes.
inline std::vector<Bytes> FramesOf(const Bytes& urt) {
  std::vector<Bytes> frames;
  for (auto rest = std::span(urt).subspan(6); !rest.empty();) {
    const size_t size = LookAtFrame(rest).size();
    frames.emplace_back(rest.begin(), rest.begin() + static_cast<std::ptrdiff_t>(size));
    rest = rest.subspan(size);
  }
  return frames;
}

// One record of a request: region `number` of `count`.
inline Bytes RequestFrame(uint32_t start, uint32_t end, uint8_t number = 1, uint32_t count = 1) {
  ByteWriter payload;
  payload.U32Big(count);
  payload.U8(number);
  payload.U32Big(start);
  payload.U32Big(end);
  payload.Fill(3, 0);
  return FrameOf(payload.bytes());
}

// Asks for each region from address 0, as long as its expected data.
inline Bytes RequestFile(const std::vector<Bytes>& regions) {
  const auto count = static_cast<uint32_t>(regions.size());
  ByteWriter file;
  file.Text("MZ", 2);
  file.U32Big(count);
  for (uint32_t i = 0; i < count; ++i)
    file.Append(
        RequestFrame(0, static_cast<uint32_t>(regions[i].size()), static_cast<uint8_t>(i + 1), count));
  return file.bytes();
}

}  // namespace vexa
