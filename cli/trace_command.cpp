// trace: what a saved record of the line tells.
#include <memory>

#include "cli/commands.h"
#include "cli/usage.h"
#include "view/trace_page.h"

namespace vexa {

namespace {

constexpr uint64_t kLargestTrace = uint64_t{1} << 28;  // bytes; some hours of a line that is never quiet

struct TraceArguments {
  std::string file, format = "text";
};

void Show(CommandState& state, const TraceArguments& arguments) {
  const Path path = PathFromUtf8(arguments.file);
  Bytes file;
  const ReadResult read = ReadWholeFile(path, file, kLargestTrace);
  if (read != ReadResult::kDone) {
    TellWhy(state.context.messages, Icon::kStop, ReadReason(path, read.error), "The trace cannot be read.");
    throw CommandFailed{};
  }
  size_t line = 0;
  const auto entries = ReadTrace({reinterpret_cast<const char*>(file.data()), file.size()}, line);
  if (!entries) {
    TellWhy(state.context.messages, Icon::kStop,
            Format("%s, line %zu. Name a file that --trace or --log wrote.", arguments.file.c_str(), line),
            "This is no trace of a line.");
    throw CommandFailed{};
  }
  const TraceStory story = ExplainTrace(*entries);
  state.output = arguments.format == "html" ? TraceStoryPage(story, Utf8FromPath(path.filename()))
                                            : TraceStoryText(story);
}

}  // namespace

void AddTraceCommand(CLI::App& program, CommandState& state) {
  CLI::App& trace = *program.add_subcommand("trace", "Records of what crossed the line");
  trace.require_subcommand(1);
  const auto arguments = std::make_shared<TraceArguments>();
  CLI::App& show =
      *trace.add_subcommand("show", "Explain a record that --trace, or --log of the loader, wrote");
  show.add_option("FILE", arguments->file, "Record of the line")->required();
  show.add_option("--format", arguments->format, "text, or html for a page with a drawing")
      ->check(OneOf({"text", "html"}))
      ->capture_default_str();
  show.callback([&state, arguments] { Show(state, *arguments); });
}

}  // namespace vexa
