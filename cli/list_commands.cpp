// import, merge: channel lists of other programs.
#include <algorithm>
#include <filesystem>
#include <iterator>
#include <memory>
#include <span>
#include <utility>

#include "cli/commands.h"
#include "cli/usage.h"
#include "core/bin_file.h"
#include "core/complete.h"
#include "import/any_database.h"
#include "import/build_bin.h"
#include "import/list_text.h"
#include "import/merger.h"
#include "import/wizard.h"
#include "platform/code_page.h"

namespace vexa {

namespace {

struct ImportOptions {
  std::string list, output, work_folder, satellites = "all", format, page, list_page;
  std::string of_lists;  // the first option given that only lists have
  bool stream = false, filter = false, keep_s2 = false;
  Completion completion;
  SatcodxOptions satcodx;
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
void FilterWorkRecords(CommandState& state, const ImportOptions& options, WorkRecords& work) {
  Wizard wizard(work);
  for (const size_t i : ParseList(state, options.satellites, work.satellites.size(), "satellite"))
    ChooseSatellite(wizard, i, true);
  wizard.carrier_options = BitsOf(kCarrierOptions, options.carriers);
  BeginCarrierStep(wizard);
  wizard.service_options = BitsOf(kServiceOptions, options.services);
  BeginServiceStep(wizard);
  CompactWorkRecords(wizard);
}

// The folder that the user named for the work files, made where it is not there. Until `Keep` is called, what
// was made goes again at the end.
class WorkFolder {
 public:
  explicit WorkFolder(const Path& folder) {
    std::error_code error;
    for (Path part = folder; !part.empty() && !std::filesystem::exists(part, error);) {
      made_ = part;
      part = part.parent_path();
      if (part == made_) break;  // a drive that is not there
    }
    std::filesystem::create_directories(folder, error);  // a failure shows when no file can be made there
  }
  ~WorkFolder() { RemoveFolder(made_); }
  WorkFolder(const WorkFolder&) = delete;
  WorkFolder& operator=(const WorkFolder&) = delete;
  void Keep() { made_.clear(); }

 private:
  Path made_;  // the uppermost folder that was not there
};

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
  if (!options.of_lists.empty())
    throw CLI::ValidationError(options.of_lists, "a csv or json document takes no option of lists");
  const Document document =
      ReadDocument(state, options.list, json, options.page.empty() ? "Windows-1252" : options.page);
  SaveDocument(state, document, options.list, options.output);
}

// Nothing for what is no list, which the import itself refuses.
const ListFormatRow* FormatOf(const ImportOptions& options) {
  const ListOptions chosen = {.satcodx = options.satcodx};
  const auto format = options.format.empty() ? RecognizeList(PathFromUtf8(options.list), chosen)
                                             : ListFormatNamed(options.format);
  return format ? &RowOf(*format) : nullptr;
}

// An option that would do nothing is wrong usage.
void ExpectListOptions(const ImportOptions& options, const ListFormatRow* format) {
  if (options.keep_s2 && format && !format->reports_s2)
    throw CLI::ValidationError("--keep-s2", "lists of this format do not tell DVB-S2 from DVB-S");
  if (options.stream && options.completion.any())
    throw CLI::ValidationError("--stream", "is what the import builds, before it is completed");
}

// What the import makes of the records. Throws CommandFailed after a message.
Bytes BuildImport(CommandState& state, const ImportOptions& options, const ListFormatRow* format,
                  const DefaultRecords& defaults, const WorkRecords& work) {
  if (options.stream) return BuildBinFromWorkFiles(work, defaults);
  Document document;
  std::optional<Bytes> file;
  const Context about = About(state.context, options.list);
  if (OpenWorkRecords(about, work, defaults, document) && MayBeSaved(about, document)) {
    const bool says_sides = !format || format->names_side;
    for (const std::string& warning :
         Complete(*document.sdbs[0].database, options.completion, says_sides, defaults))
      Tell(state.context.messages, Icon::kWarning, "%s", warning.c_str());
    file = BuildBin(about, document);
  }
  if (!file) throw CommandFailed{};
  return std::move(*file);
}

// The output, and the work files where they are wanted: all of them or none.
void WriteImport(CommandState& state, const ImportOptions& options, const WorkRecords& work, Bytes content) {
  std::vector<FileContent> files;
  WorkFolder folder(PathFromUtf8(options.work_folder));
  if (!options.work_folder.empty()) {
    for (FileContent& file : WorkFileContents(work, PathFromUtf8(options.work_folder)))
      files.push_back(std::move(file));
  }
  files.push_back({PathFromUtf8(options.output), std::move(content)});
  size_t refused = 0;
  // A single file is replaced by renaming, so that its name is never without a file.
  const WriteResult written = files.size() == 1
                                  ? WriteWholeFile(files[0].path, files[0].content, *state.context.files)
                                  : WriteWholeFiles(files, refused, *state.context.files);
  if (written == WriteResult::kFailed && refused + 1 == files.size() && !options.stream) {
    TellUnsaved(state.context.messages, files[refused].path, written);
    throw CommandFailed{};
  }
  ExpectWritten(state, written == WriteResult::kDone ? "" : Utf8FromPath(files[refused].path), written);
  folder.Keep();
}

// What the import does with the list, by the command's options.
ImportSteps StepsOf(CommandState& state, const ImportOptions& options) {
  ImportSteps steps;
  steps.filter = options.filter ? FilterMode::kOn : FilterMode::kOff;
  steps.choose = [&](WorkRecords& read) {
    FilterWorkRecords(state, options, read);
    return true;
  };
  steps.format = ListFormatNamed(options.format);
  steps.options.satcodx = options.satcodx;
  steps.options.satcodx.doubt = [&](const std::string& why) {
    Tell(state.context.messages, Icon::kWarning,
         "%s does not look as lists of its format do: %s. --layout auto reads it by what it shows.",
         options.list.c_str(), why.c_str());
  };
  steps.options.pages.database = options.page.empty() ? nullptr : FindCodePage(options.page);
  steps.options.pages.list = options.list_page.empty() ? nullptr : FindCodePage(options.list_page);
  steps.options.keep_s2 = options.keep_s2;
  steps.tell = [&](const std::vector<ListNote>& notes) { TellEach(state, notes); };
  return steps;
}

void Import(CommandState& state, const ImportOptions& options) {
  ExpectImportApart(options);
  const std::string document_format =
      options.format.empty() ? DocumentFormat(PathFromUtf8(options.list)) : options.format;
  if (document_format == "json" || document_format == "csv")
    return ImportDocument(state, options, document_format == "json");
  const ListFormatRow* format = FormatOf(options);
  ExpectListOptions(options, format);
  const DefaultRecords defaults;
  WorkRecords work;
  const ImportSteps steps = StepsOf(state, options);
  const Path list = PathFromUtf8(options.list);
  // By the rule of the format this is no list at all.
  if (!format && options.format.empty() && RecognizeList(list, {.satcodx = {.layout = SatcodxLayout::kAuto}}))
    steps.options.satcodx.doubt(kByteOrderMarkDoubt);
  if (!ImportListFile(state.context, list, defaults, steps, work)) throw CommandFailed{};
  Bytes content = BuildImport(state, options, format, defaults, work);
  const uint64_t size = content.size();
  WriteImport(state, options, work, std::move(content));
  // The database stands from here on, even when it is too large for a receiver.
  if (!options.stream) ExpectSaved(state, options.output, size);
}

void AddSatcodxOptions(CLI::App& command, ImportOptions& options) {
  std::vector<std::string> names;
  for (const auto& [name, layout] : kSatcodxLayouts) names.emplace_back(name);
  command
      .add_option_function<std::string>(
          "--layout",
          [&options](const std::string& text) {
            for (const auto& [name, layout] : kSatcodxLayouts) {
              if (text == name) options.satcodx.layout = layout;
            }
          },
          "How a SatcoDX list is read: default, auto, a, b or 105 (default: default)")
      ->check(OneOf(names));
  command
      .add_option("--record-length", options.satcodx.record_length,
                  "Bytes from one SatcoDX record to the next (default: by the layout)")
      ->check(CLI::Range(kSatcodxReadLength, kLongestSatcodxRecord));
}

// An option that would do nothing is wrong usage.
void ExpectSatcodxList(const ImportOptions& options) {
  const SatcodxOptions& chosen = options.satcodx;
  if (chosen.layout == SatcodxLayout::kDefault && chosen.record_length == 0) return;
  const auto& row = RowOf(ListFormat::kSatcodx);
  const bool is_satcodx = options.format.empty() ? HasExtension(PathFromUtf8(options.list), row.extension())
                                                 : options.format == row.name;
  if (!is_satcodx)
    throw CLI::ValidationError("--layout and --record-length", "only SatcoDX lists (.sdx) have them");
}

// The names of the list formats, or of those whose lists are merged.
std::vector<std::string> FormatNames(bool merged) {
  std::vector<std::string> names;
  for (const ListFormatRow& row : ListFormats()) {
    if (!merged || row.merge.title) names.emplace_back(row.name);
  }
  return names;
}
std::vector<std::string> ImportFormatNames() {
  std::vector<std::string> names = FormatNames(false);
  names.insert(names.end(), {"csv", "json"});
  return names;
}

std::string OptionOfLists(const CLI::App& import) {
  constexpr std::string_view kOfAll[] = {"LIST", "--output", "--format", "--code-page"};
  for (const CLI::Option* option : import.parse_order()) {
    const std::string name = option->get_name();
    if (std::find(std::begin(kOfAll), std::end(kOfAll), name) == std::end(kOfAll)) return name;
  }
  return "";
}

void AddImport(CLI::App& program, CommandState& state) {
  const auto options = std::make_shared<ImportOptions>();
  CLI::App& command = *program.add_subcommand("import",
                                              "Make a database from a channel list (.sdx, .dvb, .dat, "
                                              "channels.conf, lamedb, DVBv5 scan file), or from "
                                              "what export wrote (.csv, .json)");
  command.add_option("LIST", options->list, "Channel list")->required();
  command.add_option("-o,--output", options->output, "Database file to write")->required();
  command.add_option("--format", options->format, "The list's format (default: by its name and first bytes)")
      ->check(OneOf(ImportFormatNames()));
  command
      .add_option("--code-page", options->page,
                  "In which page the names of the database stand: what is UTF-8 is converted to it (default: "
                  "Windows-1252)")
      ->check(CheckCodePage);
  command
      .add_option(
          "--list-code-page", options->list_page,
          "In which page a list of single bytes stands, which is converted (default: that of the database)")
      ->check(CheckCodePage);
  Completion& completion = options->completion;
  command.add_flag("--number-positions", completion.number_positions,
                   "Number the satellites' positions from 1");
  command.add_flag("--lnb-by-band", completion.lnbs_by_band,
                   "Give satellites the LNBs that their bands need");
  command.add_flag("--sides", completion.sides,
                   "East or West by known orbital positions, where the list does not say");
  command.add_flag("--keep-s2", options->keep_s2, "Keep DVB-S2 carriers as if they were DVB-S");
  command.add_flag("--stream", options->stream, "Write the bare SDB stream that the import builds");
  command.add_option("--work-dir", options->work_folder, "Also leave the three work files in this folder");
  AddSatcodxOptions(command, *options);
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
  command.callback([&state, &command, options, satellites, carriers, services] {
    options->of_lists = OptionOfLists(command);
    options->filter = satellites->count() + carriers->count() + services->count() != 0;
    ExpectSatcodxList(*options);
    Import(state, *options);
  });
}

void CollectFiles(CommandState& state, const MergeOptions& options, Merger& merger) {
  for (const std::string& file : options.files) {
    const Path path = PathFromUtf8(file);
    std::error_code error;
    // The open dialog of the window only gives files that are there.
    const bool there = std::filesystem::is_regular_file(path, error);
    if (!there) {
      TellWhy(state.context.messages, Icon::kStop, ReadReason(path, WhyUnreadable(path)),
              "Unable to open the given file.");
    }
    if (!there || !AddMergeFile(state.context, merger, path)) throw CommandFailed{};
  }
  if (!options.folder.empty() && !AddMergeFolder(state.context, merger, PathFromUtf8(options.folder)))
    throw CommandFailed{};
}

// The folder's lists are looked for, but none is opened.
void ExpectMergeApart(const MergeOptions& options) {
  std::vector<NamedPath> inputs;
  for (const std::string& file : options.files) inputs.push_back({"FILE", PathFromUtf8(file)});
  Context silent;
  silent.messages.tell = [](const Message&) {};
  Merger listed{ListFormatNamed(options.format).value(), {}};
  if (!options.folder.empty()) AddMergeFolder(silent, listed, PathFromUtf8(options.folder));
  for (const Path& file : listed.files) inputs.push_back({"--folder", file});
  ExpectApart(inputs, {{"--output", PathFromUtf8(options.output)}});
}

void Merge(CommandState& state, const MergeOptions& options) {
  ExpectMergeApart(options);
  Merger merger{ListFormatNamed(options.format).value(), {}};
  CollectFiles(state, options, merger);
  const Path output = PathFromUtf8(options.output);
  if (!CanMerge(state.context, merger) || !CanMergeInto(state.context, merger, output)) throw CommandFailed{};
  const auto written = WriteMerged(state.context, merger, output);
  if (!written) throw CommandFailed{};
  ExpectWritten(state, options.output, written->written);
  TellMerged(state.context, output, *written);
}

void AddMerge(CLI::App& program, CommandState& state) {
  const auto options = std::make_shared<MergeOptions>();
  CLI::App& merge = *program.add_subcommand("merge", "Join channel lists of one format");
  merge.add_option("FORMAT", options->format, "satcodx, dvb2000 or lyngsat")
      ->required()
      ->check(OneOf(FormatNames(true)));
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
