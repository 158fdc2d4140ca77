#include "import/list_format.h"

#include "import/dvb2000.h"
#include "import/lyngsat.h"

namespace vexa {

namespace {

// A reader without options as one that has them.
template <auto kRead>
int Plain(const Context& context, const Path& path, const DefaultRecords& defaults, WorkRecords& work,
          const ListOptions&) {
  return kRead(context, path, defaults, work);
}

int ReadSdx(const Context& context, const Path& path, const DefaultRecords& defaults, WorkRecords& work,
            const ListOptions& options) {
  return ImportSdxFile(context, path, defaults, work, options.satcodx);
}

constexpr ListFormatRow kFormats[] = {{.format = ListFormat::kSatcodx,
                                       .name = "satcodx",
                                       .pattern = "*.sdx",
                                       .signature = "SATCODX",
                                       .read = ReadSdx,
                                       .unreadable = "Invalid or unsupported SDX file format.",
                                       .import_filter = "SatcoDX Industry Standard Protocol ( *.SDX )",
                                       .merge = {.title = "SatcoDX [ SDX ] File Merger",
                                                 .filter = "SatcoDX Files (*.sdx)",
                                                 .open_title = "Select a SatcoDX file",
                                                 .save_title = "Save SatcoDX File as",
                                                 .empty_folder = "No SatcoDX ( SDX ) file found."}},
                                      // Its text for an unreadable list is that of the Lyngsat lists.
                                      {.format = ListFormat::kDvb2000,
                                       .name = "dvb2000",
                                       .pattern = "*.dvb",
                                       .signature = "DVSO",
                                       .read = Plain<ImportDvbFile>,
                                       .unreadable = "Invalid or unsupported DAT file format.",
                                       .import_filter = "DVB2000 files ( *.DVB )",
                                       .merge = {.title = "DVB2000 [ DVB ] File Merger",
                                                 .filter = "DVB2000 Files (*.dvb)",
                                                 .open_title = "Select a DVB2000 file",
                                                 .save_title = "Save DVB2000 File as",
                                                 .empty_folder = "No DVB2000 ( DVB ) file found."}},
                                      {.format = ListFormat::kLyngsat,
                                       .name = "lyngsat",
                                       .pattern = "*.dat",
                                       .signature = ":SAT",
                                       .read = Plain<ImportLyngsatFile>,
                                       .unreadable = "Invalid or unsupported DAT file format.",
                                       .import_filter = "Lyngsat Dat files ( *.DAT )",
                                       .merge = {.title = "Lyngsat [ DAT ] File Merger",
                                                 .filter = "Lyngsat Files (*.dat)",
                                                 .open_title = "Select a Lyngsat file",
                                                 .save_title = "Save as Lyngsat DAT file",
                                                 .empty_folder = "No Lyngsat ( DAT ) file found."}}};

constexpr bool IsInOrder() {
  size_t place = 0;
  for (const ListFormatRow& row : kFormats) {
    if (row.format != static_cast<ListFormat>(place++)) return false;
  }
  return true;
}
static_assert(IsInOrder());

}  // namespace

std::span<const ListFormatRow> ListFormats() {
  return kFormats;
}

const ListFormatRow& RowOf(ListFormat format) {
  return kFormats[static_cast<size_t>(format)];
}

std::optional<ListFormat> ListFormatNamed(std::string_view name) {
  for (const ListFormatRow& row : kFormats) {
    if (row.name == name) return row.format;
  }
  return std::nullopt;
}

}  // namespace vexa
