// The file merger: joins channel lists of one format byte for byte, in the order in which they were chosen.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "core/context.h"

namespace vexa {

enum class MergeMode { kSatcodx = 1, kLyngsat = 2, kDvb2000 = 3 };

struct MergeTexts {
  const char *title, *filter, *open_title, *save_title, *pattern, *extension, *empty_folder;
};
// Any mode but the first two is taken as DVB2000.
const MergeTexts& TextsOf(MergeMode mode);

struct Merger {
  MergeMode mode = MergeMode::kSatcodx;
  std::vector<Path> files;
};

// "SATCODX" without regard to case, any character, then "02" or "03".
bool IsSatcodxVersion2Or3(const Path& path);

// Button "Files". False after a message: the very path is listed already, or a SatcoDX list of another
// version.
bool AddMergeFile(const Context& context, Merger& merger, const Path& path);
// Button "Folder": adds the folder's files of the format, by name without regard to case, but those listed
// already. Their version is not looked at. False after a message: there is none.
bool AddMergeFolder(const Context& context, Merger& merger, const Path& folder);
void RemoveMergeFiles(Merger& merger, const std::vector<size_t>& positions);
// Puts the files at `positions` together, in their order, before the one at `before` (the number of files: at
// the end). The position of the first of them afterwards.
size_t MoveMergeFiles(Merger& merger, const std::vector<size_t>& positions, size_t before);
// True with two files and more; else a warning.
bool CanMerge(const Context& context, const Merger& merger);

// False after a message when `output` is one of the lists that are to be joined, by whatever path.
bool CanMergeInto(const Context& context, const Merger& merger, const Path& output);

// Writes the merged list, with progress by files; a file that cannot be opened adds nothing. Nothing, with
// the output as it was, after the message of a file whose reading broke off.
std::optional<WriteResult> WriteMerged(const Context& context, const Merger& merger, const Path& output);
// Says that the merged list is there; said in any case.
void TellMerged(const Context& context, const Path& output);

}  // namespace vexa
