// The ECF reader: three bytes choose the indices, the rest is the file.
#include <fcntl.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <numeric>

#include "config/ecf.h"

namespace {

// A file with these bytes. The path of one in memory takes longer to find than to read.
const vexa::Path& File(std::span<const uint8_t> bytes) {
  static const vexa::Path path =
      std::filesystem::temp_directory_path() / ("vexa-fuzz-" + std::to_string(getpid()) + ".ecf");
  static const int file = open(path.c_str(), O_CREAT | O_RDWR | O_TRUNC, 0600);
  static const int removes_at_end = std::atexit([] { unlink(path.c_str()); });
  if (removes_at_end != 0 || ftruncate(file, 0) != 0 ||
      pwrite(file, bytes.data(), bytes.size(), 0) != static_cast<ssize_t>(bytes.size()))
    std::abort();
  return path;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size < 3) return 0;
  int messages = 0;
  vexa::Context context;
  context.messages.tell = [&](const vexa::Message&) { ++messages; };
  context.messages.ask = [](const std::string&, const std::string&, bool) { return false; };
  const vexa::Path& ecf = File({data + 3, size - 3});
  vexa::ProjectConfig config;
  config.manufacturer_index = data[0] & 3;
  config.product_index = data[1] & 3;
  config.configuration_index = data[2] & 3;
  // A load that fails says so once and leaves the configuration alone.
  const bool loaded = vexa::InitConfig(context, ecf, config);
  if (messages != (loaded ? 0 : 1)) std::abort();
  if (!loaded && !config.product_name.empty()) std::abort();
  messages = 0;
  const auto tree = vexa::ReadEcfTree(context, ecf);
  if (messages != (tree ? 0 : 1)) std::abort();
  // What a walk of everything finds, a load finds too.
  if (tree && loaded && config.configuration_found &&
      !vexa::FindConfiguration(*tree, config.manufacturer_index, config.product_index,
                               config.configuration_index)) {
    std::abort();
  }
  // Another walk of the same file, for a quarter of the inputs.
  const unsigned sum = std::accumulate(data, data + size, 0u);
  if (sum % 4 == 0) vexa::IsConfigurationAvailable(context, ecf, data[1], {true, true, true});
  // A description compiles to the file that it describes. It takes a hundred times as long as all before: of
  // the inputs up to the size that the long runs keep to, a sixty-fourth have theirs made.
  constexpr size_t kLargest = 512;
  if (size <= kLargest && sum % 64 != 0) return 0;
  const vexa::Bytes file(data + 3, data + size);
  messages = 0;
  bool compiles = false;
  const std::string text = vexa::DescribeEcf(context, "f.ecf", file, compiles);
  if (compiles) {
    const auto compiled = vexa::CompileEcfText(context, "f.toml", text);
    if (!compiled || *compiled != file || messages != 0) std::abort();
  } else if (messages == 0) {
    std::abort();
  }
  return 0;
}
