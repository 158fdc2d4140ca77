#include "platform/files.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>

namespace vexa {

std::FILE* OpenFile(const Path& path, bool writing) {
  return std::fopen(path.c_str(), writing ? "wb" : "rb");
}

const FileOperations& SystemFiles() {
  static const FileOperations operations = {
      [](const Path& path) { return OpenFile(path, true); },
      [](std::FILE* file, std::span<const uint8_t> bytes) {
        return bytes.empty() || std::fwrite(bytes.data(), 1, bytes.size(), file) == bytes.size();
      },
      [](std::FILE* file) {
        // A pipe or a device has nothing to flush to, and says so.
        const bool flushed =
            std::fflush(file) == 0 && (fsync(fileno(file)) == 0 || errno == EINVAL || errno == ENOTSUP);
        return (std::fclose(file) == 0) && flushed;
      },
      [](const Path& from, const Path& to) { return std::rename(from.c_str(), to.c_str()) == 0; },
  };
  return operations;
}

Path ProgramFolder() {
  std::error_code error;
  return std::filesystem::read_symlink("/proc/self/exe", error).parent_path();
}

}  // namespace vexa
