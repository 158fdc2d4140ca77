// How full a receiver would be with an SDB, and how near a database file is to what a receiver takes.
#pragma once

#include <cstdint>
#include <string>

#include "config/project_config.h"
#include "core/database.h"

namespace vexa {

enum class RoomLevel : uint8_t { kEnough, kNear, kOver };  // green; amber from 90 percent on; red above 100

struct RoomLook {
  RoomLevel level = RoomLevel::kEnough;
  double share = 0;   // of the fullest table, 0 to 1; above when it does not fit
  std::string text;   // for the status line: "Room: services 91 %"; empty: nothing is known
  std::string lines;  // for its box: a line a table, the fullest first
};

// Of the file that a save would write now, in bytes; 0 when none could be written.
uint64_t FileSizeWhenSaved(const Document& document);

// Of the SDB of the document, by the tables of the configuration; `file_size` as above.
RoomLook RoomOf(const Document& document, size_t sdb, const ProjectConfig& config, uint64_t file_size);

}  // namespace vexa
