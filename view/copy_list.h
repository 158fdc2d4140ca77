// What the dialog "Restore" shows: the copies of a folder, a row each. A row is read when it is asked for, so
// that a folder of any size opens at once.
#pragma once

#include <array>
#include <optional>
#include <string>
#include <vector>

#include "config/project_config.h"
#include "core/context.h"
#include "serial/copies.h"
#include "view/refusal.h"

namespace vexa {

struct CopyList {
  Context context;
  ProjectConfig config;  // of the receiver that one of them goes to
  Path folder;
  std::vector<ReceiverCopy> copies;
  std::vector<std::optional<CopyContent>> contents;  // beside `copies`; nothing: not read yet
};

inline constexpr std::array kCopyColumns = {"Date",     "Time",     "Serial number", "Satellites",
                                            "Carriers", "Services", "Size",          "State"};

// What the folder holds; empty after a message when it cannot be read.
CopyList OpenCopyList(const Context& context, const ProjectConfig& config, const Path& folder);
std::string CopyCell(CopyList& list, size_t row, size_t column);
// Why the row does not go back to the receiver; `back` gets what goes back otherwise. Without a row:
// that one is to be chosen.
std::optional<Refusal> TakeCopy(CopyList& list, std::optional<size_t> row, CopyToSend& back);
// "3 copies in C:\Copies"
std::string CopyCountText(const CopyList& list);

}  // namespace vexa
