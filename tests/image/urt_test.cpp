#include "image/urt.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <thread>
#if !defined(_WIN32)
#include <sys/stat.h>
#endif

#include "image/crc32_mpeg2.h"
#include "image/rc4.h"
#include "tests/image/image_maker.h"
#include "tests/support/recorder.h"

namespace vexa {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr const char* kNoRoom = "Image exceeds the allowed memory space.";

std::string HexOf(std::span<const uint8_t> bytes) {
  std::string text;
  for (const uint8_t byte : bytes) text += Format("%02x", byte);
  return text;
}

struct Urt : testing::Test {
  Recorder recorder;
  const Path input = recorder.context.temporary_folder / "in.bin",
             output = recorder.context.temporary_folder / "out.urt";
  ConversionParameters parameters{.header_tag = 0xF0,
                                  .packet_tag = 0xF5,
                                  .block_size = 1024,
                                  .packet_size = 3,
                                  .time = {2003, 12, 9, 8, 5, 59}};
  ImageDescription description{.manufacturer_id = 0x2A,
                               .software_major = 7,
                               .software_minor = 5,
                               .version_a = 3,
                               .version_b = 4,
                               .name = "E2P Data",
                               .start = 0,
                               .end = 8};

  void Type(uint16_t type, uint8_t flag, uint32_t start, uint32_t end) {
    description.type = type;
    description.flag = flag;
    description.start = start;
    description.end = end;
  }
  Bytes Build(const Bytes& image) {
    Bytes urt;
    EXPECT_EQ(BuildUrt(recorder.context, parameters, description, image, urt), ConversionResult::kDone);
    return urt;
  }
  ConversionResult Convert(const Context& context) {
    return ConvertToUrt(context, parameters, description, input, output);
  }
  // Builds, reads back and expects no finding.
  UrtContent Reread(const Bytes& image) {
    UrtContent content = ReadUrt(Build(image));
    EXPECT_THAT(content.findings, IsEmpty()) << (content.findings.empty() ? "" : content.findings[0].text);
    return content;
  }
};

Bytes Counting(size_t size) {
  Bytes bytes(size);
  for (size_t i = 0; i < size; ++i) bytes[i] = static_cast<uint8_t>(i * 7 + i / 256);
  return bytes;
}

TEST_F(Urt, ByteForByteWithoutImageHeader) {
  Type(3, 1, 0, 8);
  description.kind = 5;
  parameters.configuration_flag = 1;
  EXPECT_EQ(
      HexOf(Build({1, 2, 3, 4, 5})),
      "4d5a000000040200003af0803d35452a030708453250204461746100000008090c07d30108053b000000000000000800"
      "000100000000030000080003497b8808497b8808000008c3030200000ff5800c0000000000000000030102030000018a"
      "030200000ff5800c0000030000000100030405ff00000290030200000ef5800b000006000000020002ffff0000038803");
}

TEST_F(Urt, ByteForByteWithEncipheredHeaderAndOpenEnd) {
  Type(4, 1, 0x1000, 0x12345678);
  description.kind = 3;
  description.name = "Seventeen letters";
  parameters.packet_size = 4086;
  EXPECT_EQ(HexOf(Build({1, 2, 3, 4, 5})),
            "4d5a0000000202000043f0803d43452a030701536576656e7465656e206c65747465727300000048090c07d30008053b"
            "ffffffff1234567800000100000000010000480ff6113c1e42113c1e42000012720302000054f5805100000000000000"
            "00480102030405ffffff594b895f1a72e1a3e3038c013a06ed1fa68e2ddaa3e7ccb257de94770c2410792bcce1df47d0"
            "fbf42f089f7fed1753bdab94e14b6d1be521c603b0b4c0b529b90000255403");
}

TEST_F(Urt, RoomByTypeAndFlag) {
  const struct {
    uint16_t type;
    uint8_t flag;
    uint32_t smallest, header;  // smallest space that an empty image is taken in
  } rows[] = {{0, 0, 65, 64}, {0, 1, 0, 0},       {0, 2, 65, 64},     {1, 0, 65, 64},
              {1, 1, 65, 64}, {2, 0, 1025, 1024}, {2, 1, 1025, 1024}, {3, 0, 0, 0},
              {3, 2, 0, 0},   {4, 0, 65, 64},     {5, 3, 65, 64},     {15, 1, 65, 64}};
  for (const auto& row : rows) {
    SCOPED_TRACE(Format("type %u flag %u", row.type, row.flag));
    const auto refuses = [&](size_t size) {
      Bytes urt;
      EXPECT_EQ(BuildUrt(recorder.context, parameters, description, Bytes(size), urt),
                ConversionResult::kRefused);
      ASSERT_EQ(recorder.shown.size(), 1u);
      EXPECT_EQ(recorder.shown[0].title, "URT Conversion");
      EXPECT_THAT(recorder.Texts(), ElementsAre(kNoRoom));
    };
    for (const uint32_t space : {row.smallest, row.smallest + 7}) {
      Type(row.type, row.flag, 0x500, 0x500 + space);
      const UrtContent content = Reread(Bytes(space - row.header, 0x11));
      EXPECT_EQ(content.image.size(), space);
      EXPECT_EQ(content.header.has_value(), row.header != 0);
      refuses(space - row.header + 1);
    }
    if (row.smallest == 0) continue;
    Type(row.type, row.flag, 0x500, 0x500 + row.smallest - 1);
    refuses(0);
  }
}

TEST_F(Urt, RefusalsOfSpaceAndParameters) {
  const char* settings =
      "Configuration settings not found to process.\nUpdate configuration file and continue";
  const struct {
    uint16_t type;
    uint8_t flag;
    uint32_t start, end, block, packet;
    size_t size;
    const char* text;
  } rows[] = {
      {3, 0, 9, 8, 1024, 3, 0, kNoRoom},          {3, 0, 0, (128u << 20) + 1, 1024, 3, 0, kNoRoom},
      {4, 1, 0, 64, 1024, 3, 0, kNoRoom},         {4, 1, 0, 69, 1024, 3, 6, kNoRoom},
      {5, 2, 0xFFFFFFFF, 0, 1024, 3, 0, kNoRoom}, {3, 0, 0, 8, 0, 3, 8, settings},
      {3, 0, 0, 8, 1024, 0, 8, settings},         {3, 0, 0, 8, 1024, 4087, 8, settings},
  };
  for (const auto& row : rows) {
    Type(row.type, row.flag, row.start, row.end);
    parameters.block_size = row.block;
    parameters.packet_size = row.packet;
    Bytes urt = {42};
    EXPECT_EQ(BuildUrt(recorder.context, parameters, description, Bytes(row.size), urt),
              ConversionResult::kRefused);
    EXPECT_EQ(urt, Bytes{42});
    EXPECT_THAT(recorder.Texts(), ElementsAre(row.text));
  }
}

TEST_F(Urt, OpenImagesGrowToTheNextMultipleOfFourEvenFromOne) {
  for (uint32_t size = 0; size < 9; ++size) {
    Type(5, 2, 0, 0xF0000000);
    const UrtContent content = Reread(Counting(size));
    const uint32_t fill = 4 - size % 4;
    EXPECT_EQ(content.space, size + 64 + fill);
    EXPECT_EQ(content.start, kNoAddress);
    ASSERT_TRUE(content.header);
    EXPECT_EQ(content.header->fill, fill);
    EXPECT_EQ(content.header->start, kNoAddress);
    EXPECT_EQ(OriginalImage(content), Counting(size));
  }
}

TEST_F(Urt, BlocksAndPacketsAreCutExactly) {
  parameters.packet_size = 256;
  const struct {
    uint32_t size;
    std::vector<uint32_t> lengths, packets;
  } rows[] = {
      {0, {}, {}},         {1, {1}, {1}},       {256, {256}, {1}},         {257, {257}, {2}},
      {1023, {1023}, {4}}, {1024, {1024}, {4}}, {1025, {1024, 1}, {4, 1}}, {2048, {1024, 1024}, {4, 4}},
  };
  for (const auto& row : rows) {
    Type(3, 0, 0, row.size);
    const Bytes image = Counting(row.size);
    const UrtContent content = Reread(image);
    std::vector<uint32_t> lengths, packets;
    uint32_t frames = 1;
    for (const UrtBlock& block : content.blocks) {
      lengths.push_back(block.length);
      packets.push_back(block.packets);
      frames += block.packets;
    }
    EXPECT_EQ(lengths, row.lengths) << row.size;
    EXPECT_EQ(packets, row.packets) << row.size;
    EXPECT_EQ(content.frames, frames) << row.size;
    EXPECT_EQ(content.image, image);
    EXPECT_EQ(content.image_crc, SlowCrc(image));
  }
}

TEST_F(Urt, CountsAndOffsetsWrapAndAreStillRead) {
  parameters.block_size = 300 * 1024;  // offsets beyond 2^18
  parameters.packet_size = 1000;       // more than 256 packets a block
  Type(0, 1, 0, 700 * 1024);
  const UrtContent content = Reread(Counting(700 * 1024));
  ASSERT_EQ(content.blocks.size(), 3u);
  EXPECT_EQ(content.blocks[0].packets, 308u);
  // More blocks than the description's length field holds.
  parameters.block_size = 1024;
  Type(0, 1, 0, 300 * 1024);
  const Bytes urt = Build(Counting(300 * 1024));
  EXPECT_EQ(urt[11] << 8 | urt[12], 0x8000 | ((300 * 14 + 47) & 0xFFF));
  EXPECT_THAT(ReadUrt(urt).findings, IsEmpty());
}

TEST_F(Urt, NamesOfEveryLengthComeBackWhole) {
  for (size_t length = 0; length < 50; ++length) {
    description.name = std::string(length, 'n');
    Type(3, 0, 0, 40);
    EXPECT_EQ(Reread(Counting(40)).name, description.name);
  }
}

TEST_F(Urt, DescriptionFieldsReachBothHeaders) {
  for (const uint16_t type : std::initializer_list<uint16_t>{0, 2, 7}) {
    Type(type, 3, 0x80001000, 0x80002000);
    description.kind = 14;
    parameters.configuration_flag = 1;
    const UrtContent content = Reread(Counting(100));
    EXPECT_EQ(
        std::tuple(content.type, content.kind, content.manufacturer_id, content.version_a, content.version_b),
        std::tuple(type, 14, 0x2A, 3, 4));
    EXPECT_EQ(std::tuple(content.software_major, content.software_minor, content.start, content.end,
                         content.configuration_flag, content.time.second),
              std::tuple(7, 5, 0x80001000u, 0x80002000u, 1, 59));
    ASSERT_TRUE(content.header);
    const ImageHeader& header = *content.header;
    EXPECT_EQ(std::tuple(header.type, header.kind, header.flag, header.manufacturer_id, header.version_a,
                         header.version_b),
              std::tuple(type, 14, 3, 0x2A, 3, 4));
    EXPECT_EQ(std::tuple(header.start, header.size, header.stored_size, header.time.year, header.time.month,
                         header.time.day),
              std::tuple(0x80001000u, 100u, 100u, 2003, 12, 9));
    EXPECT_EQ(header.stored_crc, SlowCrc(Counting(100)));
  }
}

TEST_F(Urt, Type2HeaderBlockIsEncipheredWhole) {
  Type(2, 0, 0, 1100);
  Bytes image = Reread(Counting(10)).image;
  Bytes block(image.end() - 1024, image.end());
  Rc4(block, "pelqorin");
  Bytes expected(1024 - 64, 0xFF);
  expected[0] = 3;
  expected[1] = 0;
  std::fill(expected.begin() + 4, expected.begin() + 28, uint8_t{0});
  EXPECT_EQ(Bytes(block.begin() + 64, block.end()), expected);
}

TEST_F(Urt, CompressedImagesComeBack) {
  Bytes image = Counting(5000);
  std::fill(image.begin(), image.begin() + 3000, uint8_t{0xFF});
  for (const uint8_t method : std::initializer_list<uint8_t>{0, 1}) {
    for (const int level : {1, 9}) {
      parameters.compressed = true;
      parameters.compression_type = method;
      parameters.level = level;
      Type(4, 1, 0, 100000);
      const UrtContent content = Reread(image);
      ASSERT_TRUE(content.header);
      EXPECT_LT(content.header->stored_size, 3000u);
      EXPECT_EQ(content.image[0] == 0x78, method == 0);
      EXPECT_EQ(OriginalImage(content), image);
    }
  }
}

TEST_F(Urt, ImagesWithoutAHeaderGoAsTheyAreWhateverTheSettingsSay) {
  PutFile(input, Counting(5000));
  for (const auto& [type, flag] : {std::pair(3, 0), {3, 1}, {0, 1}}) {
    Type(static_cast<uint16_t>(type), static_cast<uint8_t>(flag), 0, 8000);
    EXPECT_FALSE(MayBeCompressed(description.type, description.flag));
    parameters.compressed = false;
    const Bytes plain = Build(Counting(5000));
    for (const uint8_t method : std::initializer_list<uint8_t>{0, 1}) {
      parameters.compressed = true;
      parameters.compression_type = method;
      EXPECT_EQ(Build(Counting(5000)), plain) << type << ' ' << flag;
      EXPECT_EQ(Convert(recorder.context), ConversionResult::kDone);
      EXPECT_EQ(ReadWholeFile(output), plain) << type << ' ' << flag;
    }
  }
  for (const auto& [type, flag] : {std::pair(0, 0), {0, 2}, {1, 1}, {2, 0}, {4, 1}, {5, 2}, {15, 1}})
    EXPECT_TRUE(MayBeCompressed(static_cast<uint16_t>(type), static_cast<uint8_t>(flag))) << type;
}

TEST_F(Urt, AnImageThatCompressesToItsOwnSizeGoesAsItIs) {
  Type(5, 2, 0, 1000);
  parameters.compressed = true;
  parameters.compression_type = 1;
  const Bytes image = {0x23, 0xCB, 0xCB, 0xCB, 0xCB, 0};
  const UrtContent content = Reread(image);
  EXPECT_EQ(content.header->stored_size, image.size());
  EXPECT_EQ(OriginalImage(content), image);
}

TEST_F(Urt, AnyChangedOrMissingByteIsReported) {
  Type(4, 1, 0, 100000);
  parameters.packet_size = 50;
  const Bytes urt = Build(Counting(120));
  for (size_t i = 0; i < urt.size(); ++i) {
    for (const uint8_t flip : std::initializer_list<uint8_t>{0x01, 0x80, 0xFF}) {
      Bytes changed = urt;
      changed[i] = static_cast<uint8_t>(changed[i] ^ flip);
      EXPECT_FALSE(ReadUrt(changed).findings.empty()) << "byte " << i << " flipped by " << int{flip};
    }
    EXPECT_FALSE(ReadUrt(std::span(urt).first(i)).findings.empty()) << "cut to " << i;
  }
  Bytes longer = urt;
  longer.push_back(0);
  EXPECT_FALSE(ReadUrt(longer).findings.empty());
}

// A change whose frame checksum was put right again, so that only the field itself tells.
TEST_F(Urt, ChangedFieldsAreReportedBehindARightChecksum) {
  Type(4, 1, 0, 100000);
  parameters.packet_size = 50;
  const Bytes urt = Build(Counting(120));
  const size_t table = 10 + 32 + 8, packet = 6 + 9 + (36 + 8 + 14) + 4;  // of the name "E2P Data", one block
  const struct {
    size_t at, frame;
    const char* text;
  } rows[] = {
      {10 + 8, 6, "description's length"},  // name length
      {10 + 2, 6, "description's length"},
      {10 + 9 + 8 + 3, 6, "its description says"},
      {table + 3, 6, "begins at"},
      {table + 4, 6, "packets, the block table says"},
      {table + 7, 6, "bytes, the block table says"},
      {table + 9, 6, "packet holds"},
      {table + 13, 6, "has the CRC"},
      {table + 17, 6, "The image has the CRC"},
      {packet + 0, packet - 4, "tag"},
      {packet + 2, packet - 4, "lengths do not fit"},
      {packet + 5, packet - 4, "says it is packet"},
      {packet + 8, packet - 4, "of block"},
      {packet + 9, packet - 4, "says it is packet"},
      {packet + 11, packet - 4, "lengths do not fit"},
      {packet + 12, packet - 4, "Block 0 has the CRC"},
  };
  for (const auto& row : rows) {
    Bytes changed = urt;
    const auto length = static_cast<size_t>(changed[row.frame + 1] << 16 | changed[row.frame + 2] << 8 |
                                            changed[row.frame + 3]);
    changed[row.at] ^= 0x01;
    uint32_t sum = 0;
    for (size_t i = 0; i < length; ++i) sum += changed[row.frame + 4 + i];
    for (size_t i = 0; i < 4; ++i)
      changed[row.frame + 4 + length + i] = static_cast<uint8_t>(sum >> (24 - 8 * i));
    std::string all;
    for (const UrtFinding& finding : ReadUrt(changed).findings) all += finding.text + "\n";
    EXPECT_THAT(all, HasSubstr(row.text)) << row.at;
    EXPECT_THAT(all, testing::Not(HasSubstr("checksum"))) << row.at;
  }
}

TEST_F(Urt, FindingsNameThePlace) {
  Type(3, 0, 0, 9);
  Bytes urt = Build(Counting(9));
  const size_t second_packet = 6 + 9 + 58 + 9 + 15;
  urt[second_packet + 4 + 12] ^= 0x10;
  const UrtContent content = ReadUrt(urt);
  ASSERT_FALSE(content.findings.empty());
  EXPECT_EQ(content.findings[0].offset, second_packet);
  EXPECT_THAT(content.findings[0].text, HasSubstr("checksum"));
}

// Each is larger than any file that can be read whole.
TEST_F(Urt, FilesAreJudgedByTheirFirstBytesAndTheirSize) {
  Type(3, 0, 0, 9);
  const Bytes urt = Build(Counting(9));
  const auto findings = [&](const Bytes& start, uint64_t size) {
    PutFile(input, start);
    if (size != 0) std::filesystem::resize_file(input, size);
    const auto content = ReadUrtFile(input);
    std::vector<std::string> texts;
    for (const UrtFinding& finding : content.value_or(UrtContent{}).findings) texts.push_back(finding.text);
    if (!content) texts.push_back("not read");
    return texts;
  };
  const uint64_t large = (uint64_t{1} << 31) + 1;
  EXPECT_THAT(findings({0}, large), ElementsAre("The file does not begin with \"MZ\"."));
  EXPECT_THAT(findings(urt, large),
              ElementsAre("The file has 2147483649 bytes, its frames give at most 12394."));
  EXPECT_THAT(findings(BytesOf("MZ"), large),
              ElementsAre("The file has 2147483649 bytes, its frames give at most 15."));
  EXPECT_THAT(findings({}, 0), ElementsAre("The file does not begin with \"MZ\"."));
  EXPECT_THAT(findings(BytesOf("MZ"), 0), ElementsAre("The file ends inside its first six bytes."));
  Bytes damaged = urt;
  damaged[0] = 'N';  // one letter of two: the rest is still read
  EXPECT_EQ(findings(damaged, 0).size(), 1u);
  EXPECT_EQ(ReadUrtFile(input)->image, Counting(9));
  EXPECT_THAT(findings(urt, 0), IsEmpty());
  EXPECT_FALSE(ReadUrtFile(recorder.context.temporary_folder / "none"));
  // An upload takes the whole file; of one that is none, however long, its head.
  Bytes content;
  EXPECT_EQ(ReadUrtBytes(input, content), ReadResult::kDone);
  EXPECT_EQ(content, ReadWholeFile(input));
  const Path zeros = recorder.context.temporary_folder / "zeros";
  PutFile(zeros, {});
  std::filesystem::resize_file(zeros, uint64_t{3} << 30);
  EXPECT_EQ(ReadUrtBytes(zeros, content), ReadResult::kDone);
  EXPECT_LT(content.size(), 100u);
  EXPECT_EQ(ReadUrtBytes(recorder.context.temporary_folder / "none", content), ReadResult::kCannotOpen);
}

TEST_F(Urt, FilesAppearWholeOrNotAtAll) {
  Type(3, 0, 0, 8);
  const ConversionResult missing = Convert(recorder.context);
  EXPECT_EQ(missing, ConversionResult::kCannotOpen);
  EXPECT_EQ(missing.detail, ReadReason(input, WhyUnreadable(input)));
  PutFile(input, Counting(8));
  PutFile(output, BytesOf("old"));
  // Create, description, packets, description with its CRCs, finish, replace.
  for (int step = 1; step <= 6; ++step) {
    recorder.FailStep(step);
    const ConversionResult result = Convert(recorder.context);
    EXPECT_EQ(result, step == 1 ? ConversionResult::kCannotOpen : ConversionResult::kWriteFailed) << step;
    EXPECT_EQ(result.detail, Recorder::FullDisk(output)) << step;
    EXPECT_EQ(ReadWholeFile(output), BytesOf("old")) << step;
  }
  recorder.FailStep(0);
  EXPECT_EQ(Convert(recorder.context), ConversionResult::kDone);
  EXPECT_EQ(ReadWholeFile(output), Build(Counting(8)));
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(recorder.context.temporary_folder), {}), 2);
}

// Files are read block by block, memory is not, and a pipe has no start to go back to: all make the same.
TEST_F(Urt, FilesOfManyBlocksPipesAndShorteningOnes) {
  parameters.packet_size = 1000;
  for (const uint32_t size : {1u, 1023u, 1024u, 1025u, 5000u}) {
    Type(1, 0, 0, 9000);
    PutFile(input, Counting(size));
    EXPECT_EQ(Convert(recorder.context), ConversionResult::kDone);
    EXPECT_EQ(ReadWholeFile(output), Build(Counting(size))) << size;
  }
  FileOperations files = SystemFiles();
  files.create = [&](const Path& path) {
    std::filesystem::resize_file(input, 4999);
    return SystemFiles().create(path);
  };
  Context context = recorder.context;
  context.files = &files;
  EXPECT_EQ(Convert(context), ConversionResult::kReadFailed);
  EXPECT_EQ(ReadWholeFile(output), Build(Counting(5000))) << "kept";
#if !defined(_WIN32)
  const Path pipe = recorder.context.temporary_folder / "pipe";
  ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
  std::optional<Bytes> taken;
  std::thread reader([&] { taken = ReadWholeFile(pipe); });
  const auto piped = ConvertToUrt(recorder.context, parameters, description, input, pipe);
  EXPECT_EQ(piped, ConversionResult::kDone) << piped.detail;
  if (piped != ConversionResult::kDone) std::ofstream(pipe).put('?');  // or the reader waits for ever
  reader.join();
  EXPECT_EQ(taken, Build(Counting(4999)));
#endif
}

}  // namespace
}  // namespace vexa
