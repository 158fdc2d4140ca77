#include "platform/file_reader.h"

#include <limits>

#include "platform/file_system.h"

namespace vexa {

bool FileReader::Read(uint64_t offset, std::span<uint8_t> place) {
  ForgetFileErrors();
  error = {};
  if (offset != position) {
    const bool fits = offset <= std::numeric_limits<long>::max();
    if (!fits || std::fseek(file.get(), static_cast<long>(offset), SEEK_SET) != 0) {
      error = LastFileError(std::errc::file_too_large);
      return false;
    }
  }
  const size_t count = std::fread(place.data(), 1, place.size(), file.get());
  position = offset + count;
  if (std::ferror(file.get())) error = LastFileError();
  return count == place.size();
}

std::optional<FileReader> OpenFileReader(const Path& path) {
  std::error_code error;
  if (!std::filesystem::is_regular_file(path, error)) return std::nullopt;
  FileReader reader{{OpenFile(path, false), &std::fclose}};
  reader.size = std::filesystem::file_size(path, error);
  if (!reader.file || error) return std::nullopt;
  return reader;
}

}  // namespace vexa
