// Converting a 64 MiB image into a URT file beside `cp` of the image (neither waits for the disk; the time
// with the program's own flush stands beside it), and the ADB image of the largest database that passes the
// limits, there and back. Each figure is the best of several runs.

#include <filesystem>

#include "bench/measure.h"
#include "image/adb.h"
#include "image/decoder.h"
#include "image/urt.h"
#include "platform/heap.h"

namespace vexa {
namespace {

void MeasureUrt(const Context& context, uint8_t compression, bool compressed) {
  const Path input = context.temporary_folder / "image.bin", output = context.temporary_folder / "image.urt";
  const Path copy = context.temporary_folder / "copy.bin";
  Bytes image(size_t{64} << 20);
  std::mt19937_64 random(1);
  // Half noise, half runs, as program memory is.
  for (size_t i = 0; i < image.size(); ++i) image[i] = static_cast<uint8_t>(i / 4096 % 2 ? random() : i / 64);
  Require(WriteWholeFile(input, image) == WriteResult::kDone, "writing the image");
  ConversionParameters parameters;
  parameters.header_tag = 0xF0;
  parameters.packet_tag = 0xF5;
  parameters.block_size = 64 * 1024;
  parameters.packet_size = 2979;
  parameters.compressed = compressed;
  parameters.compression_type = compression;
  ImageDescription description;
  description.type = 1;
  description.name = "Benchmark";
  description.end = static_cast<uint32_t>(image.size()) + kImageHeaderSize;
  const int runs = compressed ? 1 : 7;
  const std::string command = "cp '" + Utf8FromPath(input) + "' '" + Utf8FromPath(copy) + "'";
  const double cp = BestMilliseconds(runs, [&] { RunCommand(command); });
  const double convert = BestMilliseconds(runs, [&] {
    Require(ConvertToUrt(context, parameters, description, input, output) == ConversionResult::kDone,
            "conversion");
  });
  // As cp leaves its copy: in the system's cache, not yet on the disk.
  Context cached = context;
  FileOperations files = SystemFiles();
  files.finish = [](std::FILE* file) { return std::fclose(file) == 0; };
  cached.files = &files;
  const double unflushed = BestMilliseconds(runs, [&] {
    std::filesystem::remove(output);  // renaming over a large file makes some systems flush
    Require(ConvertToUrt(cached, parameters, description, input, output) == ConversionResult::kDone,
            "conversion");
  });
  Bytes urt;
  const double build = BestMilliseconds(runs, [&] {
    Require(BuildUrt(context, parameters, description, image, urt) == ConversionResult::kDone, "building");
  });
  const double check = BestMilliseconds(1, [&] { Require(ReadUrt(urt).findings.empty(), "checking"); });
  const char* name = !compressed ? "plain" : compression == 0 ? "zlib" : "bin2cod";
  const std::string what = Format("URT of 64 MiB, %s", name);
  PrintRow({what, {unflushed}, "`cp`", {cp}, compressed ? "-" : "2 x"});
  PrintRow({what + ", flushed to the disk", {convert}, "`cp`", {cp}});
  PrintRow({what + ", in memory", {build}, "`cp`", {cp}});
  PrintRow({what + ", checking it", {check}, "`cp`", {cp}});
}

void MeasureAdb(const Context& context) {
  std::mt19937 random(1);
  RandomShape shape;
  shape.lnbs = 16;
  shape.satellites = 85;
  shape.carriers = 1000;
  shape.services = 4181;  // 36 * 1000 + 44 * 4181 = 219,964
  shape.favourites = 1000;
  Document document = NewDocument();
  document.sdbs[0].database = MakeRandomDatabase(random, shape);
  ProjectConfig config;
  config.partition_sizes = {3368, 0, 2248, 2560, 220000, 9998, 8 * 7044};
  config.partitions.resize(6);
  config.regions = {{"Data", 3, 0, static_cast<uint32_t>(LayoutOf(config).end) + 64}};
  config.loader = {0xF0, 0xF5, 64, 2979};
  std::optional<AdbImages> images;
  const double build = BestMilliseconds(20, [&] { images = BuildAdbImages(context, document, 0, config); });
  Require(images.has_value(), "building the image");
  bool decoded = true;
  const double decode = BestMilliseconds(20, [&] {
    decoded = decoded && DecodeImage(context, config, images->adb, {}, UserBoxInfo{}).has_value();
  });
  Require(decoded, "decoding the image");
  const std::string what = Format("ADB image of %zu bytes", images->adb.size());
  PrintRow({what + ", building it", {build}});
  PrintRow({what + ", decoding it", {decode}});
}

int Main() {
  const auto folder = MakeTestFolder("vexa-image-bench");
  Require(folder.has_value(), "making a folder");
  Context context;
  context.temporary_folder = *folder;
  context.messages.tell = [](const Message& message) { std::fprintf(stderr, "%s\n", message.text.c_str()); };
  MeasureUrt(context, 0, false);
  MeasureUrt(context, 0, true);
  MeasureUrt(context, 1, true);
  MeasureAdb(context);
  RemoveFolder(*folder);
  return 0;
}

}  // namespace
}  // namespace vexa

int main() {
  vexa::PrepareHeap();
  return vexa::Main();
}
