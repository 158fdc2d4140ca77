#include "import/import_command.h"

#include <algorithm>

#include "import/build_bin.h"
#include "import/list_text.h"

namespace vexa {

namespace {

std::optional<ListFormat> FormatOfStart(const Path& path, std::string start, const ListOptions& options) {
  if (options.satcodx.LooksForRecords() && start.starts_with(kByteOrderMark))
    start.erase(0, kByteOrderMark.size());
  const auto rows = ListFormats();
  // An extension of a format's own leaves only that.
  for (const ListFormatRow& row : rows) {
    if (row.looks || !HasExtension(path, row.extension())) continue;
    return StartsWithIgnoringCase(start, row.signature) ? std::optional(row.format) : std::nullopt;
  }
  for (const ListFormatRow& row : rows) {
    if (row.looks && row.looks(path, start)) return row.format;
  }
  return std::nullopt;
}

}  // namespace

std::optional<ListFormat> RecognizeList(const Path& path, const ListOptions& options) {
  std::string start;
  return ReadFileStart(path, kListStart, start) == ReadResult::kDone ? FormatOfStart(path, start, options)
                                                                     : std::nullopt;
}

std::optional<ListFormat> RecognizeListAs(const Path& path, ListFormat format, const ListOptions& options) {
  std::string start;
  if (ReadFileStart(path, kListStart, start) != ReadResult::kDone) return std::nullopt;
  const ListFormatRow& row = RowOf(format);
  if (row.looks && row.looks(path, start)) return format;
  return FormatOfStart(path, start, options);
}

bool IsListFile(const Path& path) {
  const auto rows = ListFormats();
  const bool named = std::any_of(rows.begin(), rows.end(), [&](const ListFormatRow& row) {
    return !row.looks && HasExtension(path, row.extension());
  });
  return named || RecognizeList(path);
}

std::optional<ListFormat> CheckListFile(const Context& context, const Path& path,
                                        const ListOptions& options) {
  std::string start;
  const ReadResult read = ReadFileStart(path, kListStart, start);
  if (read != ReadResult::kDone) {
    if (read == ReadResult::kFailed) {
      TellUnreadList(context, path, read.error);
    } else {
      TellWhy(context.messages, Icon::kStop, ReadReason(path, read.error), "Unable to open the given file.");
    }
    return std::nullopt;
  }
  const auto format = FormatOfStart(path, start, options);
  if (!format) {
    TellWhy(context.messages, Icon::kStop,
            Utf8FromPath(path) +
                ": It does not begin as a list of its kind does. Choose a channel list, or say its format.",
            "Error - Invalid File");
  }
  return format;
}

bool ImportListFile(const Context& context, const Path& path, const DefaultRecords& defaults,
                    const ImportSteps& steps, WorkRecords& work) {
  work = {};
  const auto format = steps.format ? steps.format : CheckListFile(context, path, steps.options);
  if (!format) return false;
  bool filtered = steps.filter == FilterMode::kOn;
  if (steps.filter == FilterMode::kAsk)
    filtered = Ask(context.messages, "Do you want to generate Bin file with filter mode");
  ListLosses losses;
  ListOptions options = steps.options;
  Bytes content;
  if (steps.ask) {
    const bool loaded = LoadList(context, path, *format, content);
    if (!loaded || !steps.ask({*format, path, content}, options)) return false;
  }
  const ListReading read = [&](const Context& own) {
    return (steps.ask || LoadList(own, path, *format, content)) &&
           ReadLoadedList(own, path, content, *format, defaults, options, work, losses);
  };
  if (!(steps.run ? steps.run(read) : read(context))) return false;
  if (steps.tell) {
    steps.tell(NotesOf(losses));
  } else {
    TellNotes(context.messages, NotesOf(losses));
  }
  return !filtered || !steps.choose || steps.choose(work);
}

bool OpenWorkRecords(const Context& context, const WorkRecords& work, const DefaultRecords& defaults,
                     Document& document) {
  return OpenBinBytes(context, BuildBinFromWorkFiles(work, defaults), document);
}

}  // namespace vexa
