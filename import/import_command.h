// From a channel list to an open database: the one sequence of the import, for the editor and the command
// line.
#pragma once

#include <functional>
#include <optional>
#include <span>
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

// The same of a file for which the user has named a format: it is the file's own where it may be, whatever
// the extension says.
std::optional<ListFormat> RecognizeListAs(const Path& path, ListFormat format,
                                          const ListOptions& options = {});

// Whether only a part of the list is taken. kAsk: the user is asked once the format is known.
enum class FilterMode { kOff, kOn, kAsk };

// Reads the list, with messages and progress by the context that it is given; false after a message.
using ListReading = std::function<bool(const Context& context)>;

// A list before it is read.
struct ListToAsk {
  ListFormat format;
  const Path& path;
  std::span<const uint8_t> content;
};

// What a face does in the middle of an import.
struct ImportSteps {
  FilterMode filter = FilterMode::kOff;
  // In filter mode: leaves only the chosen records in `work`; false when the user gave up. Empty: all stay.
  std::function<bool(WorkRecords& work)> choose = {};
  // Runs the reading once, with its result as its own: a face's place for a progress box. Empty: the reading
  // gets the import's context.
  std::function<bool(const ListReading& read)> run = {};
  ListOptions options = {};
  // Asked before the content is read, with the options as they stand: may change them. False: the user gave
  // up. Empty: nobody is asked.
  std::function<bool(const ListToAsk& list, ListOptions& options)> ask = {};
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
