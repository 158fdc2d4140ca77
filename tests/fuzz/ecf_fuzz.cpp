// The ECF reader: three bytes choose the indices, the rest is the file.
#include <cstdlib>
#include <filesystem>

#include "config/ecf.h"

namespace {

// One folder a process, so that several can run at a time; it goes with the process.
struct Folder {
  Folder() {
    std::string pattern = (std::filesystem::temp_directory_path() / "ecf-fuzz-XXXXXX").string();
    if (!mkdtemp(pattern.data())) std::abort();
    path = pattern;
  }
  ~Folder() { vexa::RemoveFolder(path); }
  Folder(const Folder&) = delete;
  Folder& operator=(const Folder&) = delete;
  vexa::Path path;
};

vexa::Path File() {
  static const Folder folder;
  return folder.path / "f.ecf";
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size < 3) return 0;
  int messages = 0;
  vexa::Context context;
  context.messages.tell = [&](const vexa::Message&) { ++messages; };
  context.messages.ask = [](const std::string&, const std::string&, bool) { return false; };
  if (vexa::WriteWholeFile(File(), {data + 3, size - 3}) != vexa::WriteResult::kDone) std::abort();
  vexa::ProjectConfig config;
  config.manufacturer_index = data[0] & 3;
  config.product_index = data[1] & 3;
  config.configuration_index = data[2] & 3;
  // A load that fails says so once and leaves the configuration alone.
  const bool loaded = vexa::InitConfig(context, File(), config);
  if (messages != (loaded ? 0 : 1)) std::abort();
  if (!loaded && !config.product_name.empty()) std::abort();
  messages = 0;
  const auto tree = vexa::ReadEcfTree(context, File());
  if (messages != (tree ? 0 : 1)) std::abort();
  // What a walk of everything finds, a load finds too.
  if (tree && loaded && config.configuration_found &&
      !vexa::FindConfiguration(*tree, config.manufacturer_index, config.product_index,
                               config.configuration_index)) {
    std::abort();
  }
  // A description compiles to the file that it describes.
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
  vexa::IsConfigurationAvailable(context, File(), data[1], {true, true, true});
  return 0;
}
