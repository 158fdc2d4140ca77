// Channel lists that become databases in windows of their own.
#pragma once

#include <optional>
#include <span>

#include "import/list_format.h"
#include "ui/controls/application.h"
#include "ui/controls/command_row.h"

namespace vexa {

// What a file from outside is, when it is a list: by its name and its first bytes, also behind a byte-order
// mark.
std::optional<ListFormat> ListFormatOf(const Path& path);
// Reads the list with the import's questions and shows its database in a new window. `named`: the format
// that the user has named. False after a message, and when the user gave up.
bool ImportListInWindow(Application& app, const Path& path, std::optional<ListFormat> named = {});

std::span<const CommandRow> ImportCommands();

}  // namespace vexa
