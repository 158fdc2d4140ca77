#include "cli/console.h"

#include <algorithm>
#include <charconv>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <mutex>
#include <utility>

#include "cli/last_resort.h"
#include "cli/usage.h"
#include "config/ecf.h"
#include "config/software_version.h"
#include "core/bin_file.h"
#include "platform/file_identity.h"
#include "platform/interrupt.h"
#include "platform/terminal.h"
#include "platform/text.h"

namespace vexa {

namespace {

const char* KindOf(Icon icon) {
  switch (icon) {
    case Icon::kInformation:
      return "info";
    case Icon::kWarning:
      return "warning";
    case Icon::kNone:
      return "info";
    default:
      return "error";
  }
}

Progress TerminalProgress(const std::shared_ptr<ErrorStream>& errors) {
  Progress progress;
  if (!StandardErrorIsTerminal()) return progress;
  struct State {
    uint64_t total = 0;
    int shown = -1;
  };
  const auto state = std::make_shared<State>();
  progress.range = [state](uint64_t total) { *state = {total, -1}; };
  progress.position = [state, errors](uint64_t position) {
    if (state->total == 0) return;
    const int percent = static_cast<int>(position * 100 / state->total);
    if (percent == state->shown) return;
    state->shown = percent;
    errors->ShowLine(position < state->total ? Format("%3d%%", percent) : "");
  };
  return progress;
}

// The number at `position`, decimal or 0x hexadecimal, and the place behind it; false when none is there.
template <class Number>
bool TakeNumber(std::string_view text, size_t& position, Number& value) {
  const std::string_view rest = text.substr(std::min(position, text.size()));
  const bool hexadecimal = rest.starts_with("0x") || rest.starts_with("0X");
  const char* const start = rest.data() + (hexadecimal ? 2 : 0);
  const auto result = std::from_chars(start, rest.data() + rest.size(), value, hexadecimal ? 16 : 10);
  if (result.ec != std::errc{}) return false;
  position = static_cast<size_t>(result.ptr - text.data());
  return true;
}

bool TakeSign(std::string_view text, size_t& position, char sign) {
  if (position >= text.size() || text[position] != sign) return false;
  ++position;
  return true;
}

// First and last numbers, one-based, as they stand; nothing for text that is no list of numbers.
using Ranges = std::vector<std::pair<size_t, size_t>>;
std::optional<Ranges> ParseRanges(const std::string& text) {
  Ranges ranges;
  size_t position = 0;
  do {
    size_t first = 0;
    if (!TakeNumber(text, position, first)) return std::nullopt;
    size_t last = first;
    if (TakeSign(text, position, '-') && !TakeNumber(text, position, last)) return std::nullopt;
    if (first == 0 || last < first) return std::nullopt;
    ranges.emplace_back(first, last);
  } while (TakeSign(text, position, ','));
  return position == text.size() ? std::optional(ranges) : std::nullopt;
}

}  // namespace

void PrepareContext(CommandState& state) {
  Context& context = state.context;
  context.messages.tell = [&state](const Message& message) {
    if (InterruptWatch::IsInterrupted() && !state.tells_after_interrupt) return;
    static std::mutex one_at_a_time;  // the threads of a transfer tell too
    const std::lock_guard hold(one_at_a_time);
    std::string text = std::string(KindOf(message.icon)) + ": " + message.text + "\n";
    // Of messages that come to one reason, the first gives it.
    if (!message.detail.empty() && message.detail != state.last_detail)
      text += "info: " + message.detail + "\n";
    state.last_detail = message.detail;
    Message& failure = state.failure;
    if (failure.text.empty() || (message.icon == Icon::kStop && failure.icon != Icon::kStop))
      failure = message;
    state.errors->Print(text);
  };
  context.messages.ask = [&state](const std::string& text, const std::string&, bool) {
    state.errors->Print("question: " + text + "\n");
    return state.yes;
  };
  context.progress = TerminalProgress(state.errors);
  static const FileOperations files = [] {
    FileOperations own = SystemFiles();
    const FileOperations& system = SystemFiles();
    own.create = [&](const Path& path) {
      return InterruptWatch::IsInterrupted() ? Made<std::FILE*>(nullptr) : system.create(path);
    };
    own.write = [&](std::FILE* file, std::span<const uint8_t> bytes) {
      return InterruptWatch::IsInterrupted() ? Outcome(false) : system.write(file, bytes);
    };
    own.replace = [&](const Path& from, const Path& to) {
      return InterruptWatch::IsInterrupted() ? Outcome(false) : system.replace(from, to);
    };
    return own;
  }();
  context.files = &files;
}

bool PrintResults(CommandState& state) {
  const std::string output = std::exchange(state.output, "");
  SetBinaryOutput();
  ForgetFileErrors();
  const bool written = std::fwrite(output.data(), 1, output.size(), stdout) == output.size();
  // A stream that is flushed at every line end may have failed before the last flush, which succeeds.
  if (std::fflush(stdout) == 0 && written && std::ferror(stdout) == 0) return true;
  const std::error_code error = LastFileError();
  if (InterruptWatch::IsInterrupted()) return false;  // told by who asked
  const std::string advice = AdviceOn(Attempt::kWrite, CauseOf(error));
  state.errors->Print("error: Could not write to standard output: " + SystemText(error) + "\n");
  if (!advice.empty()) state.errors->Print("info: " + advice + "\n");
  return false;
}

void RequireTemporaryFolder(CommandState& state) {
  RemoveAbandonedFolders("vexa-");
  const auto now = std::chrono::steady_clock::now().time_since_epoch().count();
  std::string why;
  state.folder = TemporaryFolder::Make(
      Format("vexa-%lx-%llx", ProcessNumber(), static_cast<unsigned long long>(now)), why);
  if (!state.folder) {
    TellWhy(state.context.messages, Icon::kStop, why, "Failed to create new directory.");
    throw CommandFailed{};
  }
  state.context.temporary_folder = state.folder->path();
  SetFolderOfLastResort(&state.folder->path());
}

void AddTimeOption(CLI::App& command, CommandState& state) {
  command
      .add_option("--time", state.time_text,
                  "Local time to write into files: \"YYYY-MM-DD HH:MM:SS\" (default: the time of the clock)")
      ->check([](const std::string& text) {
        return ParseLocalTime(text) ? std::string() : "\"" + text + "\" is no time YYYY-MM-DD HH:MM:SS";
      });
}

void AddConfigurationOptions(CLI::App& command, CommandState& state) {
  command.add_option("--ecf", state.ecf, "Configuration file; default: the one that ships with the program");
  command
      .add_option(
          "--select", state.select,
          "Manufacturer/product/configuration: zero-based positions, or names or parts of them; or one name")
      ->check(CheckSelection);
  command.add_option("--software", state.software, "Software version MAJOR.MINOR")
      ->check([](const std::string& text) {
        return ParseVersion(text, kLargestSoftwareMinor) ? std::string()
                                                         : VersionRefusal(text, kLargestSoftwareMinor);
      });
}

std::string VersionRefusal(const std::string& text, unsigned largest_minor) {
  return Format("\"%s\" is no version MAJOR.MINOR from 0.0 to 255.%u", text.c_str(), largest_minor);
}

std::optional<std::pair<uint8_t, uint8_t>> ParseVersion(const std::string& text, unsigned largest_minor) {
  uint8_t major = 0, minor = 0;
  size_t position = 0;
  if (!TakeNumber(text, position, major) || !TakeSign(text, position, '.') ||
      !TakeNumber(text, position, minor) || position != text.size() || minor > largest_minor)
    return std::nullopt;
  return std::pair{major, minor};
}

namespace {

// "M/P/C", three numbers.
std::optional<std::array<size_t, 3>> ThreeNumbers(const std::string& text) {
  std::array<size_t, 3> numbers{};
  size_t position = 0;
  for (size_t& number : numbers) {
    if (&number != numbers.data() && !TakeSign(text, position, '/')) return std::nullopt;
    if (!TakeNumber(text, position, number)) return std::nullopt;
  }
  return position == text.size() ? std::optional(numbers) : std::nullopt;
}

}  // namespace

std::string CheckSelection(const std::string& text) {
  const auto numbers = ThreeNumbers(text);
  const bool fits =
      !numbers || std::all_of(numbers->begin(), numbers->end(), [](size_t n) { return n <= 255; });
  return fits && !text.empty() ? std::string() : "\"" + text + "\" is no M/P/C with positions up to 255";
}

Selection SelectedIn(CommandState& state, const Path& file, const std::string& text) {
  if (const auto numbers = ThreeNumbers(text)) {
    return {static_cast<uint8_t>((*numbers)[0]), static_cast<uint8_t>((*numbers)[1]),
            static_cast<uint8_t>((*numbers)[2])};
  }
  const auto tree = ReadEcfTree(state.context, file);
  if (!tree) throw CommandFailed{};
  const SelectionFound found = FindSelection(*tree, text);
  if (found.selection) return *found.selection;
  std::string candidates;
  for (const std::string& name : found.candidates) candidates += (candidates.empty() ? "" : "; ") + name;
  throw CLI::ValidationError(
      "--select", "\"" + text + "\" " +
                      (found.several ? "may mean: " : "names no configuration; there are: ") + candidates);
}

LocalTime CommandTime(const CommandState& state) {
  return state.time_text.empty() ? LocalTimeNow() : *ParseLocalTime(state.time_text);
}

Path ShippedConfiguration(const CommandState& state) {
  std::error_code error;
  if (const auto named = PathOfEnvironment("VEXA_ECF")) {
    if (std::filesystem::exists(*named, error)) return *named;
    TellWhy(state.context.messages, Icon::kStop,
            "Set VEXA_ECF to the path of a configuration file, or unset it, or name one with --ecf.",
            "VEXA_ECF names \"%s\", where no configuration file is.", Utf8FromPath(*named).c_str());
    throw CommandFailed{};
  }
  const Path folder = ProgramFolder();
  const Path data = folder.parent_path() / "share" / "vexa" / "receivers.ecf";
  const Path beside = folder / "receivers.ecf";
  return !std::filesystem::exists(beside, error) && std::filesystem::exists(data, error) ? data : beside;
}

Path ConfigurationFile(const CommandState& state) {
  return state.ecf.empty() ? ShippedConfiguration(state) : PathFromUtf8(state.ecf);
}

ProjectConfig LoadSelected(CommandState& state, const Path& file, const std::string& select) {
  const Selection selection = SelectedIn(state, file, select);
  ProjectConfig config;
  config.manufacturer_index = selection.manufacturer;
  config.product_index = selection.product;
  config.configuration_index = selection.configuration;
  const auto software = ParseVersion(state.software, kLargestSoftwareMinor);
  config.software_major = software->first;
  config.software_minor = software->second;
  if (!InitConfig(state.context, file, config)) throw CommandFailed{};
  if (!config.configuration_found) {
    TellWhy(state.context.messages, Icon::kInformation,
            Utf8FromPath(file) + ": no " + select + ". vexa ecf show lists what there is.",
            "Invalid configuration selection.");
    throw CommandFailed{};
  }
  return config;
}

ProjectConfig LoadCommandConfig(CommandState& state) {
  return LoadSelected(state, ConfigurationFile(state), state.select);
}

Document OpenDocument(CommandState& state, const std::string& file) {
  Document document;
  if (!OpenBin(state.context, PathFromUtf8(file), document)) throw CommandFailed{};
  document.source = file;
  return document;
}

std::string CheckList(const std::string& text) {
  return text == "all" || ParseRanges(text) ? std::string() : "\"" + text + "\" is no list of numbers";
}

std::string CheckListOrNone(const std::string& text) {
  return text == "none" ? std::string() : CheckList(text);
}

std::string CheckPlace(const std::string& text) {
  const auto ranges = ParseRanges(text);
  const bool one = ranges && ranges->size() == 1 && ranges->front().first == ranges->front().second;
  return one ? std::string() : "\"" + text + "\" is no number from 1";
}

std::string CheckNumber(const std::string& text) {
  uint64_t number = 0;
  size_t position = 0;
  return TakeNumber(text, position, number) && position == text.size()
             ? std::string()
             : "\"" + text + "\" is no number from 0 to 18446744073709551615";
}

std::vector<std::pair<size_t, size_t>> ListRanges(const std::string& text) {
  return ParseRanges(text).value_or(Ranges{});
}

std::vector<size_t> ParseList(CommandState& state, const std::string& text, size_t count, const char* what) {
  std::vector<bool> chosen(count, text == "all");
  for (const auto& [first, last] : ParseRanges(text).value_or(Ranges{})) {
    if (!ExpectNumber(state.context.messages, last, count, what)) throw CommandFailed{};
    for (size_t i = first; i <= last; ++i) chosen[i - 1] = true;
  }
  std::vector<size_t> positions;
  for (size_t i = 0; i < count; ++i) {
    if (chosen[i]) positions.push_back(i);
  }
  return positions;
}

uint32_t MaskOf(const std::vector<size_t>& positions) {
  uint32_t mask = 0;
  for (const size_t position : positions) mask |= 1u << position;
  return mask;
}

void ExpectWhole(CommandState& state, const Document& document, const std::string& file,
                 const std::string& output) {
  if (document.read_whole || !SameFile(PathFromUtf8(file), PathFromUtf8(output))) return;
  TellWhy(state.context.messages, Icon::kStop, "Name another file with -o to keep what was read.",
          "%s was not read whole and stays as it is.", output.c_str());
  throw CommandFailed{};
}

void ExpectSaved(CommandState& state, const std::string& file, std::optional<uint64_t> size) {
  state.output_made = size.has_value();
  if (!size || !CheckBinSize(state.context, PathFromUtf8(file), *size)) throw CommandFailed{};
}

void ExpectWritten(CommandState& state, const std::string& file, const WriteResult& result) {
  state.output_made = result == WriteResult::kDone;
  if (state.output_made) return;
  const std::string why = Reason(Attempt::kWrite, file, result.error);
  if (result == WriteResult::kCannotCreate) {
    TellWhy(state.context.messages, Icon::kStop, why, "Could not creat file \"%s\".", file.c_str());
  } else {
    TellWhy(state.context.messages, Icon::kStop, why, "Could not write file \"%s\".", file.c_str());
  }
  throw CommandFailed{};
}

void WriteOutput(CommandState& state, const std::string& file, std::span<const uint8_t> content) {
  ExpectWritten(state, file, WriteWholeFile(PathFromUtf8(file), content, *state.context.files));
}

}  // namespace vexa
