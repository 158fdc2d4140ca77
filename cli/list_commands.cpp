// import, merge: channel lists of other programs.
#include <filesystem>
#include <memory>
#include <new>
#include <span>
#include <utility>

#include "cli/commands.h"
#include "cli/usage.h"
#include "core/bin_file.h"
#include "import/build_bin.h"
#include "import/import_command.h"
#include "import/merger.h"
#include "import/wizard.h"

namespace vexa {

namespace {

struct ImportOptions {
  std::string list, output, work_folder, satellites = "all", format, page;
  bool stream = false, filter = false;
  std::vector<std::string> carriers = {"all"}, services = {"all"};
};

struct MergeOptions {
  std::string format, output, folder;
  std::vector<std::string> files;
};

struct NamedOption {
  std::string_view name;
  uint8_t bit;
};
constexpr NamedOption kCarrierOptions[] = {{"all", kAllCarriers},
                                           {"c", kCBand},
                                           {"ku", kKuBand},
                                           {"vertical", kVerticalPolar},
                                           {"horizontal", kHorizontalPolar}};
constexpr NamedOption kServiceOptions[] = {{"all", kAllServices},
                                           {"fta", kFreeServices},
                                           {"scrambled", kScrambled},
                                           {"tv", kTvServices},
                                           {"radio", kRadioServices}};

uint8_t BitsOf(std::span<const NamedOption> known, const std::vector<std::string>& names) {
  uint8_t bits = 0;
  for (const std::string& name : names) {
    for (const NamedOption& option : known) {
      if (option.name == name) bits = static_cast<uint8_t>(bits | option.bit);
    }
  }
  return bits;
}

// The wizard's three steps with the same boxes ticked for all satellites and all carriers.
void FilterWorkFiles(CommandState& state, const ImportOptions& options, WorkFiles& work) {
  Wizard wizard(work);
  for (const size_t i : ParseList(state, options.satellites, work.satellites.size()))
    ChooseSatellite(wizard, i, true);
  wizard.carrier_options = BitsOf(kCarrierOptions, options.carriers);
  BeginCarrierStep(wizard);
  wizard.service_options = BitsOf(kServiceOptions, options.services);
  BeginServiceStep(wizard);
  CompactWorkFiles(wizard);
}

// The three work files in the folder that the user named. Until `Keep` is called they are taken back at the
// end: files that were there before get their content again, and a folder that was made goes.
class WorkFolder {
 public:
  explicit WorkFolder(const std::string& name) : folder_(PathFromUtf8(name)) {}
  ~WorkFolder() {
    if (keep_) return;
    // Taking back takes memory; what ran out once is often there again.
    for (int attempt = 0; attempt < 2; ++attempt) {
      try {
        TakeBack();
        return;
      } catch (const std::bad_alloc&) {
      }
    }
  }
  WorkFolder(const WorkFolder&) = delete;
  WorkFolder& operator=(const WorkFolder&) = delete;

  void Write(CommandState& state, const WorkFiles& work) {
    if (folder_.empty()) return;
    std::error_code error;
    for (Path part = folder_; !part.empty() && !std::filesystem::exists(part, error);) {
      made_ = part;
      part = part.parent_path();
      if (part == made_) break;  // a drive that is not there
    }
    for (const Path& file : WorkFilePaths(folder_)) before_.emplace_back(file, ReadWholeFile(file));
    if (!WriteWorkFiles(state.context, work, folder_)) throw CommandFailed{};
  }
  void Keep() { keep_ = true; }

 private:
  void TakeBack() {
    std::error_code error;
    for (const auto& [file, content] : before_) {
      if (content) {
        WriteWholeFile(file, *content);
      } else if (!std::filesystem::is_directory(file, error)) {
        std::filesystem::remove(file, error);
      }
    }
    RemoveFolder(made_);
  }
  Path folder_, made_;  // made_: the uppermost folder that was not there
  std::vector<std::pair<Path, std::optional<Bytes>>> before_;
  bool keep_ = false;
};

constexpr std::pair<std::string_view, ListFormat> kFormatNames[] = {
    {"satcodx", ListFormat::kSatcodx}, {"dvb2000", ListFormat::kDvb2000}, {"lyngsat", ListFormat::kLyngsat}};

// What the option names; else what extension and first bytes do.
std::optional<ListFormat> ListFormatOf(CommandState& state, const ImportOptions& options) {
  for (const auto& [name, format] : kFormatNames) {
    if (options.format == name) return format;
  }
  return CheckListFile(state.context, PathFromUtf8(options.list));
}

void ReadImport(CommandState& state, const ImportOptions& options, const DefaultRecords& defaults,
                WorkFiles& work) {
  const Path list = PathFromUtf8(options.list);
  const size_t told = state.told.size();
  const auto format = ListFormatOf(state, options);
  if (format && ReadList(state.context, list, *format, defaults, work)) return;
  TellFile(state, told, options.list, WhyUnreadable(list));
  throw CommandFailed{};
}

void ExpectImportApart(const ImportOptions& options) {
  std::vector<NamedPath> outputs = {{"--output", PathFromUtf8(options.output)}};
  if (!options.work_folder.empty()) {
    const Path folder = PathFromUtf8(options.work_folder);
    outputs.push_back({"--work-dir", folder});
    for (const Path& file : WorkFilePaths(folder)) outputs.push_back({"--work-dir", file});
  }
  ExpectApart({{"LIST", PathFromUtf8(options.list)}}, outputs);
}

// A document holds a database, not a list to pick from.
void ImportDocument(CommandState& state, const ImportOptions& options, bool json) {
  if (options.stream || options.filter || !options.work_folder.empty())
    throw CLI::ValidationError("--format", "a csv or json document takes no option of lists");
  const Document document =
      ReadDocumentFile(state, options.list, json, options.page.empty() ? "Windows-1252" : options.page);
  SaveDocument(state, document, options.list, options.output);
}

void Import(CommandState& state, const ImportOptions& options) {
  ExpectImportApart(options);
  const std::string document_format = options.format.empty() ? DocumentFormat(options.list) : options.format;
  if (document_format == "json" || document_format == "csv")
    return ImportDocument(state, options, document_format == "json");
  const DefaultRecords defaults;
  const Path output = PathFromUtf8(options.output);
  WorkFiles work;
  ReadImport(state, options, defaults, work);
  if (options.filter) FilterWorkFiles(state, options, work);
  WorkFolder folder(options.work_folder);
  if (options.stream) {
    folder.Write(state, work);
    WriteOutput(state, options.output, BuildBinFromWorkFiles(work, defaults));
    return folder.Keep();
  }
  Document document;
  const size_t told = state.told.size();
  if (!OpenWorkFiles(state.context, work, defaults, document)) {
    TellFile(state, told, options.list, "");
    throw CommandFailed{};
  }
  folder.Write(state, work);
  const auto size = SaveBin(state.context, document, output);
  if (size) folder.Keep();  // the database stands from here on, even when it is too large for a receiver
  ExpectSaved(state, options.output, told, size);
}

void AddImport(CLI::App& program, CommandState& state) {
  const auto options = std::make_shared<ImportOptions>();
  CLI::App& command = *program.add_subcommand(
      "import",
      "Make a database from a channel list (.sdx, .dvb, .dat), or from what export wrote (.csv, .json)");
  command.add_option("LIST", options->list, "Channel list")->required();
  command.add_option("-o,--output", options->output, "Database file to write")->required();
  command.add_option("--format", options->format, "The list's format (default: by its name and first bytes)")
      ->check(OneOf({"satcodx", "dvb2000", "lyngsat", "csv", "json"}));
  command
      .add_option("--code-page", options->page,
                  "In which page the names of the database stand (csv and json; default: Windows-1252)")
      ->check(CheckCodePage);
  command.add_flag("--stream", options->stream, "Write the bare SDB stream that the import builds");
  command.add_option("--work-dir", options->work_folder, "Also leave the three work files in this folder");
  CLI::Option* satellites = command
                                .add_option("--satellites", options->satellites,
                                            "Only these satellites of the list: 1,3-5 or all (filter mode)")
                                ->check(CheckList);
  CLI::Option* carriers =
      command.add_option("--carriers", options->carriers, "all,c,ku,vertical,horizontal (filter mode)")
          ->delimiter(',')
          ->allow_extra_args(false)
          ->check(OneOf({"all", "c", "ku", "vertical", "horizontal"}));
  CLI::Option* services =
      command.add_option("--services", options->services, "all,fta,scrambled,tv,radio (filter mode)")
          ->delimiter(',')
          ->allow_extra_args(false)
          ->check(OneOf({"all", "fta", "scrambled", "tv", "radio"}));
  command.callback([&state, options, satellites, carriers, services] {
    options->filter = satellites->count() + carriers->count() + services->count() != 0;
    Import(state, *options);
  });
}

MergeMode ModeOf(const std::string& format) {
  if (format == "satcodx") return MergeMode::kSatcodx;
  return format == "lyngsat" ? MergeMode::kLyngsat : MergeMode::kDvb2000;
}

void CollectFiles(CommandState& state, const MergeOptions& options, Merger& merger) {
  for (const std::string& file : options.files) {
    const Path path = PathFromUtf8(file);
    std::error_code error;
    // The open dialog of the window only gives files that are there.
    const size_t told = state.told.size();
    const bool there = std::filesystem::is_regular_file(path, error);
    if (!there) Tell(state.context.messages, Icon::kStop, "Unable to open the given file.");
    if (there && AddMergeFile(state.context, merger, path)) continue;
    TellFile(state, told, file, WhyUnreadable(path));
    throw CommandFailed{};
  }
  if (!options.folder.empty() && !AddMergeFolder(state.context, merger, PathFromUtf8(options.folder))) {
    Tell(state.context.messages, Icon::kInformation, "%s", options.folder.c_str());
    throw CommandFailed{};
  }
}

// The folder's lists are looked for, but none is opened.
void ExpectMergeApart(const MergeOptions& options) {
  std::vector<NamedPath> inputs;
  for (const std::string& file : options.files) inputs.push_back({"FILE", PathFromUtf8(file)});
  Context silent;
  silent.messages.tell = [](Icon, const std::string&, const std::string&) {};
  Merger listed{ModeOf(options.format), {}};
  if (!options.folder.empty()) AddMergeFolder(silent, listed, PathFromUtf8(options.folder));
  for (const Path& file : listed.files) inputs.push_back({"--folder", file});
  ExpectApart(inputs, {{"--output", PathFromUtf8(options.output)}});
}

void Merge(CommandState& state, const MergeOptions& options) {
  ExpectMergeApart(options);
  Merger merger{ModeOf(options.format), {}};
  CollectFiles(state, options, merger);
  const Path output = PathFromUtf8(options.output);
  if (!CanMerge(state.context, merger) || !CanMergeInto(state.context, merger, output)) throw CommandFailed{};
  const auto written = WriteMerged(state.context, merger, output);
  if (!written) throw CommandFailed{};
  ExpectWritten(state, options.output, *written);
  TellMerged(state.context, output);
}

void AddMerge(CLI::App& program, CommandState& state) {
  const auto options = std::make_shared<MergeOptions>();
  CLI::App& merge = *program.add_subcommand("merge", "Join channel lists of one format");
  merge.add_option("FORMAT", options->format, "satcodx, dvb2000 or lyngsat")
      ->required()
      ->check(OneOf({"satcodx", "dvb2000", "lyngsat"}));
  merge.add_option("FILE", options->files, "Lists, in the order of the result");
  merge.add_option("--folder", options->folder, "Then all lists of this folder, by name");
  merge.add_option("-o,--output", options->output, "List to write")->required();
  merge.callback([&state, options] { Merge(state, *options); });
}

}  // namespace

void AddListCommands(CLI::App& program, CommandState& state) {
  AddImport(program, state);
  AddMerge(program, state);
}

}  // namespace vexa
