#include "platform/file_identity.h"

#include <system_error>

namespace vexa {

namespace {

// As the system compares paths.
Path Written(const Path& path) {
  std::error_code error;
  const Path whole = std::filesystem::absolute(path, error);
  const Path normal = (error ? path : whole).lexically_normal();
#if defined(_WIN32)
  Path::string_type text = normal.native();
  for (auto& character : text) {
    if (character >= L'A' && character <= L'Z') character = static_cast<wchar_t>(character - L'A' + L'a');
  }
  return text;
#else
  return normal;
#endif
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
