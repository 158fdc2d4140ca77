// The file merger: joins channel lists of one format byte for byte, in the order in which they were chosen.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "import/list_format.h"

namespace vexa {

struct Merger {
  ListFormat format = ListFormat::kSatcodx;
  std::vector<Path> files;  // in the order of the result
};

// Whether a list begins so: "SATCODX" without regard to case, any character, then "02" or "03".
bool IsSatcodxVersion2Or3(std::string_view start);

// Button "Files". False after a message: the very path is listed already, or a SatcoDX list of another
// version, or one that cannot be read.
bool AddMergeFile(const Context& context, Merger& merger, const Path& path);
// Button "Folder": adds the folder's files of the format, by name without regard to case, but those listed
// already. Their version is not looked at. False after a message: there is none.
bool AddMergeFolder(const Context& context, Merger& merger, const Path& folder);
// Takes out the files at `positions`, counted from 0; positions that are not there do nothing.
void RemoveMergeFiles(Merger& merger, const std::vector<size_t>& positions);
// Puts the files at `positions` together, in their order, before the one at `before` (the number of files or
// more: at the end). The position of the first of them afterwards.
size_t MoveMergeFiles(Merger& merger, const std::vector<size_t>& positions, size_t before);
// True with two files and more; else a warning.
bool CanMerge(const Context& context, const Merger& merger);

// False after a message when `output` is one of the lists that are to be joined, by whatever path.
bool CanMergeInto(const Context& context, const Merger& merger, const Path& output);

struct MergeResult {
  WriteResult written;
  std::string left_out;  // the files that could not be opened, and why; empty: none
};
// Writes the merged list, with progress by files; a file that cannot be opened adds nothing. Nothing, with
// the output as it was, after the message of a file whose reading broke off.
std::optional<MergeResult> WriteMerged(const Context& context, const Merger& merger, const Path& output);
// Says that the merged list is there; said in any case. The detail says why it could not be written, and what
// was left out.
void TellMerged(const Context& context, const Path& output, const MergeResult& result);

}  // namespace vexa
