// The folder of a running program for its scratch files, or for what is to outlive it.
//
// A file in it, "vexa-owner", stays locked as long as the process lives, however it ends; so a later start
// knows the folders of programs that were killed, and removes them. Folders without that file are never
// touched.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "platform/files.h"

namespace vexa {

struct LockedFile;

class TemporaryFolder {
 public:
  // The folder `name` under the system's temporary path, made new; `name` gets a number behind it when
  // anything stands there. Null when none can be made: `why` then holds its path, the system's reason and
  // what to do.
  static std::unique_ptr<TemporaryFolder> Make(const std::string& name, std::string& why);
  // The same below `parent`, which is there.
  static std::unique_ptr<TemporaryFolder> MakeIn(const Path& parent, const std::string& name,
                                                 std::string& why);
  ~TemporaryFolder();  // removes it with all that is in it
  // Takes over the folders directly below `parent`, named `family` and more, that programs which are gone
  // left behind, so that nobody else does. What cannot be read is passed over.
  static std::vector<std::unique_ptr<TemporaryFolder>> TakeAbandoned(const Path& parent,
                                                                     const std::string& family);
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;
  const Path& path() const { return path_; }
  // Whether the folder and what is in it stay when the object goes: the next one who looks finds it
  // abandoned.
  void LeaveBehind(bool stays = true) { stays_ = stays; }

 private:
  TemporaryFolder(Path path, std::unique_ptr<LockedFile> owner);
  Path path_;
  bool stays_ = false;
  std::unique_ptr<LockedFile> owner_;
};

// Removes those below the system's temporary path. Failures are silent.
void RemoveAbandonedFolders(const std::string& family);

}  // namespace vexa
