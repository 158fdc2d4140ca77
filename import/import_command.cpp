#include "import/import_command.h"

#include <algorithm>

#include "import/build_bin.h"
#include "import/list_text.h"

namespace vexa {

namespace {

bool ReadList(const Context& context, const Path& path, const ListFormatRow& format,
              const DefaultRecords& defaults, const ListOptions& options, WorkRecords& work) {
  if (format.read(context, path, defaults, work, options) != 0) return true;
  Tell(context.messages, Icon::kStop, "%s", format.unreadable);
  return false;
}

}  // namespace

bool IsListFile(const Path& path) {
  const auto rows = ListFormats();
  return std::any_of(rows.begin(), rows.end(),
                     [&](const ListFormatRow& row) { return HasExtension(path, row.extension()); });
}

std::optional<ListFormat> CheckListFile(const Context& context, const Path& path,
                                        const ListOptions& options) {
  size_t longest = 0;
  for (const ListFormatRow& row : ListFormats())
    longest = std::max(longest, kByteOrderMark.size() + row.signature.size());
  auto start = ReadFileStart(path, longest);
  if (!start) {
    Tell(context.messages, Icon::kStop, "Unable to open the given file.");
    return std::nullopt;
  }
  if (options.satcodx.LooksForRecords() && start->starts_with(kByteOrderMark))
    start->erase(0, kByteOrderMark.size());
  for (const ListFormatRow& row : ListFormats()) {
    if (HasExtension(path, row.extension()) && StartsWithIgnoringCase(*start, row.signature))
      return row.format;
  }
  Tell(context.messages, Icon::kStop, "Error - Invalid File");
  return std::nullopt;
}

bool ImportListFile(const Context& context, const Path& path, const DefaultRecords& defaults,
                    const ImportSteps& steps, WorkRecords& work) {
  work = {};
  const auto format = steps.format ? steps.format : CheckListFile(context, path, steps.options);
  if (!format) return false;
  bool filtered = steps.filter == FilterMode::kOn;
  if (steps.filter == FilterMode::kAsk)
    filtered = Ask(context.messages, "Do you want to generate Bin file with filter mode");
  const ListReading read = [&](const Context& own) {
    return ReadList(own, path, RowOf(*format), defaults, steps.options, work);
  };
  if (!(steps.run ? steps.run(read) : read(context))) return false;
  return !filtered || !steps.choose || steps.choose(work);
}

bool OpenWorkFiles(const Context& context, const WorkRecords& work, const DefaultRecords& defaults,
                   Document& document) {
  return OpenBinBytes(context, BuildBinFromWorkFiles(work, defaults), document);
}

}  // namespace vexa
