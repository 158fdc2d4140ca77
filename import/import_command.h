// From a channel list to an open database: the steps of the import command, for the editor and the command
// line.
#pragma once

#include <functional>
#include <optional>

#include "core/bin_file.h"
#include "import/work_files.h"

namespace vexa {

enum class ListFormat { kSatcodx, kDvb2000, kLyngsat };

// Whether the extension is that of a list.
bool IsListFile(const Path& path);
// The format that the extension names and the first bytes confirm. Nothing after a message.
std::optional<ListFormat> CheckListFile(const Context& context, const Path& path);

// "Do you want to generate Bin file with filter mode"
bool AskFilterMode(const Context& context);

// Runs the format's reader. False after a message.
bool ReadList(const Context& context, const Path& path, ListFormat format, const DefaultRecords& defaults,
              WorkFiles& work);

// The database of the work files as the only SDB, "SDB1", of an empty document. False after a message.
bool OpenWorkFiles(const Context& context, const WorkFiles& work, const DefaultRecords& defaults,
                   Document& document);

// Lets the user choose, and leaves only the chosen records; false when the user gave up.
using FilterDialogs = std::function<bool(WorkFiles& work)>;

// The whole command. False when nothing was imported; then a message was shown or the user gave up.
bool ImportListFile(const Context& context, const Path& path, const DefaultRecords& defaults,
                    const FilterDialogs& filter, Document& document);

}  // namespace vexa
