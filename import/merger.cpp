#include "import/merger.h"

#include <algorithm>
#include <system_error>
#include <utility>

#include "import/list_text.h"

namespace vexa {

namespace {

namespace fs = std::filesystem;

bool IsListed(const Merger& merger, const Path& path) {
  return std::any_of(merger.files.begin(), merger.files.end(),
                     [&](const Path& listed) { return listed.native() == path.native(); });
}

std::string LowerName(const Path& path) {
  std::string name = Utf8FromPath(path.filename());
  for (char& c : name) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  }
  return name;
}

}  // namespace

bool IsSatcodxVersion2Or3(std::string_view start) {
  return start.size() >= 10 && StartsWithIgnoringCase(start, "satcodx") && start[8] == '0' &&
         (start[9] == '2' || start[9] == '3');
}

bool AddMergeFile(const Context& context, Merger& merger, const Path& path) {
  if (IsListed(merger, path)) {
    TellWhy(context.messages, Icon::kStop,
            Utf8FromPath(path) + ": It is in the list already. Choose other files.",
            "Duplication of files not allowed.");
    return false;
  }
  std::string start;
  const ReadResult read =
      merger.format == ListFormat::kSatcodx ? ReadFileStart(path, 10, start) : ReadResult(ReadResult::kDone);
  if (read == ReadResult::kFailed) {
    TellUnreadList(context, path, read.error);
    return false;
  }
  if (merger.format == ListFormat::kSatcodx && !IsSatcodxVersion2Or3(start)) {
    TellWhy(
        context.messages, Icon::kStop, ReadReason(path, read.error),
        "SatcoDX Merger allows only SatcoDX Protocol Version 2 and 3.\nPlease download latest SatcoDX ( SDX "
        ") file "
        "from website");
    return false;
  }
  merger.files.push_back(path);
  return true;
}

bool AddMergeFolder(const Context& context, Merger& merger, const Path& folder) {
  const ListFormatRow& format = RowOf(merger.format);
  std::vector<std::pair<std::string, Path>> found;
  std::vector<Path> names;
  const Outcome listed = context.files->list(folder, names);
  for (const Path& name : names) {
    std::error_code ignored;
    if (HasExtension(name, format.extension()) && !fs::is_directory(folder / name, ignored))
      found.emplace_back(LowerName(name), folder / name);
  }
  if (found.empty()) {
    TellWhy(context.messages, Icon::kStop, ReadReason(folder, listed.error), "%s", format.merge.empty_folder);
    return false;
  }
  std::sort(found.begin(), found.end());
  for (const auto& [name, path] : found) {
    if (!IsListed(merger, path)) merger.files.push_back(path);
  }
  return true;
}

void RemoveMergeFiles(Merger& merger, const std::vector<size_t>& positions) {
  std::vector<Path> left;
  for (size_t i = 0; i < merger.files.size(); ++i) {
    if (std::find(positions.begin(), positions.end(), i) == positions.end()) left.push_back(merger.files[i]);
  }
  merger.files = std::move(left);
}

size_t MoveMergeFiles(Merger& merger, const std::vector<size_t>& positions, size_t before) {
  std::vector<Path> moved, left;
  size_t place = 0;
  for (size_t i = 0; i < merger.files.size(); ++i) {
    const bool moves = std::find(positions.begin(), positions.end(), i) != positions.end();
    (moves ? moved : left).push_back(merger.files[i]);
    if (!moves && i < before) place = left.size();
  }
  left.insert(left.begin() + static_cast<std::ptrdiff_t>(place), moved.begin(), moved.end());
  merger.files = std::move(left);
  return place;
}

bool CanMerge(const Context& context, const Merger& merger) {
  if (merger.files.size() >= 2) return true;
  Tell(context.messages, Icon::kWarning, "Select atleast two files.");
  return false;
}

bool CanMergeInto(const Context& context, const Merger& merger, const Path& output) {
  for (const Path& path : merger.files) {
    std::error_code error;
    if (path.native() != output.native() && !fs::equivalent(path, output, error)) continue;
    TellWhy(context.messages, Icon::kStop, Utf8FromPath(path) + ": Choose another name for the merged file.",
            "The merged file cannot be one of the selected files.");
    return false;
  }
  return true;
}

std::optional<MergeResult> WriteMerged(const Context& context, const Merger& merger, const Path& output) {
  const Progress& progress = context.progress;
  if (progress.range) progress.range(merger.files.size());
  bool read = true;
  std::string left_out;
  const auto produce = [&](const PieceWriter& write) {
    for (size_t i = 0; i < merger.files.size(); ++i) {
      Bytes list;
      const ReadResult result = ReadListFile(context, merger.files[i], list);
      read = result != ReadResult::kFailed;
      if (!read || !write(list)) return false;
      if (result != ReadResult::kDone)
        left_out += (left_out.empty() ? "" : " ") + std::string("Left out: ") +
                    ReadReason(merger.files[i], result.error);
      if (progress.position) progress.position(i + 1);
    }
    return true;
  };
  const WriteResult written = WriteWholeFileBy(output, produce, *context.files);
  if (!read) return std::nullopt;
  return MergeResult{written, left_out};
}

void TellMerged(const Context& context, const Path& output, const MergeResult& result) {
  const bool done = result.written == WriteResult::kDone;
  TellWhy(context.messages, Icon::kInformation,
          done ? result.left_out : "It was not written. " + WriteReason(output, result.written.error),
          "%s \n file is generated successfully.", Utf8FromPath(output).c_str());
}

}  // namespace vexa
