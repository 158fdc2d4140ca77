// Which file a path names, and whether that file is as it was. Nothing here changes a file. Thread-safe: no
// shared state.
#pragma once

#include <cstdint>
#include <optional>

#include "platform/files.h"

namespace vexa {

// Whether both paths lead to one file, however they are written: relative or whole, by short or long names,
// by links, and in any letter case where the system does not tell cases apart. Of files that are not there
// the written paths decide.
bool SameFile(const Path& one, const Path& other);

// What tells that somebody wrote to a file.
struct FileState {
  uint64_t size = 0;
  std::filesystem::file_time_type written{};
  bool operator==(const FileState&) const = default;
};

// Nothing when the file is not there.
std::optional<FileState> StateOf(const Path& path);

}  // namespace vexa
