#include "platform/file_reader.h"

#include <limits>
#include <system_error>

#include "platform/file_system.h"

namespace vexa {

bool FileReader::Read(uint64_t offset, std::span<uint8_t> place) {
  if (offset != position) {
    if (offset > std::numeric_limits<long>::max()) return false;
    if (std::fseek(file.get(), static_cast<long>(offset), SEEK_SET) != 0) return false;
  }
  const size_t count = std::fread(place.data(), 1, place.size(), file.get());
  position = offset + count;
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
