#include <algorithm>

#include "core/bytes.h"
#include "image/crc32_mpeg2.h"
#include "image/line_frame.h"
#include "image/region_frame.h"
#include "loader/receiver.h"

namespace vexa {

namespace {

constexpr uint32_t kPacketData = 2979;  // bytes, so that a frame stays within 3000
constexpr size_t kSmallBlock = 0x10000, kLargeBlock = 0x80000;
// Bytes: the block table of a larger region would not fit a frame.
constexpr uint64_t kSmallBlockLimit = uint64_t{32} << 20;

uint32_t PacketsOf(uint64_t length) {
  return static_cast<uint32_t>((length + kPacketData - 1) / kPacketData);
}

size_t BlockSize(const Receiver& receiver) {
  return receiver.region_data.size() > kSmallBlockLimit ? kLargeBlock : kSmallBlock;
}

Bytes RegionHeader(const Receiver& receiver) {
  const LoaderRegion& region = receiver.regions[receiver.region];
  const std::span<const uint8_t> data = receiver.region_data;
  const size_t blocks = receiver.region_packets.size();
  ByteWriter writer;
  writer.U8(kRegionHeaderTag);
  writer.U16Big(static_cast<uint32_t>(0x8000 | ((blocks * 14 + 47) & 0xFFF)));
  writer.Fill(5, 0);
  writer.U8(kRegionNameSize);
  writer.Text("Region " + std::to_string(region.number), kRegionNameSize, ' ');
  writer.U32Big(static_cast<uint32_t>(data.size()));
  writer.U8(1), writer.U8(1), writer.U16Big(2000);
  writer.Fill(4, 0);
  writer.U32Big(region.start);
  writer.U32Big(region.end);
  writer.U24Big(static_cast<uint32_t>(blocks));
  for (size_t i = 0; i < blocks; ++i) {
    const size_t offset = i * BlockSize(receiver);
    const auto block = data.subspan(offset, std::min<size_t>(BlockSize(receiver), data.size() - offset));
    writer.U32Big(static_cast<uint32_t>(offset));
    writer.U8(receiver.region_packets[i]);
    writer.U24Big(static_cast<uint32_t>(block.size()));
    writer.U16Big(kPacketData);
    writer.U32Big(Crc32Mpeg2(block));
  }
  writer.U32Big(Crc32Mpeg2(data));
  return std::move(writer.bytes());
}

// Data frame `number`, from 1.
Bytes RegionPacket(const Receiver& receiver, size_t number) {
  size_t block = 0, packet = number - 1;
  while (packet >= receiver.region_packets[block]) packet -= receiver.region_packets[block++];
  const size_t start = block * BlockSize(receiver), offset = packet * kPacketData;
  const size_t end = std::min<size_t>(receiver.region_data.size(), start + BlockSize(receiver));
  const size_t length = std::min<size_t>(kPacketData, end - start - offset);
  ByteWriter writer;
  writer.U8(kRegionDataTag);
  writer.U16Big(static_cast<uint32_t>(0x8000 | ((length + 9) & 0xFFF)));
  writer.U24Big(static_cast<uint32_t>(offset & 0x3FFFF));
  writer.U24Big(static_cast<uint32_t>(block));
  writer.U8(static_cast<uint32_t>(packet));
  writer.U16Big(static_cast<uint32_t>(length));
  writer.Append(std::span(receiver.region_data).subspan(start + offset, length));
  return std::move(writer.bytes());
}

uint64_t NextRandom(uint64_t& state) {
  uint64_t z = state += 0x9E3779B97F4A7C15;
  z = (z ^ z >> 30) * 0xBF58476D1CE4E5B9;
  z = (z ^ z >> 27) * 0x94D049BB133111EB;
  return z ^ z >> 31;
}

}  // namespace

bool FaultOccurs(Receiver& receiver, double probability) {
  if (probability <= 0) return false;
  return static_cast<double>(NextRandom(receiver.random) >> 11) * 0x1p-53 < probability;
}

void Note(Receiver& receiver, const std::string& line) {
  if (receiver.note) receiver.note(line);
}

void SendHandshake(Receiver& receiver, uint64_t now, uint8_t byte) {
  if (FaultOccurs(receiver, receiver.faults.drop)) return Note(receiver, "fault: a handshake left out");
  receiver.out.push_back({now + receiver.faults.delay, {byte}});
}

void SendRegionFrame(Receiver& receiver, uint64_t now, uint32_t wait) {
  const Bytes payload = receiver.region_frame == 0
                            ? RegionHeader(receiver)
                            : RegionPacket(receiver, static_cast<size_t>(receiver.region_frame));
  Bytes frame = FrameOf(payload);
  if (FaultOccurs(receiver, receiver.faults.corrupt)) {
    const uint64_t bit = NextRandom(receiver.random) % (payload.size() * 8);
    frame[kFrameHead + static_cast<size_t>(bit / 8)] ^= static_cast<uint8_t>(1u << bit % 8);
    Note(receiver, "fault: a bit flipped");
  }
  receiver.timer = now + wait + receiver.faults.delay + 3000;
  if (receiver.baud != 0) receiver.timer += frame.size() * 10000 / receiver.baud;
  receiver.out.push_back({now + wait + receiver.faults.delay, std::move(frame)});
}

void OpenRegion(Receiver& receiver) {
  const LoaderRegion& region = receiver.regions[receiver.region];
  const size_t space = region.number == 2 ? 1 : 0;
  receiver.region_data = LoadBytes(receiver.memory, space, region.start, uint64_t{region.end} - region.start);
  receiver.region_packets.clear();
  receiver.region_frames = 0;
  for (size_t left = receiver.region_data.size(); left > 0;) {
    const size_t block = std::min(left, BlockSize(receiver));
    receiver.region_packets.push_back(PacketsOf(block));
    receiver.region_frames += receiver.region_packets.back();
    left -= block;
  }
  receiver.region_frame = -1;
  receiver.repeats = 0;
  receiver.state = LoaderState::kRegion;
  Note(receiver, "region " + std::to_string(region.number));
}

std::array<uint8_t, 7> PlaceDue(const Receiver& receiver) {
  const uint32_t offset = receiver.block_position & 0x3FFFF;
  const auto block = static_cast<uint32_t>(receiver.block);
  const auto byte = [](uint32_t value, int shift) { return static_cast<uint8_t>(value >> shift); };
  return {byte(offset, 16),
          byte(offset, 8),
          byte(offset, 0),
          byte(block, 16),
          byte(block, 8),
          byte(block, 0),
          byte(receiver.block_packet, 0)};
}

bool StoreUpload(Receiver& receiver) {
  ByteWriter file;
  file.Text("MZ", 2);
  file.U32Big(static_cast<uint32_t>(receiver.frames.size()));
  for (const Bytes& payload : receiver.frames) file.Append(FrameOf(payload));
  const UrtContent content = ReadUrt(file.bytes());
  for (const UrtFinding& finding : content.findings) Note(receiver, finding.text);
  const auto image = OriginalImage(content);
  if (!content.findings.empty() || !image) return false;
  // An image without a fixed address goes to the end of its place.
  const uint32_t address =
      content.start != kNoAddress ? content.start : content.end - std::min(content.end, content.space);
  StoreBytes(receiver.memory, content.type == 3 ? 1 : 0, address, *image);
  Note(receiver,
       Format("stored %zu bytes of image type %u at %08X", image->size(), unsigned{content.type}, address));
  return true;
}

}  // namespace vexa
