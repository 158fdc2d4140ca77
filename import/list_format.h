// The formats of channel lists, a row each: all that the import, the merger, the file dialogs and the command
// line need to know of one.
#pragma once

#include <optional>
#include <span>
#include <string_view>

#include "import/satcodx.h"
#include "import/work_files.h"

namespace vexa {

enum class ListFormat { kSatcodx, kDvb2000, kLyngsat };  // in the order of the menus

// How a list is read where its format leaves a choice; each format looks at its own part alone.
struct ListOptions {
  SatcodxOptions satcodx = {};
};

// Texts of the file merger's windows, UTF-8.
struct MergeTexts {
  const char *title, *filter, *open_title, *save_title, *empty_folder;
};

struct ListFormatRow {
  ListFormat format;
  const char* name;            // on the command line
  const char* pattern;         // of its file names: "*.sdx"
  std::string_view signature;  // first bytes of a list, in any letter case
  // Fills `work` from a file. 1, or 0 when it cannot be read; some formats show a message of their own then.
  int (*read)(const Context& context, const Path& path, const DefaultRecords& defaults, WorkRecords& work,
              const ListOptions& options);
  const char* unreadable;     // the message behind a failed read
  const char* import_filter;  // of the dialog that chooses a list to import
  MergeTexts merge;

  const char* extension() const { return pattern + 1; }  // with its point
};

// One row a format, in the order of the enumeration; valid as long as the program runs.
std::span<const ListFormatRow> ListFormats();
const ListFormatRow& RowOf(ListFormat format);
// The format of that name, letter case counting; nothing when there is none.
std::optional<ListFormat> ListFormatNamed(std::string_view name);

}  // namespace vexa
