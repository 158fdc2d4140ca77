// The folder of a running program for its scratch files.
//
// A file in it, "vexa-owner", stays locked as long as the process lives, however it ends; so a later start
// knows the folders of programs that were killed, and removes them. Folders without that file are never
// touched.
#pragma once

#include <memory>
#include <string>

#include "platform/files.h"

namespace vexa {

struct LockedFile;

class TemporaryFolder {
 public:
  // The folder `name` under the system's temporary path, made new; `name` gets a number behind it when
  // anything stands there. Null when none can be made: `why` then holds its path, the system's reason and
  // what to do.
  static std::unique_ptr<TemporaryFolder> Make(const std::string& name, std::string& why);
  ~TemporaryFolder();  // removes it with all that is in it
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;
  const Path& path() const { return path_; }

 private:
  TemporaryFolder(Path path, std::unique_ptr<LockedFile> owner);
  Path path_;
  std::unique_ptr<LockedFile> owner_;
};

// Removes the folders whose name starts with `family` and that a TemporaryFolder of a process that is gone
// left behind. Failures are silent.
void RemoveAbandonedFolders(const std::string& family);

}  // namespace vexa
