// What every job of the engine is given beside its data: functions that tell the user something or ask him,
// the operations on files, a folder for scratch files, functions that show progress. The face that starts a
// job owns its context, which must live until the job ends.
#pragma once

#include <cstdint>
#include <functional>

#include "core/messages.h"
#include "platform/files.h"

namespace vexa {

struct Progress {
  std::function<void(uint64_t total)> range;        // may be empty
  std::function<void(uint64_t position)> position;  // may be empty; 0..total
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
