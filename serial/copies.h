// The copies that a folder holds (serial/backup.h), and what is in them. A copy is whole when its database is
// the one that the configuration finds in its regions; only such a copy goes back to a receiver.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "config/project_config.h"
#include "core/context.h"
#include "core/database.h"
#include "image/adb.h"
#include "platform/clock.h"

namespace vexa {

struct ReceiverCopy {
  std::string name;  // of its files, without region and extension, UTF-8
  LocalTime time;
  std::string serial;  // what stands behind the time; may be empty
};
// The newest first. Other files are passed over. Not done when the folder cannot be read; a folder that is
// not there holds none.
Outcome ListCopies(const Path& folder, std::vector<ReceiverCopy>& copies);

struct CopyContent {
  std::string refusal;                                // why it does not go back, a sentence; empty: it does
  size_t satellites = 0, carriers = 0, services = 0;  // of its database, without unused places
  uint64_t bytes = 0;                                 // of all its files
};
// What goes back: the regions, byte for byte, and the database and settings that they hold.
struct CopyToSend {
  Document document;
  HeldMemory held;
};
// Reads the copy. Silent. `back`, unless null, gets what goes back; it is left alone when the copy is
// refused.
CopyContent ReadCopy(const Context& context, const ProjectConfig& config, const Path& folder,
                     const ReceiverCopy& copy, CopyToSend* back = nullptr);

}  // namespace vexa
