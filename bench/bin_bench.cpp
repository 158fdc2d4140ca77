// Opening and saving the largest database (65,535 carriers and services) beside `cp` of its file, the packed
// save beside bare zlib, and peak memory beside the file's size. Each figure is the best of several runs.

#include <zlib.h>

#include <cstring>
#include <filesystem>
#include <fstream>

#include "bench/measure.h"
#include "platform/heap.h"

namespace vexa {
namespace {

// The highest memory in use of this program so far, in KiB; 0 where the system does not tell. What getrusage
// tells may be that of the process which started this one.
double PeakKilobytes() {
  std::ifstream status("/proc/self/status");
  for (std::string line; std::getline(status, line);) {
    if (line.starts_with("VmHWM:")) return std::strtod(line.c_str() + 6, nullptr);
  }
  return 0;
}

// One open and save in a process of its own: the peak that a user's session reaches.
void PrintMemory(const Context& context, const Path& path) {
  const double before = PeakKilobytes();
  Document document;
  Require(OpenBin(context, path, document), "opening");
  const double opened = PeakKilobytes();
  Require(SaveBin(context, document, path).has_value(), "saving");
  const double saved = PeakKilobytes();
  const double size = static_cast<double>(std::filesystem::file_size(path)) / 1024;
  const auto print = [&](const char* what, double peak, const char* meant) {
    PrintRow({what, {peak / 1024, "MB"}, "the file", {size / 1024, "MB"}, meant});
  };
  print("memory before", before, "-");
  print("peak memory of open", opened, "3 x");
  print("peak memory of open and save", saved, "3 x");
}

void PrintTimes(const Context& context, const Path& tool, const Path& path, const Path& copy) {
  const std::string cp = "cp '" + path.string() + "' '" + copy.string() + "'";
  const std::string cp_synced = cp + " && sync '" + copy.string() + "'";
  const double copying = BestMilliseconds(15, [&] { RunCommand(cp); });
  const double synced = BestMilliseconds(15, [&] { RunCommand(cp_synced); });
  const double opening = BestMilliseconds(15, [&] {
    Document document;
    Require(OpenBin(context, path, document), "opening");
  });
  Document document;
  Require(OpenBin(context, path, document), "opening");
  const double building =
      BestMilliseconds(15, [&] { Require(BuildBin(context, document, {}, {}).has_value(), "building"); });
  const double saving =
      BestMilliseconds(15, [&] { Require(SaveBin(context, document, copy).has_value(), "saving"); });
  PrintRow({"open the largest database", {opening}, "`cp`", {copying}});
  const std::string info = "'" + tool.string() + "' info '" + path.string() + "' >/dev/null";
  const double process = BestMilliseconds(15, [&] { RunCommand(info); });
  PrintRow({"open it in a process, `vexa info`", {process}, "`cp`", {copying}, "1.5 x"});
  PrintRow({"lay its file out in memory", {building}, "`cp`", {copying}});
  PrintRow({"save it, flushed to the disk", {saving}, "`cp`", {copying}});
  PrintRow({"save it, flushed to the disk", {saving}, "`cp` and `sync`", {synced}, "1.1 x"});
}

void PrintCompression(const Context& context, const Path& path) {
  Document document;
  Require(OpenBin(context, path, document), "opening");
  const Bytes plain = *BuildBin(context, document, {}, {});
  const double bare = BestMilliseconds(3, [&] {
    uLongf length = compressBound(static_cast<uLong>(plain.size()));
    Bytes packed(length);
    Require(compress2(packed.data(), &length, plain.data(), static_cast<uLong>(plain.size()), 6) == Z_OK,
            "zlib");
  });
  document.compress_payload = true;
  const double packed =
      BestMilliseconds(3, [&] { Require(BuildBin(context, document, {}, {}).has_value(), "packing"); });
  PrintRow({"compressed save", {packed}, "zlib level 6", {bare}});
}

int Run(int argc, char** argv) {
  Context context;
  context.messages.tell = [](const Message& message) { std::fprintf(stderr, "%s\n", message.text.c_str()); };
  if (argc == 3 && std::strcmp(argv[1], "--memory") == 0) {
    PrintMemory(context, argv[2]);
    return 0;
  }
  const auto folder = MakeTestFolder("vexa-bin-bench");
  Require(folder.has_value(), "making a folder");
  const Path path = *folder / "largest.bin";
  SaveLargestDatabase(context, path);
  PrintTimes(context, Path(argv[0]).parent_path() / "vexa", path, *folder / "copy.bin");
  PrintCompression(context, path);
  const std::string memory = "\"" + std::string(argv[0]) + "\" --memory '" + path.string() + "'";
  RunCommand(memory);
  RemoveFolder(*folder);
  return 0;
}

}  // namespace
}  // namespace vexa

int main(int argc, char** argv) {
  vexa::PrepareHeap();
  return vexa::Run(argc, argv);
}
