// A file read in pieces, for what need not be held whole. One thread at a time.
#pragma once

#include <cstdint>
#include <cstdio>
#include <memory>
#include <optional>
#include <span>

#include "platform/files.h"

namespace vexa {

struct FileReader {
  std::unique_ptr<std::FILE, int (*)(std::FILE*)> file;
  uint64_t size = 0;  // when it was opened
  uint64_t position = 0;
  std::error_code error{};  // of the last Read that failed; none when the file ended

  // Fills `place` with what the file has from `offset` on; false when that is less. Quickest in order.
  bool Read(uint64_t offset, std::span<uint8_t> place);
};

// Nothing when the file cannot be opened or is no regular file.
std::optional<FileReader> OpenFileReader(const Path& path);

}  // namespace vexa
