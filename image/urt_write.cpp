#include <algorithm>
#include <functional>
#include <utility>

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

constexpr const char* kTitle = "URT Conversion";
constexpr size_t kPacketHeader = 12;

// A block of the image. The first `stored` of its `length` bytes are stored ones, the others fill or header.
struct Block {
  uint64_t offset = 0;
  uint32_t length = 0, packets = 0, crc = 0, stored = 0;
};

// The stored bytes, in memory or in a file, read once and in their order.
struct ImageSource {
  uint64_t size = 0;
  // Nothing when they cannot be read.
  std::function<std::optional<std::span<const uint8_t>>(uint64_t offset, size_t length)> take;
};

ImageSource MemorySource(std::span<const uint8_t> bytes) {
  return {bytes.size(), [bytes](uint64_t offset, size_t length) {
            return std::optional(bytes.subspan(static_cast<size_t>(offset), length));
          }};
}

ImageSource FileSource(FileReader& reader) {
  return {reader.size, [&reader, buffer = Bytes()](uint64_t offset, size_t length) mutable {
            if (buffer.size() < length) buffer.resize(length);
            const std::span<uint8_t> part = std::span(buffer).first(length);
            using Part = std::optional<std::span<const uint8_t>>;
            return reader.Read(offset, part) ? Part(part) : Part();
          }};
}

// The image as it is cut: stored bytes and behind them fill and header.
struct Prepared {
  uint64_t space = 0;  // the header packet's image space
  ImageSource stored;
  Bytes compressed;  // what `stored` takes from when the image was compressed
  Bytes tail;
  std::vector<Block> blocks;
  uint32_t stored_crc = kCrcStart, crc = kCrcStart;  // of the stored bytes, and of all, that were taken
  // The header at the end of the tail, of the CRC of all stored bytes; empty: there is none.
  std::function<Bytes(uint32_t stored_crc)> header;
  bool read_failed = false;

  uint64_t size() const { return stored.size + tail.size(); }
  // `length` bytes of the fill and header that are in the block, from its byte `offset` on.
  std::span<const uint8_t> Tail(const Block& block, uint32_t offset, size_t length) const {
    if (length == 0) return {};
    return std::span(tail).subspan(static_cast<size_t>(block.offset + offset - stored.size), length);
  }
};

void AppendBig(uint8_t*& out, uint64_t value, int count) {
  while (count-- > 0) *out++ = static_cast<uint8_t>(value >> (8 * count));
}

void RefuseSpace(const Context& context, const std::string& why) {
  context.messages.tell({Icon::kStop, "Image exceeds the allowed memory space.", kTitle, why});
}

unsigned long long Told(uint64_t bytes) {
  return bytes;
}

// Why an image of `stored` bytes, as it would be sent, does not go between its addresses.
std::string NoRoomText(const ImageDescription& description, const ImageRoom& room, uint64_t stored) {
  if (description.end < description.start)
    return Format("The end address 0x%X lies below the start address 0x%X: choose one above it.",
                  description.end, description.start);
  const uint64_t space = uint64_t{description.end} - description.start;
  if (stored > kMaximumImageSize)
    return Format("The image has %llu bytes, %llu at most can be sent: choose a smaller one.", Told(stored),
                  Told(kMaximumImageSize));
  if (!room.open && space > kMaximumImageSize)
    return Format(
        "From start to end address there are %llu bytes, %llu at most can be sent: choose a lower "
        "end address.",
        Told(space), Told(kMaximumImageSize));
  return Format(
      "The image takes %llu bytes and its header %u, from start to end address there are %llu: choose "
      "a higher end address or a smaller image.",
      Told(stored), room.header, Told(space));
}

bool CompressImage(const Context& context, const ConversionParameters& parameters,
                   std::span<const uint8_t> image, Prepared& prepared) {
  Bytes& output = prepared.compressed;
  if (parameters.compression_type == 1) {
    output = CompressBin2Cod(image);
  } else {
    output.resize(static_cast<size_t>(CompressedCapacity(image.size())));
    const uint64_t length = CompressBuffer(context.messages, image, output, parameters.level, kTitle);
    if (length == 0) return false;
    output.resize(static_cast<size_t>(length));
  }
  // The receiver knows a compressed image by a stored size that differs from its size: one that came out just
  // as long goes as it is.
  if (output.size() != image.size()) prepared.stored = MemorySource(output);
  return true;
}

Bytes PlainHeader(const ConversionParameters& parameters, const ImageDescription& description, bool open,
                  uint64_t size, uint64_t stored_size, uint32_t stored_crc, uint64_t fill) {
  ByteWriter header;
  header.U8(description.manufacturer_id & 0xFFu);
  header.U8(1);
  header.U8(description.version_a & 0xFFu);
  header.U8(description.software_major & 0xFFu);
  header.U8((description.version_b & 15u) << 4 | (description.software_minor & 15u));
  header.U8(description.type & 0xFFu);
  header.U8(description.flag);
  header.U8(description.kind & 0xFFu);
  header.U32(open ? kNoAddress : description.start);
  header.U32(static_cast<uint32_t>(size));
  header.U32(stored_crc);
  header.U32(static_cast<uint32_t>(stored_size));
  header.U32(0xFFFFFFFF);
  header.U8(static_cast<uint32_t>(parameters.time.day));
  header.U8(static_cast<uint32_t>(parameters.time.month));
  header.U16(static_cast<uint32_t>(parameters.time.year));
  header.U8(static_cast<uint32_t>(parameters.time.hour));
  header.U8(static_cast<uint32_t>(parameters.time.minute));
  header.Fill(17, 0xFF);
  header.U8(0);
  header.U32(static_cast<uint32_t>(fill));
  header.Fill(kImageHeaderSize - header.size(), 0xFF);
  if (description.type == 2) {
    constexpr uint8_t kMark[] = {3, 0, 0xFF, 0xFF};
    header.Append(kMark);
    header.Fill(24, 0);
    header.Fill(kType2HeaderSize - header.size(), 0xFF);
  }
  return std::move(header.bytes());
}

// Cuts `size` bytes into blocks.
void CutBlocks(const ConversionParameters& parameters, uint64_t size, Prepared& prepared) {
  const uint64_t stored = prepared.stored.size;
  for (uint64_t offset = 0; offset < size; offset += parameters.block_size) {
    Block block;
    block.offset = offset;
    block.length = static_cast<uint32_t>(std::min<uint64_t>(parameters.block_size, size - offset));
    block.packets = (block.length + parameters.packet_size - 1) / parameters.packet_size;
    if (offset < stored)
      block.stored = static_cast<uint32_t>(std::min<uint64_t>(block.length, stored - offset));
    prepared.blocks.push_back(block);
  }
}

// Fill, header and blocks around what is stored of an image of `size` bytes.
ConversionResult PrepareImage(const Context& context, const ConversionParameters& parameters,
                              const ImageDescription& description, uint64_t size, Prepared& prepared) {
  const ImageRoom room = RoomOfImage(description.type, description.flag);
  const uint64_t space = uint64_t{description.end} - description.start;
  const uint64_t stored = prepared.stored.size;
  if (stored > space - room.header) {
    RefuseSpace(context, NoRoomText(description, room, stored));
    return ConversionResult::kRefused;
  }
  const uint64_t open_size = stored + room.header;
  const uint64_t fill = room.open ? 4 - open_size % 4 : space - room.header - stored;
  prepared.space = room.open ? open_size + fill : space;
  CutBlocks(parameters, stored + fill + room.header, prepared);
  prepared.tail.assign(static_cast<size_t>(fill + room.header), 0xFF);
  if (room.header != 0) {
    prepared.header = [&parameters, &description, open = room.open, size, stored, fill](uint32_t crc) {
      Bytes header = PlainHeader(parameters, description, open, size, stored, crc, fill);
      Rc4(header, kImageHeaderKey);
      return header;
    };
  }
  return ConversionResult::kDone;
}

// The stored bytes of the block, and its CRC. Blocks are taken in their order: once all stored bytes are, the
// header is there. False when they cannot be read.
bool TakeBlock(Prepared& prepared, Block& block, std::span<const uint8_t>& stored) {
  if (block.stored != 0) {
    const auto bytes = prepared.stored.take(block.offset, block.stored);
    prepared.read_failed = !bytes;
    if (!bytes) return false;
    stored = *bytes;
  }
  block.crc = Crc32Mpeg2(stored);
  prepared.stored_crc = JoinCrc32Mpeg2(prepared.stored_crc, block.crc, block.stored);
  if (block.offset + block.stored >= prepared.stored.size && prepared.header) {
    const Bytes header = std::exchange(prepared.header, nullptr)(prepared.stored_crc);
    std::ranges::copy(header, prepared.tail.end() - static_cast<ptrdiff_t>(header.size()));
  }
  block.crc = Crc32Mpeg2(prepared.Tail(block, block.stored, block.length - block.stored), block.crc);
  prepared.crc = JoinCrc32Mpeg2(prepared.crc, block.crc, block.length);
  return true;
}

Bytes DescriptionBody(const ConversionParameters& parameters, const ImageDescription& description,
                      const Prepared& prepared) {
  ByteWriter body;
  const auto count = static_cast<uint32_t>(prepared.blocks.size());
  body.U8(parameters.header_tag);
  body.U16Big(0x8000 | ((count * 14 + 47) & 0xFFF));
  body.U8((description.type & 15u) << 4 | (description.kind & 15u));
  body.U8((description.version_b & 15u) << 4 | (description.software_minor & 15u));
  body.U8(description.manufacturer_id & 0xFFu);
  body.U8(description.version_a & 0xFFu);
  body.U8(description.software_major & 0xFFu);
  body.U8(description.name.size() & 15u);
  body.Text(description.name, description.name.size());
  body.U32Big(static_cast<uint32_t>(prepared.space));
  body.U8(static_cast<uint32_t>(parameters.time.day));
  body.U8(static_cast<uint32_t>(parameters.time.month));
  body.U16Big(static_cast<uint32_t>(parameters.time.year));
  body.U8(parameters.configuration_flag);
  body.U8(static_cast<uint32_t>(parameters.time.hour));
  body.U8(static_cast<uint32_t>(parameters.time.minute));
  body.U8(static_cast<uint32_t>(parameters.time.second));
  body.U32Big(RoomOfImage(description.type, description.flag).open ? kNoAddress : description.start);
  body.U32Big(description.end);
  body.U24Big(count);
  for (const Block& block : prepared.blocks) {
    body.U32Big(static_cast<uint32_t>(block.offset));
    body.U8(block.packets & 0xFF);
    body.U24Big(block.length & 0xFFFFFF);
    body.U8(parameters.packet_size >> 8 & 15);
    body.U8(parameters.packet_size & 0xFF);
    body.U32Big(block.crc);
  }
  body.U32Big(prepared.crc);
  return std::move(body.bytes());
}

// Collects frames and hands them on in large pieces.
class FrameWriter {
 public:
  explicit FrameWriter(const PieceWriter& write) : write_(write), buffer_(kPieceSize) {}

  // Room for `size` bytes, at most kPieceSize; false when an earlier piece could not be written.
  bool Need(size_t size) {
    if (buffer_.size() - used_ >= size) return true;
    return Flush();
  }
  uint8_t* end() { return buffer_.data() + used_; }
  void Advance(const uint8_t* end) { used_ = static_cast<size_t>(end - buffer_.data()); }
  bool Flush() {
    const bool done = used_ == 0 || write_(std::span(buffer_).first(used_));
    used_ = 0;
    return done;
  }

 private:
  static constexpr size_t kPieceSize = size_t{1} << 18;
  const PieceWriter& write_;
  Bytes buffer_;
  size_t used_ = 0;
};

bool AppendPackets(const ConversionParameters& parameters, Prepared& prepared, uint32_t index,
                   FrameWriter& writer) {
  Block& block = prepared.blocks[index];
  std::span<const uint8_t> stored;
  if (!TakeBlock(prepared, block, stored)) return false;
  for (uint32_t packet = 0; packet < block.packets; ++packet) {
    const uint32_t offset = packet * parameters.packet_size;
    const uint32_t length = std::min(parameters.packet_size, block.length - offset);
    if (!writer.Need(length + kPacketHeader + kFrameOverhead)) return false;
    uint8_t* out = BeginFrame(writer.end(), length + kPacketHeader);
    const uint8_t* body = out;
    *out++ = parameters.packet_tag;
    AppendBig(out, 0x8000 | (length + 9), 2);
    AppendBig(out, offset & 0x3FFFF, 3);
    AppendBig(out, index, 3);
    *out++ = static_cast<uint8_t>(packet);
    AppendBig(out, length, 2);
    const uint32_t from_stored = offset < block.stored ? std::min(length, block.stored - offset) : 0;
    const auto first = stored.subspan(from_stored == 0 ? 0 : offset, from_stored);
    const auto rest = prepared.Tail(block, offset + from_stored, length - from_stored);
    out = std::copy(first.begin(), first.end(), out);
    out = std::copy(rest.begin(), rest.end(), out);
    writer.Advance(EndFrame({body, out}, out));
  }
  return true;
}

uint64_t PacketsOf(const Prepared& prepared) {
  uint64_t packets = 0;
  for (const Block& block : prepared.blocks) packets += block.packets;
  return packets;
}

// The first bytes of the file and the description's frame.
Bytes FileStart(const Bytes& body, uint64_t packets) {
  ByteWriter start;
  start.Text("MZ", 2);
  start.U32Big(static_cast<uint32_t>(packets + 1));
  start.Append(FrameOf(body));
  return std::move(start.bytes());
}

bool WriteUrt(const ConversionParameters& parameters, const ImageDescription& description, Prepared& prepared,
              const PieceWriter& write) {
  const auto start = [&] {
    return FileStart(DescriptionBody(parameters, description, prepared), PacketsOf(prepared));
  };
  FrameWriter writer(write);
  // The CRCs in the description are known behind the packets: until then it holds its place.
  if (!write(start())) return false;
  for (uint32_t index = 0; index < prepared.blocks.size(); ++index) {
    if (!AppendPackets(parameters, prepared, index, writer)) return false;
  }
  return writer.Flush() && write.replace_start(start());
}

// What can be told before any byte of an image of `size` bytes is read. False after a message.
bool Check(const Context& context, const ConversionParameters& parameters,
           const ImageDescription& description, uint64_t size) {
  if (parameters.block_size == 0 || parameters.packet_size == 0 ||
      parameters.packet_size > kMaximumUrtPacket) {
    TellWhy(context.messages, Icon::kStop,
            Format("block size %u, packet size %u of 1 to %u bytes", parameters.block_size,
                   parameters.packet_size, kMaximumUrtPacket),
            "Configuration settings not found to process.\nUpdate configuration file and continue");
    return false;
  }
  const ImageRoom room = RoomOfImage(description.type, description.flag);
  const uint64_t space = uint64_t{description.end} - description.start;
  const uint64_t least = room.header == 0 ? 0 : room.header + 1;
  const bool fits = description.end >= description.start && space >= least && size <= kMaximumImageSize &&
                    (room.open || space <= kMaximumImageSize);
  if (!fits) RefuseSpace(context, NoRoomText(description, room, size));
  return fits;
}

bool IsCompressed(const ConversionParameters& parameters, const ImageDescription& description) {
  return parameters.compressed && MayBeCompressed(description.type, description.flag);
}

// Everything before the first byte is written. `image`, in memory, is needed for a compressed one only.
ConversionResult Prepare(const Context& context, const ConversionParameters& parameters,
                         const ImageDescription& description, ImageSource source,
                         std::span<const uint8_t> image, Prepared& prepared) {
  const uint64_t size = source.size;
  if (!Check(context, parameters, description, size)) return ConversionResult::kRefused;
  prepared.stored = std::move(source);
  if (IsCompressed(parameters, description) && !CompressImage(context, parameters, image, prepared))
    return ConversionResult::kRefused;
  return PrepareImage(context, parameters, description, size, prepared);
}

}  // namespace

ImageRoom RoomOfImage(uint16_t type, uint8_t flag) {
  if (type == 2) return {kType2HeaderSize, false};
  if (type == 3 || (type == 0 && flag == 1)) return {};
  return {kImageHeaderSize, (type == 4 || type == 5) && (flag == 1 || flag == 2)};
}

bool MayBeCompressed(uint16_t type, uint8_t flag) {
  return RoomOfImage(type, flag).header != 0;
}

ConversionParameters SetConversionParameters(const ProjectConfig& config, const LocalTime& time) {
  ConversionParameters parameters;
  parameters.header_tag = config.loader.header_tag;
  parameters.packet_tag = config.loader.packet_tag;
  parameters.block_size = config.loader.block_kib * 1024u;
  parameters.packet_size = config.loader.packet_size;
  parameters.configuration_flag = config.configuration_index != 0;
  parameters.compressed = config.compressed_image;
  parameters.compression_type = config.compression_type;
  parameters.level = config.compression_level + 1;
  parameters.time = time;
  return parameters;
}

ImageDescription DescribeImage(const ProjectConfig& config) {
  ImageDescription description;
  description.manufacturer_id = config.manufacturer_id;
  description.software_major = config.software_major;
  description.software_minor = config.software_minor;
  description.version_a = config.version_a;
  description.version_b = config.version_b;
  return description;
}

ConversionResult BuildUrt(const Context& context, const ConversionParameters& parameters,
                          const ImageDescription& description, std::span<const uint8_t> image, Bytes& urt) {
  Prepared prepared;
  const auto result = Prepare(context, parameters, description, MemorySource(image), image, prepared);
  if (result != ConversionResult::kDone) return result;
  urt.clear();
  const uint64_t packets = PacketsOf(prepared) * (kFrameOverhead + kPacketHeader);
  urt.reserve(static_cast<size_t>(prepared.size() + packets + prepared.blocks.size() * 14 +
                                  description.name.size() + 64));
  WriteUrt(parameters, description, prepared, AppendingTo(urt));
  return ConversionResult::kDone;
}

ConversionResult ConvertToUrt(const Context& context, const ConversionParameters& parameters,
                              const ImageDescription& description, const Path& input, const Path& output) {
  // Compression wants the image whole; what is no regular file has no size before it is read.
  std::optional<FileReader> reader;
  Bytes image;
  if (!IsCompressed(parameters, description)) reader = OpenFileReader(input);
  ReadResult read = ReadResult::kDone;
  if (!reader) read = ReadWholeFile(input, image, kMaximumImageSize);
  if (read != ReadResult::kDone) {
    std::error_code error;
    const auto size = std::filesystem::file_size(input, error);
    if (error) return {ConversionResult::kCannotOpen, ReadReason(input, read.error)};
    if (size <= kMaximumImageSize) return {ConversionResult::kReadFailed, ReadReason(input, read.error)};
    RefuseSpace(About(context, Utf8FromPath(input)),
                NoRoomText(description, RoomOfImage(description.type, description.flag), size));
    return ConversionResult::kRefused;
  }
  Prepared prepared;
  const auto result = Prepare(About(context, Utf8FromPath(input)), parameters, description,
                              reader ? FileSource(*reader) : MemorySource(image), image, prepared);
  if (result != ConversionResult::kDone) return result;
  ConversionResult failed = ConversionResult::kReadFailed;
  const auto produce = [&](const PieceWriter& write) {
    Bytes urt;
    const bool done = write.replace_start
                          ? WriteUrt(parameters, description, prepared, write)
                          : WriteUrt(parameters, description, prepared, AppendingTo(urt)) && write(urt);
    failed = ConversionResult(ConversionResult::kReadFailed,
                              ReadReason(input, reader ? reader->error : std::error_code()));
    reader.reset();  // the output may take its place
    return done;
  };
  const WriteResult written = WriteWholeFileBy(output, produce, *context.files);
  if (written == WriteResult::kDone) return ConversionResult::kDone;  // whatever memory is left
  const std::string why = WriteReason(output, written.error);
  if (written == WriteResult::kCannotCreate) return {ConversionResult::kCannotOpen, why};
  if (written == WriteResult::kFailed && prepared.read_failed) return failed;
  return {ConversionResult::kWriteFailed, why};
}

}  // namespace vexa
