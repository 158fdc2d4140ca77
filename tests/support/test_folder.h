// A folder of a test or a yardstick.
#pragma once

#include <optional>
#include <string>

#include "platform/files.h"

namespace vexa {

// An empty folder of this name under the system's temporary path, in place of what had the name; the caller
// removes it. Nothing when it cannot be made.
inline std::optional<Path> MakeTestFolder(const std::string& name) {
  std::error_code error;
  const Path folder = std::filesystem::temp_directory_path(error) / PathFromUtf8(name);
  if (error) return std::nullopt;
  std::filesystem::remove_all(folder, error);
  if (!std::filesystem::create_directory(folder, error) || error) return std::nullopt;
  return folder;
}

}  // namespace vexa
