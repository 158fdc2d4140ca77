#include <algorithm>
#include <array>

#include "core/bytes.h"
#include "core/zlib_com.h"
#include "image/bin2cod.h"
#include "image/crc32_mpeg2.h"
#include "image/line_frame.h"
#include "image/rc4.h"
#include "image/urt.h"
#include "platform/file_reader.h"

namespace vexa {

namespace {

constexpr size_t kFindingLimit = 100;  // a file that is damaged throughout need not list every packet

void Add(UrtContent& content, uint64_t offset, std::string text) {
  if (content.findings.size() < kFindingLimit) {
    content.findings.push_back({offset, std::move(text)});
  } else if (content.findings.size() == kFindingLimit) {
    content.findings.push_back({offset, "More is wrong from here on."});
  }
}

struct Frame {
  uint64_t offset = 0;
  std::span<const uint8_t> body;
};

// The next frame; nothing, with a finding, when the file cannot be followed from here on.
std::optional<Frame> NextFrame(ByteReader& reader, UrtContent& content) {
  const uint64_t offset = reader.position();
  const FrameView frame = LookAtFrame(reader.Rest());
  if (!frame.whole) {
    Add(content, offset, "The file ends inside this frame.");
    return std::nullopt;
  }
  reader.Skip(frame.size());
  if (frame.start != kStx) Add(content, offset, Format("The frame starts with %02X, not 02.", frame.start));
  if (frame.sum != frame.stated) {
    Add(content, offset,
        Format("The frame's checksum is %08X, its bytes give %08X.", frame.stated, frame.sum));
  }
  if (frame.end != kEtx) Add(content, offset, Format("The frame ends with %02X, not 03.", frame.end));
  // With a wrong sum and a wrong end the length itself is in doubt, and with it where the next frame begins.
  if (frame.sum != frame.stated && frame.end != kEtx) return std::nullopt;
  return Frame{offset, frame.payload};
}

// The length of the name, which is stored modulo 16: the one with which name and block table fill the body.
std::optional<size_t> NameLength(std::span<const uint8_t> body) {
  for (size_t length = body[8] & 15; 36 + length <= body.size(); length += 16) {
    const size_t at = 29 + length;
    const uint32_t blocks = static_cast<uint32_t>(body[at] << 16 | body[at + 1] << 8 | body[at + 2]);
    const uint32_t stated = static_cast<uint32_t>(body[1] << 8 | body[2]);
    if (36 + length + 14 * uint64_t{blocks} == body.size() &&
        stated == (0x8000 | ((blocks * 14 + 47) & 0xFFF)))
      return length;
  }
  return std::nullopt;
}

// Puts the packets together, block by block.
struct Assembler {
  UrtContent& content;
  uint64_t block_start = 0;  // in the image
  uint64_t block_frame = 0;  // in the file
  size_t block = 0;
  uint32_t packets = 0;
  bool started = false;
  uint32_t image_crc = kCrcStart;
  bool short_seen = false;

  void Close() {
    const uint64_t length = content.image.size() - block_start;
    const auto bytes = std::span(content.image).subspan(static_cast<size_t>(block_start));
    const uint32_t crc = Crc32Mpeg2(bytes);
    image_crc = JoinCrc32Mpeg2(image_crc, crc, length);
    if (block >= content.blocks.size()) return;
    UrtBlock& entry = content.blocks[block];
    if (entry.length != (length & 0xFFFFFF)) {
      Add(content, block_frame,
          Format("Block %zu holds %llu bytes, the block table says %u.", block,
                 static_cast<unsigned long long>(length), entry.length));
    }
    if (entry.packets != (packets & 0xFF)) {
      Add(content, block_frame,
          Format("Block %zu has %u packets, the block table says %u.", block, packets, entry.packets));
    }
    if (entry.offset != static_cast<uint32_t>(block_start)) {
      Add(content, block_frame,
          Format("Block %zu begins at %llu, the block table says %u.", block,
                 static_cast<unsigned long long>(block_start), entry.offset));
    }
    if (entry.crc != crc) {
      Add(content, block_frame,
          Format("Block %zu has the CRC %08X, the block table says %08X.", block, crc, entry.crc));
    }
    entry.packets = packets;
  }

  void Open(size_t index, uint64_t frame) {
    if (started) Close();
    if (index != (started ? block + 1 : 0) || index >= content.blocks.size()) {
      Add(content, frame,
          Format("A packet of block %zu stands where one of block %zu is due.", index,
                 started ? block + 1 : 0));
    }
    started = true;
    short_seen = false;
    block = index;
    block_start = content.image.size();
    block_frame = frame;
    packets = 0;
  }

  void Take(const Frame& frame) {
    ByteReader reader(frame.body);
    const uint8_t tag = reader.U8();
    const uint32_t stated = reader.U16Big(), offset = reader.U24Big(), index = reader.U24Big();
    const uint32_t packet = reader.U8(), length = reader.U16Big();
    const auto data = reader.Take(reader.remaining());
    if (!reader.ok()) return Add(content, frame.offset, "The frame is too short for a packet.");
    if (!started) content.packet_tag = tag;
    if (!started || index != block) Open(index, frame.offset);
    if (tag != content.packet_tag)
      Add(content, frame.offset, Format("The packet's tag is %02X, not %02X.", tag, content.packet_tag));
    const uint64_t place = content.image.size() - block_start;
    const bool lengths =
        data.size() <= kMaximumUrtPacket && length == data.size() && stated == (0x8000 | (data.size() + 9));
    if (!lengths)
      Add(content, frame.offset, Format("The packet's lengths do not fit its %zu bytes.", data.size()));
    if (packet != (packets & 0xFF) || offset != (place & 0x3FFFF)) {
      Add(content, frame.offset,
          Format("The packet says it is packet %u at %u of its block, it is packet %u at %llu.", packet,
                 offset, packets, static_cast<unsigned long long>(place)));
    }
    const size_t full = block < content.blocks.size() ? content.blocks[block].packet_size : data.size();
    if (short_seen || data.empty() || data.size() > full) {
      Add(content, frame.offset,
          Format("The packet holds %zu bytes, the block table says %zu.", data.size(), full));
    }
    short_seen = data.size() < full;
    content.image.insert(content.image.end(), data.begin(), data.end());
    ++packets;
  }

  void Finish(uint64_t end) {
    if (started) Close();
    const size_t seen = started ? block + 1 : 0;
    if (seen != content.blocks.size()) {
      Add(content, end,
          Format("The file holds %zu blocks, the block table says %zu.", seen, content.blocks.size()));
    }
    if (image_crc != content.image_crc) {
      Add(content, end,
          Format("The image has the CRC %08X, its description says %08X.", image_crc, content.image_crc));
    }
  }
};

void CheckStoredBytes(UrtContent& content, uint64_t offset) {
  const ImageHeader& header = *content.header;
  const std::span<const uint8_t> image = content.image;
  const auto stored = image.first(header.stored_size);
  const uint32_t crc = Crc32Mpeg2(stored);
  if (crc != header.stored_crc) {
    Add(content, offset,
        Format("The stored bytes have the CRC %08X, the image header says %08X.", crc, header.stored_crc));
  }
  const auto fill = image.subspan(header.stored_size, header.fill);
  if (!std::all_of(fill.begin(), fill.end(), [](uint8_t byte) { return byte == 0xFF; })) {
    Add(content, offset, "The fill behind the stored bytes is not all FF.");
  }
  const bool compressed = header.size != header.stored_size;
  if (crc == header.stored_crc && compressed && !OriginalImage(content))
    Add(content, offset, "The compressed image cannot be expanded.");
}

// Deciphers what stands behind the image and checks what it says.
void CheckImageHeader(UrtContent& content, uint64_t offset) {
  // Whether type 0 has a header depends on a flag that only the header itself holds: there it is looked for.
  const uint32_t room = RoomOfImage(content.type, 0).header;
  if (room == 0) return;
  const uint64_t size = content.image.size();
  if (size >= room) {
    content.header =
        ReadImageHeader(std::span(content.image).last(room), content.type, content.manufacturer_id);
  }
  const bool fits =
      content.header && uint64_t{content.header->stored_size} + content.header->fill + room == size;
  if (!fits) content.header.reset();
  if (fits) return CheckStoredBytes(content, offset);
  if (content.type != 0) Add(content, offset, "The image has no readable header behind it.");
}

constexpr size_t kUrtHead = 6 + kFrameHead;  // magic, frame count, the first frame's start and length

// The most bytes that a file of this head can have: the description's frame and full packets.
uint64_t LargestUrt(std::span<const uint8_t, kUrtHead> head) {
  constexpr uint64_t kPacketHeader = 12;
  ByteReader reader(head);
  reader.Skip(2);
  const uint64_t frames = reader.U32Big();
  return 6 + LookAtFrame(reader.Rest()).size() +
         (frames - (frames != 0)) * (kFrameOverhead + kPacketHeader + kMaximumUrtPacket);
}

}  // namespace

std::optional<ImageHeader> ReadImageHeader(std::span<const uint8_t> enciphered, uint8_t type,
                                           uint8_t manufacturer_id) {
  if (enciphered.size() < kImageHeaderSize) return std::nullopt;
  Bytes plain(enciphered.begin(), enciphered.end());
  Rc4(plain, kImageHeaderKey);
  ByteReader reader(plain);
  ImageHeader header;
  header.manufacturer_id = reader.U8();
  const uint8_t one = reader.U8();
  header.version_a = reader.U8();
  header.software_major = reader.U8();
  const uint8_t versions = reader.U8();
  header.version_b = versions >> 4;
  header.software_minor = versions & 15;
  header.type = reader.U8();
  header.flag = reader.U8();
  header.kind = reader.U8();
  header.start = reader.U32();
  header.size = reader.U32();
  header.stored_crc = reader.U32();
  header.stored_size = reader.U32();
  reader.Skip(4);
  header.time.day = reader.U8();
  header.time.month = reader.U8();
  header.time.year = reader.U16();
  header.time.hour = reader.U8();
  header.time.minute = reader.U8();
  reader.Seek(52);
  header.fill = reader.U32();
  if (one != 1 || (header.type & 15) != type || header.manufacturer_id != manufacturer_id)
    return std::nullopt;
  return header;
}

std::optional<Bytes> OriginalImage(const UrtContent& content) {
  if (!content.header) return content.image;
  const ImageHeader& header = *content.header;
  if (header.stored_size > content.image.size()) return std::nullopt;
  const auto stored = std::span(content.image).first(header.stored_size);
  if (header.size == header.stored_size) return Bytes(stored.begin(), stored.end());
  // Neither method makes more than about 1030 bytes out of one.
  if (header.size > kMaximumImageSize || header.size > uint64_t{stored.size()} * 1100) return std::nullopt;
  if (stored.empty() || stored[0] != 0x78) return ExpandBin2Cod(stored, header.size);
  Bytes original(header.size);
  uint64_t length = 0;
  const Messages silent{[](const Message&) {}, {}};
  if (DecompressBuffer(silent, stored, original, length, "") != 0 || length != header.size)
    return std::nullopt;
  return original;
}

bool ReadDescriptionBody(std::span<const uint8_t> body, uint64_t offset, UrtContent& content) {
  const auto length = body.size() >= 36 ? NameLength(body) : std::nullopt;
  if (!length) {
    Add(content, offset, "The description's length does not fit its name and block table.");
    return false;
  }
  ByteReader reader(body);
  content.header_tag = reader.U8();
  reader.Skip(2);
  const uint8_t types = reader.U8(), versions = reader.U8();
  content.type = types >> 4;
  content.kind = types & 15;
  content.version_b = versions >> 4;
  content.software_minor = versions & 15;
  content.manufacturer_id = reader.U8();
  content.version_a = reader.U8();
  content.software_major = reader.U8();
  reader.Skip(1);
  const auto name = reader.Take(*length);
  content.name.assign(name.begin(), name.end());
  content.space = reader.U32Big();
  content.time.day = reader.U8();
  content.time.month = reader.U8();
  content.time.year = reader.U16Big();
  content.configuration_flag = reader.U8();
  content.time.hour = reader.U8();
  content.time.minute = reader.U8();
  content.time.second = reader.U8();
  content.start = reader.U32Big();
  content.end = reader.U32Big();
  content.blocks.resize(reader.U24Big());
  for (UrtBlock& block : content.blocks) {
    block.offset = reader.U32Big();
    block.packets = reader.U8();
    block.length = reader.U24Big();
    block.packet_size = reader.U16Big();
    block.crc = reader.U32Big();
  }
  content.image_crc = reader.U32Big();
  return reader.ok();
}

UrtContent ReadUrt(std::span<const uint8_t> file) {
  UrtContent content;
  ByteReader reader(file);
  const bool m = reader.U8() == 'M', z = reader.U8() == 'Z';
  if (!m || !z) Add(content, 0, "The file does not begin with \"MZ\".");
  content.begins_as_urt = m || z;
  if (!content.begins_as_urt) return content;
  content.frames = reader.U32Big();
  if (!reader.ok()) {
    Add(content, 0, "The file ends inside its first six bytes.");
    return content;
  }
  const auto first = NextFrame(reader, content);
  if (!first || !ReadDescriptionBody(first->body, first->offset, content)) return content;
  content.image.reserve(reader.remaining());
  Assembler assembler{content};
  uint64_t frames = 1, last = first->offset;
  while (reader.remaining() > 0 && frames < content.frames) {
    const auto frame = NextFrame(reader, content);
    if (!frame) break;
    assembler.Take(*frame);
    last = frame->offset;
    ++frames;
  }
  assembler.Finish(last);
  if (frames != content.frames) {
    Add(content, 2,
        Format("The file says %u frames and holds %llu.", content.frames,
               static_cast<unsigned long long>(frames)));
  } else if (reader.remaining() > 0) {
    Add(content, reader.position(), Format("%zu bytes stand behind the last frame.", reader.remaining()));
  }
  const uint32_t space = content.start == kNoAddress ? content.space : content.end - content.start;
  if (content.space != content.image.size() || content.space != space) {
    Add(content, first->offset,
        Format("The image has %zu bytes, its description says %u.", content.image.size(), content.space));
  }
  CheckImageHeader(content, last);
  return content;
}

std::optional<UrtContent> ReadUrtFile(const Path& path) {
  // A pipe has no size and gives its bytes once: it is read as it comes.
  if (auto reader = OpenFileReader(path)) {
    std::array<uint8_t, kUrtHead> head{};
    const auto there = static_cast<size_t>(std::min<uint64_t>(kUrtHead, reader->size));
    const std::span<uint8_t> start = std::span(head).first(there);
    if (!reader->Read(0, start)) return std::nullopt;
    if (head[0] != 'M' && head[1] != 'Z') return ReadUrt(start);
    const uint64_t largest = LargestUrt(head);
    if (reader->size > largest) {
      UrtContent content;
      Add(content, 2,
          Format("The file has %llu bytes, its frames give at most %llu.",
                 static_cast<unsigned long long>(reader->size), static_cast<unsigned long long>(largest)));
      return content;
    }
  }
  const auto file = ReadWholeFile(path);
  return file ? std::optional(ReadUrt(*file)) : std::nullopt;
}

ReadResult ReadUrtBytes(const Path& path, Bytes& content) {
  auto reader = OpenFileReader(path);
  if (!reader || reader->size < kUrtHead) return ReadWholeFile(path, content);
  content.clear();
  std::array<uint8_t, kUrtHead> head{};
  if (!reader->Read(0, head)) return {ReadResult::kFailed, reader->error};
  const bool begins_as_urt = head[0] == 'M' || head[1] == 'Z';
  const uint64_t size = begins_as_urt ? std::min(reader->size, LargestUrt(head)) : kUrtHead;
  if (size > kReadLimit) return {ReadResult::kFailed, std::make_error_code(std::errc::file_too_large)};
  content.resize(static_cast<size_t>(size));
  if (reader->Read(0, content)) return ReadResult::kDone;
  content.clear();
  return {ReadResult::kFailed, reader->error};
}

}  // namespace vexa
