// adb and urt: the receiver's images.
#include <filesystem>
#include <nlohmann/json.hpp>

#include "cli/commands.h"
#include "cli/usage.h"
#include "core/nearest_word.h"
#include "image/adb.h"
#include "image/decoder.h"
#include "image/transfer_files.h"
#include "image/urt.h"
#include "platform/text.h"

namespace vexa {

namespace {

struct BuildOptions {
  std::string file, output, sdb = "1";
  bool dry_run = false;
};

struct UrtOptions {
  std::string file, output, name, compression;
  uint16_t type = 0, kind = 0;
  uint8_t flag = 0;
  uint32_t start = 0, end = 0;
};

Bytes ReadMade(CommandState& state, const char* name) {
  const Path path = state.context.temporary_folder / name;
  Bytes content;
  const ReadResult read = ReadWholeFile(path, content);
  if (read == ReadResult::kDone) return content;
  TellWhy(state.context.messages, Icon::kStop, ReadReason(path, read.error), "File access error");
  throw CommandFailed{};
}

// Folders that a command makes for its output; unless they are kept, those that were not there go again.
struct MadeFolder {
  Path uppermost;
  bool keep = false;
  MadeFolder() = default;
  // The object is whole before anything is made, so that its end removes that also when memory runs out here.
  explicit MadeFolder(const Path& folder) : MadeFolder() {
    std::error_code error;
    for (Path part = folder; !part.empty() && !std::filesystem::exists(part, error);) {
      uppermost = part;
      part = part.parent_path();
      if (part == uppermost) break;  // a drive that is not there
    }
    std::filesystem::create_directories(folder, error);
  }
  ~MadeFolder() {
    if (!keep) RemoveFolder(uppermost);
  }
  MadeFolder(const MadeFolder&) = delete;
  MadeFolder& operator=(const MadeFolder&) = delete;
};

std::vector<NamedPath> OutputsIn(CommandState& state, const Path& folder) {
  std::vector<NamedPath> outputs = {{"--output", folder / kAdbImageFile}, {"--output", folder / kAdbUrtFile}};
  if (SelectedIn(state, ConfigurationFile(state), state.select).configuration == 1)
    outputs.insert(outputs.end(), {{"--output", folder / kE2pImageFile}, {"--output", folder / kE2pUrtFile}});
  return outputs;
}

// How full each table would be.
void ShowRooms(CommandState& state, const BuildOptions& options) {
  const ProjectConfig config = LoadCommandConfig(state);
  const Document document = OpenDocument(state, options.file);
  const size_t sdb = ParseList(state, options.sdb, document.sdbs.size(), "SDB")[0];
  for (const TableUse& table : AdbRooms(*document.sdbs[sdb].database, config))
    state.output += table.table + " " + std::to_string(table.used) + "/" + std::to_string(table.room) + "\n";
  state.print_output_on_failure = true;  // what does not fit is a result
  if (!BuildAdbImages(state.context, document, sdb, config)) throw CommandFailed{};
}

void BuildAdb(CommandState& state, const BuildOptions& options) {
  if (options.dry_run) return ShowRooms(state, options);
  if (options.output.empty()) throw CLI::RequiredError("--output");
  const Path folder = PathFromUtf8(options.output);
  ExpectApart({{"DB", PathFromUtf8(options.file)}, {"--ecf", ConfigurationFile(state)}},
              OutputsIn(state, folder));
  RequireTemporaryFolder(state);
  const ProjectConfig config = LoadCommandConfig(state);
  const Document document = OpenDocument(state, options.file);
  const auto chosen = ParseList(state, options.sdb, document.sdbs.size(), "SDB");
  int count = 0;
  if (!CreateAdbPartitionFiles(state.context, document, chosen[0], config, CommandTime(state), count))
    throw CommandFailed{};
  std::vector<const char*> names = {kAdbImageFile, kAdbUrtFile};
  if (count == 2) names.insert(names.end(), {kE2pImageFile, kE2pUrtFile});
  std::vector<FileContent> contents;
  contents.reserve(names.size());
  for (const char* name : names) contents.push_back({folder / name, ReadMade(state, name)});
  MadeFolder made(folder);
  size_t refused = 0;
  const WriteResult result = WriteWholeFiles(contents, refused, *state.context.files);
  made.keep = state.output_made = result == WriteResult::kDone;
  if (!made.keep) ExpectWritten(state, Utf8FromPath(contents[refused].path), result);
}

void RequestAdb(CommandState& state, const std::string& output) {
  ExpectApart({{"--ecf", ConfigurationFile(state)}}, {{"--output", PathFromUtf8(output)}});
  const ProjectConfig config = LoadCommandConfig(state);
  const auto request = BuildDownloadRequest(state.context, config);
  if (!request) throw CommandFailed{};
  WriteOutput(state, output, *request);
}

void DecodeAdb(CommandState& state, const BuildOptions& options) {
  const Path folder = PathFromUtf8(options.file);
  ExpectApart(
      {{"DIR", folder / kAdbImageFile}, {"DIR", folder / kE2pImageFile}, {"--ecf", ConfigurationFile(state)}},
      {{"--output", PathFromUtf8(options.output)}});
  const ProjectConfig config = LoadCommandConfig(state);
  const auto decoded = DecodeFolder(state.context, config, folder, UserBoxInfo{});
  if (!decoded) throw CommandFailed{};
  WriteOutput(state, options.output, decoded->file);
}

// The level of "zlib:1" to "zlib:9"; 0 for "bin2cod", -1 for other text.
int CompressionLevel(const std::string& text) {
  if (text == "bin2cod") return 0;
  const bool zlib = text.size() == 6 && text.starts_with("zlib:") && text[5] >= '1' && text[5] <= '9';
  return zlib ? text[5] - '0' : -1;
}

void BuildUrtFile(CommandState& state, const UrtOptions& options) {
  ExpectApart({{"IMAGE", PathFromUtf8(options.file)}, {"--ecf", ConfigurationFile(state)}},
              {{"--output", PathFromUtf8(options.output)}});
  if (!options.compression.empty() && !MayBeCompressed(options.type, options.flag))
    throw CLI::ValidationError("--compress", "an image without an image header cannot be compressed");
  const ProjectConfig config = LoadCommandConfig(state);
  ConversionParameters parameters = SetConversionParameters(config, CommandTime(state));
  parameters.compressed = !options.compression.empty();
  if (parameters.compressed) {
    parameters.level = CompressionLevel(options.compression);
    parameters.compression_type = parameters.level == 0;
  }
  ImageDescription description = DescribeImage(config);
  description.type = options.type;
  description.kind = options.kind;
  description.flag = options.flag;
  description.name = LatinFromUtf8(options.name);
  description.start = options.start;
  description.end = options.end;
  const ConversionResult result = ConvertToUrt(state.context, parameters, description,
                                               PathFromUtf8(options.file), PathFromUtf8(options.output));
  switch (result.state) {
    case ConversionResult::kDone:
      state.output_made = true;
      return;
    case ConversionResult::kCannotOpen:
      TellWhy(state.context.messages, Icon::kStop, result.detail, "Error No: -3 \n File Access Error!!!");
      break;
    case ConversionResult::kRefused:
      break;
    case ConversionResult::kReadFailed:
      TellWhy(state.context.messages, Icon::kStop, result.detail, "Could not read file \"%s\".",
              options.file.c_str());
      break;
    case ConversionResult::kWriteFailed:
      TellWhy(state.context.messages, Icon::kStop, result.detail, "Could not write file \"%s\".",
              options.output.c_str());
      break;
  }
  throw CommandFailed{};
}

std::string TimeText(const LocalTime& time, bool seconds) {
  std::string text =
      Format("%04d-%02d-%02d %02d:%02d", time.year, time.month, time.day, time.hour, time.minute);
  return seconds ? text + Format(":%02d", time.second) : text;
}

std::string UrtText(const UrtContent& urt) {
  std::string text;
  text += Format("Name:           %s\n", Utf8FromLatin(urt.name).c_str());
  text += Format("Image type:     %u\nImage kind:     %u\n", urt.type, urt.kind);
  text += Format("Manufacturer:   %02X\nVersion:        A %u B %u\n", urt.manufacturer_id, urt.version_a,
                 urt.version_b);
  text += Format("Software:       %u.%u\n", urt.software_major, urt.software_minor);
  text += Format("Time:           %s\n", TimeText(urt.time, true).c_str());
  text += Format("Flag:           %u\n", urt.configuration_flag);
  text +=
      Format("Addresses:      0x%08X - 0x%08X\nSpace:          %u bytes\n", urt.start, urt.end, urt.space);
  text +=
      Format("Tags:           %02X %02X\nFrames:         %u\n", urt.header_tag, urt.packet_tag, urt.frames);
  text += Format("Image:          %zu bytes, CRC %08X\n", urt.image.size(), urt.image_crc);
  if (urt.header) {
    const ImageHeader& header = *urt.header;
    text += Format("Stored:         %u bytes of %u, CRC %08X, fill %u\n", header.stored_size, header.size,
                   header.stored_crc, header.fill);
    text += Format("Image header:   type %u, flag %u, kind %u, start 0x%08X, %s\n", header.type, header.flag,
                   header.kind, header.start, TimeText(header.time, false).c_str());
  } else {
    text += "Image header:   none\n";
  }
  text += Format("Blocks:         %zu\n", urt.blocks.size());
  for (size_t i = 0; i < urt.blocks.size(); ++i) {
    const UrtBlock& block = urt.blocks[i];
    text += Format("  %zu: offset %u, %u bytes, %u packets of %u, CRC %08X\n", i, block.offset, block.length,
                   block.packets, block.packet_size, block.crc);
  }
  for (const UrtFinding& finding : urt.findings) {
    text += Format("At byte %llu: ", static_cast<unsigned long long>(finding.offset)) + finding.text + "\n";
  }
  if (urt.findings.empty()) text += "Every checksum and CRC holds.\n";
  return text;
}

using Json = nlohmann::ordered_json;

Json HeaderJson(const ImageHeader& header) {
  return {{"manufacturer_id", header.manufacturer_id},
          {"version_a", header.version_a},
          {"version_b", header.version_b},
          {"software_major", header.software_major},
          {"software_minor", header.software_minor},
          {"type", header.type},
          {"flag", header.flag},
          {"kind", header.kind},
          {"start", header.start},
          {"size", header.size},
          {"stored_crc", header.stored_crc},
          {"stored_size", header.stored_size},
          {"fill", header.fill},
          {"time", TimeText(header.time, false)}};
}

std::string UrtJson(const UrtContent& urt) {
  Json json = {{"name", Utf8FromLatin(urt.name)},
               {"type", urt.type},
               {"kind", urt.kind},
               {"manufacturer_id", urt.manufacturer_id},
               {"version_a", urt.version_a},
               {"version_b", urt.version_b},
               {"software_major", urt.software_major},
               {"software_minor", urt.software_minor},
               {"time", TimeText(urt.time, true)},
               {"configuration_flag", urt.configuration_flag},
               {"start", urt.start},
               {"end", urt.end},
               {"space", urt.space},
               {"header_tag", urt.header_tag},
               {"packet_tag", urt.packet_tag},
               {"frames", urt.frames},
               {"image_size", urt.image.size()},
               {"image_crc", urt.image_crc}};
  json["image_header"] = urt.header ? HeaderJson(*urt.header) : Json();
  json["blocks"] = Json::array();
  for (const UrtBlock& block : urt.blocks) {
    json["blocks"].push_back({{"offset", block.offset},
                              {"length", block.length},
                              {"packets", block.packets},
                              {"packet_size", block.packet_size},
                              {"crc", block.crc}});
  }
  json["valid"] = urt.findings.empty();
  json["findings"] = Json::array();
  for (const UrtFinding& finding : urt.findings)
    json["findings"].push_back({{"offset", finding.offset}, {"text", finding.text}});
  return json.dump(2) + "\n";
}

void ShowUrt(CommandState& state, const std::string& file, bool as_json) {
  const auto urt = ReadUrtFile(PathFromUtf8(file));
  if (!urt) {
    TellWhy(state.context.messages, Icon::kStop,
            ReadReason(PathFromUtf8(file), WhyUnreadable(PathFromUtf8(file))),
            "Error No: -3 \n File Access Error!!!");
    throw CommandFailed{};
  }
  state.output = as_json ? UrtJson(*urt) : UrtText(*urt);
  if (urt->findings.empty()) return;
  if (!urt->begins_as_urt)
    TellWhy(state.context.messages, Icon::kStop,
            file + ": Choose a URT file, or make one of an image with \"vexa urt build\".",
            "The file is no URT file.");
  state.print_output_on_failure = true;
  throw CommandFailed{};
}

void AddAdb(CLI::App& program, CommandState& state) {
  CLI::App& adb = *program.add_subcommand("adb", "The receiver's application database");
  adb.require_subcommand(1);
  CLI::App& build =
      *adb.add_subcommand("build", "Lay an SDB out as the receiver's memory, with its URT file");
  const auto made = std::make_shared<BuildOptions>();
  build.add_option("DB", made->file, "Database file")->required();
  CLI::Option* const output_folder = build.add_option(
      "-o,--output", made->output, "Folder for the image and URT files; required without --dry-run");
  build
      .add_flag("--dry-run", made->dry_run,
                "Make nothing, print how full each table of the receiver would be")
      ->excludes(output_folder);
  build.add_option("--sdb", made->sdb, "Which SDB, from 1")->check(CheckPlace);
  AddConfigurationOptions(build, state);
  AddTimeOption(build, state);
  build.callback([&state, made] { BuildAdb(state, *made); });

  CLI::App& request = *adb.add_subcommand("request", "Write the download request file");
  const auto output = std::make_shared<std::string>();
  request.add_option("-o,--output", *output, "File to write")->required();
  AddConfigurationOptions(request, state);
  request.callback([&state, output] { RequestAdb(state, *output); });

  CLI::App& decode = *adb.add_subcommand("decode", "Turn downloaded images back into a database file");
  const auto decoded = std::make_shared<BuildOptions>();
  decode.add_option("DIR", decoded->file, "Folder with ~001adb.bin and ~001e2p.bin")->required();
  decode.add_option("-o,--output", decoded->output, "Database file to write")->required();
  AddConfigurationOptions(decode, state);
  decode.callback([&state, decoded] { DecodeAdb(state, *decoded); });
}

void AddUrt(CLI::App& program, CommandState& state) {
  CLI::App& urt = *program.add_subcommand("urt", "Files for the receiver's loader");
  urt.require_subcommand(1);
  CLI::App& build = *urt.add_subcommand("build", "Turn an image into a URT file");
  const auto options = std::make_shared<UrtOptions>();
  build.add_option("IMAGE", options->file, "Image file")->required();
  build.add_option("-o,--output", options->output, "URT file to write")->required();
  build.add_option("--type", options->type, "Image type, 0-15")->required()->check(CLI::Range(0, 15));
  build.add_option("--kind", options->kind, "Image kind, 0-15")->required()->check(CLI::Range(0, 15));
  build.add_option("--flag", options->flag, "Image flag, 0-255")->required()->check(CLI::Range(0, 255));
  build.add_option("--name", options->name, "Image name, up to 49 characters")
      ->required()
      ->check([](const std::string& text) {
        if (!FitsLatin(text)) return "\"" + text + "\" has characters that no URT file holds";
        return LatinFromUtf8(text).size() <= kLongestImageName
                   ? std::string()
                   : Format("\"%s\" is longer than %zu characters", text.c_str(), size_t{kLongestImageName});
      });
  build.add_option("--start", options->start, "Start address")->required();
  build.add_option("--end", options->end, "End address, exclusive")->required();
  build.add_option("--compress", options->compression, "zlib:LEVEL (1-9) or bin2cod")
      ->check([](const std::string& text) {
        std::vector<std::string> words = {"bin2cod"};
        for (char level = '1'; level <= '9'; ++level) words.push_back(std::string("zlib:") + level);
        return CompressionLevel(text) >= 0
                   ? std::string()
                   : "\"" + text + "\" is neither zlib:LEVEL nor bin2cod" + NearestText(text, words);
      });
  AddConfigurationOptions(build, state);
  AddTimeOption(build, state);
  build.callback([&state, options] { BuildUrtFile(state, *options); });

  CLI::App& show = *urt.add_subcommand("show", "Print a URT file's fields and check all of it");
  const auto file = std::make_shared<std::string>();
  const auto as_json = std::make_shared<bool>(false);
  show.add_option("FILE", *file, "URT file")->required();
  show.add_flag("--json", *as_json, "Print JSON");
  show.callback([&state, file, as_json] { ShowUrt(state, *file, *as_json); });
}

}  // namespace

void AddImageCommands(CLI::App& program, CommandState& state) {
  AddAdb(program, state);
  AddUrt(program, state);
}

}  // namespace vexa
