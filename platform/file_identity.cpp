#include "platform/file_identity.h"

#include <system_error>

#include "platform/file_system.h"

namespace vexa {

namespace {

// As the system compares paths, for a file that need not be there: links are followed where they lead nowhere
// too.
Path Written(Path path) {
  std::error_code error;
  path = PlainPath(std::filesystem::absolute(path, error));
  path = FollowLinks(path);
  const Path parent = std::filesystem::weakly_canonical(path.parent_path(), error);
  return ComparedName(error ? path : parent / path.filename());
}

}  // namespace

bool SameFile(const Path& one, const Path& other) {
  std::error_code error;
  if (std::filesystem::equivalent(one, other, error)) return true;
  return Written(one) == Written(other);
}

std::optional<FileState> StateOf(const Path& path) {
  std::error_code error;
  const auto size = std::filesystem::file_size(path, error);
  if (error) return std::nullopt;
  const auto written = std::filesystem::last_write_time(path, error);
  if (error) return std::nullopt;
  return FileState{size, written};
}

}  // namespace vexa
