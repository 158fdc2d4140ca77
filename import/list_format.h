// The formats of channel lists, a row each: all that the import, the merger, the file dialogs and the command
// line need to know of one.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "import/list_losses.h"
#include "import/list_names.h"
#include "import/satcodx.h"
#include "import/work_files.h"

namespace vexa {

enum class ListFormat { kSatcodx, kDvb2000, kLyngsat, kVdr, kLamedb, kDvbv5 };  // in the order of the menus

// How a list is read where its format leaves a choice; each format looks at its own part alone.
struct ListOptions {
  SatcodxOptions satcodx = {};
  ListPages pages = {};
  bool keep_s2 = false;  // DVB-S2 carriers stay, as if they were DVB-S; else they are left out
};

// Texts of the file merger's windows, UTF-8.
struct MergeTexts {
  const char *title, *filter, *open_title, *save_title, *empty_folder;
};

// A list that is to be read.
struct ListToRead {
  std::span<const uint8_t> content;
  std::string file_name;  // UTF-8, without folder
  const DefaultRecords& defaults;
  const ListOptions& options;
  const Progress& progress;
};

struct ListFormatRow {
  ListFormat format;
  const char* name;     // on the command line
  const char* pattern;  // of its file names: "*.sdx"
  std::string_view signature =
      {};  // first bytes of a list, in any letter case; empty: `looks` judges instead
  // Whether a file may be of a format that has neither one extension nor one signature; by as much of its
  // start as kListStart says.
  bool (*looks)(const Path& path, std::string_view start) = nullptr;
  // Fills `work`; false: the content is no list of the format.
  bool (*read)(const ListToRead& list, WorkRecords& work, ListLosses& losses);
  const char* unreadable;         // the message behind a failed read
  const char* import_filter;      // of the dialog that chooses a list to import
  MergeTexts merge = {};          // none: its lists are not merged
  bool missing_is_empty = false;  // a file that cannot be opened reads as an empty list
  bool reports_s2 = false;        // its carriers have a delivery system
  bool names_side = true;         // of orbital positions: East or West

  const char* extension() const { return pattern + 1; }  // with its point; of formats with a signature
};

inline constexpr size_t kListStart = 16384;  // bytes

// One row a format, in the order of the enumeration; valid as long as the program runs.
std::span<const ListFormatRow> ListFormats();
const ListFormatRow& RowOf(ListFormat format);
// Its lists are lines of text, whose names are characters and no bytes of a page.
bool IsText(ListFormat format);
// The format of that name, letter case counting; nothing when there is none.
std::optional<ListFormat> ListFormatNamed(std::string_view name);

// The content of a list that is to be read so. False after messages.
bool LoadList(const Context& context, const Path& path, ListFormat format, Bytes& content);
// Fills `work` from the content of the file. False after messages.
bool ReadLoadedList(const Context& context, const Path& path, std::span<const uint8_t> content,
                    ListFormat format, const DefaultRecords& defaults, const ListOptions& options,
                    WorkRecords& work, ListLosses& losses);
// Both: fills `work` from a file.
bool ReadList(const Context& context, const Path& path, ListFormat format, const DefaultRecords& defaults,
              const ListOptions& options, WorkRecords& work, ListLosses& losses);

}  // namespace vexa
