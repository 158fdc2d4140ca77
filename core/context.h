// What every engine job is given besides its data: the ear of the user, the file system, a folder for
// scratch files, progress. A face owns one for the time of a job; nothing here is global.
#pragma once

#include <cstdint>
#include <functional>

#include "core/messages.h"
#include "platform/files.h"

namespace vexa {

struct Progress {
  std::function<void(uint64_t total)> range;        // may be empty
  std::function<void(uint64_t position)> position;  // may be empty; 0..total
  std::function<bool()> cancelled;                  // may be empty: never
};

struct DefaultRecords;  // core/database.h

struct Context {
  Messages messages;
  const FileOperations* files = &SystemFiles();
  Path temporary_folder;  // the program's own; exists
  Progress progress;
  const DefaultRecords* defaults = nullptr;  // what fills unused places of a stream; nullptr: the factory's
};

// This context, whose messages are about `object`.
Context About(const Context& context, const std::string& object);

}  // namespace vexa
