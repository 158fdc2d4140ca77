// What `platform/` itself needs of the system's files; the other rooms use files.h.
#pragma once

#include <cstdio>

#include "platform/files.h"

namespace vexa {

// nullptr when it cannot be opened; LastFileError says why. Writing empties the file. Throws std::bad_alloc
// when that was for want of memory.
std::FILE* OpenFile(const Path& path, bool writing);

// Whether the path names a file of the disk by a number under which the program has it open, as "/dev/stdout"
// may: OpenFile then goes on where that stands, and nothing may take its place.
bool IsOpenAlready(const Path& path);

// The same for writing behind what is there. Waits until nobody else has it open so, who may then have added
// to it.
std::FILE* OpenFileToAppend(const Path& path);

// What a path leads to: through links, also through one that leads nowhere. A link when they form a circle.
Path FollowLinks(Path path);

// A name in the form in which the system compares names.
Path ComparedName(const Path& path);

// Removes all that is in the folder but `kept`; failures are silent.
void EmptyFolder(const Path& folder, const Path& kept);

// Gives the file a second name; not done when anything has that, or where the file system knows no such
// names.
Outcome LinkFile(const Path& file, const Path& name);

enum class NewFile { kMade, kTaken, kFailed };
// An empty file under a name that was free; kTaken when anything has the name. `why` is set when it failed.
NewFile CreateNewFile(const Path& path, std::error_code& why);

// A file that stays locked until the object goes or the process ends, however it ends.
struct LockedFile {
  virtual ~LockedFile() = default;
};
// Opens `path`, or makes it when `create`, and locks it. Null when it is not there, is locked by another, is
// a link, or was removed meanwhile; LastSystemError says why. The file can be read, written, renamed and
// removed as before.
std::unique_ptr<LockedFile> LockFile(const Path& path, bool create);

// A number of the system that runs this process: two processes with one number see each other's locks.
uint32_t RunningSystem();

}  // namespace vexa
