// The system's dialogs for choosing files. Nothing when the user cancels. Texts are UTF-8.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "platform/files.h"
#include "ui/controls/windows_api.h"

namespace vexa {

struct FileFilter {
  const char* name;
  const char* pattern;  // "*.bin"
};

struct FileQuestion {
  const char* title;
  std::vector<FileFilter> filters;
  const char* extension = nullptr;  // added to a name without one, without dot
  size_t first_filter = 0;
};

inline const std::vector<FileFilter> kBinFilters = {{"StaticDatabase BIN Files ( *.BIN )", "*.bin"}};

// Both start with `proposed`, in its folder.
std::optional<Path> AskOpenFile(HWND owner, const FileQuestion& question, const Path& proposed = {});
// Any number of files of one folder, by name; empty when the user cancels.
std::vector<Path> AskOpenFiles(HWND owner, const FileQuestion& question);
std::optional<Path> AskSaveFile(HWND owner, const FileQuestion& question, const Path& proposed = {});
// A folder of the file system; starts at `folder` and shows the highlighted folder's path.
std::optional<Path> AskFolder(HWND owner, const char* title, const Path& folder);

// The user's folder for documents; the program's own where the system names none.
Path DocumentsFolder();

}  // namespace vexa
