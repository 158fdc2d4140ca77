// The URT file: an image cut into blocks and packets, as the receiver's loader takes it. Big-endian
// throughout.
//
// File: the frames (line_frame.h) hold the bodies below, first the image's description, then a packet each,
// blocks in order
//   0 2 magic "MZ"            2 4 frame count                        6 frames
// Description body, n bytes of name, b blocks
//   0 1 header tag            1 2 0x8000 | (14 b + 47 mod 4096)      3 1 image type << 4 | image kind
//   4 1 version B << 4 | software minor      5 1 manufacturer        6 1 version A   7 1 software major
//   8 1 n mod 16 (the name itself is whole)  9 n name
//   9+n 4 image space         13+n 1 day  14+n 1 month  15+n 2 year  17+n 1 configuration flag
//   18+n 1 hour  19+n 1 minute  20+n 1 second   21+n 4 start address   25+n 4 end address
//   29+n 3 b                  32+n 14 b block table                  32+n+14b 4 CRC of the whole image
// Block table entry
//   0 4 offset in the image   4 1 packets mod 256                    5 3 length mod 2^24
//   8 1 packet size >> 8      9 1 packet size & 255                  10 4 CRC of the block
// Packet body, d bytes of data
//   0 1 packet tag            1 2 0x8000 | (d + 9)                   3 3 offset in the block mod 2^18
//   6 3 block                 9 1 packet in the block mod 256        10 2 d (12 bits)         12 d data
//
// The image in it is the stored bytes (compressed or as they were), a fill of 0xFF, and, for most image
// types, a 64-byte header enciphered with RC4; type 2 has 1024 bytes there. That header, little-endian, 0xFF
// where unnamed:
//   0 1 manufacturer          1 1 1                                  2 1 version A
//   3 1 software major        4 1 version B << 4 | software minor    5 1 image type
//   6 1 flag                  7 1 image kind                         8 4 start address
//   12 4 size before compression                                     16 4 CRC of the stored bytes
//   20 4 stored size          24 4 0xFFFFFFFF
//   28 1 day  29 1 month  30 2 year  32 1 hour  33 1 minute          51 1 0   52 4 fill
#pragma once

#include <optional>
#include <span>
#include <string>
#include <vector>

#include "config/project_config.h"
#include "core/context.h"
#include "platform/clock.h"

namespace vexa {

inline constexpr size_t kLongestImageName = 49;  // bytes, as a region's

inline constexpr uint64_t kMaximumImageSize = uint64_t{128} << 20;
inline constexpr uint32_t kMaximumUrtPacket = 4086;  // its header's length field has 12 bits
inline constexpr uint32_t kImageHeaderSize = 64;
inline constexpr uint32_t kType2HeaderSize = 1024;
inline constexpr uint32_t kNoAddress = 0xFFFFFFFF;

struct ConversionResult {
  enum State {
    kDone = 0,
    kCannotOpen = 1,  // input cannot be read or output cannot be created
    kRefused = 2,     // the image does not fit; a message was shown
    kReadFailed = 3,
    kWriteFailed = 4,
  };
  State state = kDone;
  std::string detail;  // of a file that was refused: which one and why

  ConversionResult(State reached, std::string why = {}) : state(reached), detail(std::move(why)) {}
  operator State() const { return state; }
};

// How an image is cut and framed; from the configuration, with the time of the conversion.
struct ConversionParameters {
  uint8_t header_tag = 0, packet_tag = 0;
  uint32_t block_size = 0, packet_size = 0;  // bytes
  uint8_t configuration_flag = 0;            // 1 when the configuration index is not 0
  bool compressed = false;                   // where the image type may be
  uint8_t compression_type = 0;              // 0 Zlib, 1 Bin2Cod
  int level = 6;                             // 1-9, Zlib
  LocalTime time;
};

struct ImageDescription {
  uint16_t type = 0, kind = 0;
  uint8_t flag = 0;
  uint16_t manufacturer_id = 0, software_major = 0, software_minor = 0, version_a = 0, version_b = 0;
  std::string name;             // single-byte text
  uint32_t start = 0, end = 0;  // addresses, end exclusive
};

// The configuration's loader parameters, flag and compression; `time` is what the file carries.
ConversionParameters SetConversionParameters(const ProjectConfig& config, const LocalTime& time);
// A description with the configuration's ids and versions; type, kind, name and addresses are the caller's.
ImageDescription DescribeImage(const ProjectConfig& config);

struct ImageRoom {
  uint32_t header = 0;  // bytes
  bool open = false;    // types 4 and 5 with flag 1 or 2: no fixed address, the fill only rounds up
};
// The header that an image type keeps behind the image, and whether the space is filled up with 0xFF.
ImageRoom RoomOfImage(uint16_t type, uint8_t flag);

// False for an image type without a header: nothing could tell the receiver that such an image is compressed,
// so it goes as it is, whatever `compressed` says.
bool MayBeCompressed(uint16_t type, uint8_t flag);

// The whole URT file of `image` in `urt`, which is left alone unless the result is kDone; kRefused comes
// after a message.
ConversionResult BuildUrt(const Context& context, const ConversionParameters& parameters,
                          const ImageDescription& description, std::span<const uint8_t> image, Bytes& urt);
// As BuildUrt, from file to file; the output appears whole or not at all.
ConversionResult ConvertToUrt(const Context& context, const ConversionParameters& parameters,
                              const ImageDescription& description, const Path& input, const Path& output);

struct UrtBlock {
  uint32_t offset = 0, length = 0, packet_size = 0, crc = 0;  // as the table states them
  uint32_t packets = 0;                                       // counted in the file
};

// The plain fields of the enciphered image header.
struct ImageHeader {
  uint8_t manufacturer_id = 0, version_a = 0, software_major = 0, version_b = 0, software_minor = 0;
  uint8_t type = 0, flag = 0, kind = 0;
  uint32_t start = 0, size = 0, stored_crc = 0, stored_size = 0, fill = 0;
  LocalTime time;  // without seconds
};

// A place in the file where it is not as it should be.
struct UrtFinding {
  uint64_t offset = 0;  // from the start of the file
  std::string text;
};

// A URT file taken apart, as far as it could be.
struct UrtContent {
  bool begins_as_urt = true;  // false: it is no URT file, and the fields say nothing
  uint8_t header_tag = 0, packet_tag = 0;
  uint8_t type = 0, kind = 0, manufacturer_id = 0, version_a = 0, version_b = 0, software_major = 0,
          software_minor = 0;
  std::string name;
  uint32_t space = 0, start = 0, end = 0, image_crc = 0;
  uint8_t configuration_flag = 0;
  LocalTime time;
  uint32_t frames = 0;  // as the file states it
  std::vector<UrtBlock> blocks;
  Bytes image;                        // with fill and enciphered header
  std::optional<ImageHeader> header;  // deciphered; nothing when the image has none
  std::vector<UrtFinding> findings;   // empty: every checksum, CRC and field holds
};

// Reads the description body of the first frame into `content`, offsets in findings from `offset` on. False,
// with a finding, when its length does not fit its name and block table.
bool ReadDescriptionBody(std::span<const uint8_t> body, uint64_t offset, UrtContent& content);

// Takes the file apart and checks all of it. Never fails: what is wrong is in `findings`. When both
// of its first two bytes are wrong it is no URT file, and nothing more is said of it.
UrtContent ReadUrt(std::span<const uint8_t> file);
// The same from a file, which is judged by its first bytes and its size before the rest is read. Nothing when
// it cannot be read.
std::optional<UrtContent> ReadUrtFile(const Path& path);
// The bytes that an upload sends of the file: as many as its head says there can be; of a file that does not
// begin as a URT file the head alone.
ReadResult ReadUrtBytes(const Path& path, Bytes& content);

// Deciphers and reads the header behind an image; nothing when there is none of this type there. `enciphered`
// is the end of the image: kImageHeaderSize bytes, kType2HeaderSize for type 2.
std::optional<ImageHeader> ReadImageHeader(std::span<const uint8_t> enciphered, uint8_t type,
                                           uint8_t manufacturer_id);

// The bytes that went into the conversion: header and fill taken off and expanded when they are compressed.
// Without a header the whole image. Nothing when the stored bytes are damaged.
std::optional<Bytes> OriginalImage(const UrtContent& content);

}  // namespace vexa
