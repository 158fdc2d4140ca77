// From a channel list to an open database: the one sequence of the import, for the editor and the command
// line.
#pragma once

#include <functional>
#include <optional>
#include <vector>

#include "core/bin_file.h"
#include "import/list_format.h"

namespace vexa {

// The format of a file by its extension and first bytes, which must agree, behind a byte-order mark where the
// options allow one; of other extensions by its start alone. Nothing for other files, and for one that cannot
// be opened.
std::optional<ListFormat> RecognizeList(const Path& path, const ListOptions& options = {});
// The same; nothing after a message.
std::optional<ListFormat> CheckListFile(const Context& context, const Path& path,
                                        const ListOptions& options = {});

// Whether the extension is that of a list, or the content.
bool IsListFile(const Path& path);

// Whether only a part of the list is taken. kAsk: the user is asked once the format is known.
enum class FilterMode { kOff, kOn, kAsk };

// Reads the list, with messages and progress by the context that it is given; false after a message.
using ListReading = std::function<bool(const Context& context)>;

// What a face does in the middle of an import.
struct ImportSteps {
  FilterMode filter = FilterMode::kOff;
  // In filter mode: leaves only the chosen records in `work`; false when the user gave up. Empty: all stay.
  std::function<bool(WorkRecords& work)> choose = {};
  // Runs the reading once, with its result as its own: a face's place for a progress box. Empty: the reading
  // gets the import's context.
  std::function<bool(const ListReading& read)> run = {};
  ListOptions options = {};
  // Told what was left out, once the list is read. Empty: it is told in one box.
  std::function<void(const std::vector<ListNote>& notes)> tell = {};
  std::optional<ListFormat> format = {};  // taken for the file's own, whatever its name and first bytes say
};

// Checks the list, reads it and lets the user choose from it. `work`, emptied first, holds what is to be
// imported. False after a message, and when the user gave up.
bool ImportListFile(const Context& context, const Path& path, const DefaultRecords& defaults,
                    const ImportSteps& steps, WorkRecords& work);

// The database of the work files as the only SDB, "SDB1", of an empty document. False after a message, such
// as that of a limit that the list exceeds.
bool OpenWorkRecords(const Context& context, const WorkRecords& work, const DefaultRecords& defaults,
                     Document& document);

}  // namespace vexa
