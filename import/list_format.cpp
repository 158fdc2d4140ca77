#include "import/list_format.h"

#include "import/dvb2000.h"
#include "import/dvbv5.h"
#include "import/lamedb.h"
#include "import/list_text.h"
#include "import/lyngsat.h"
#include "import/vdr.h"

namespace vexa {

namespace {

// A reader without options of its own.
template <auto kRead>
bool Plain(const ListToRead& list, WorkRecords& work, ListLosses& losses) {
  kRead(list.content, list.defaults, work, list.progress, list.options.pages, &losses);
  return true;
}

// One for lists of other receivers.
template <auto kRead>
bool Published(const ListToRead& list, WorkRecords& work, ListLosses& losses) {
  kRead(list.content, list.defaults, work, list.progress, list.options, losses);
  return true;
}

bool ReadSdxList(const ListToRead& list, WorkRecords& work, ListLosses& losses) {
  const SatcodxOptions& options = list.options.satcodx;
  if (options.doubt && options.layout == SatcodxLayout::kDefault && options.record_length == 0) {
    if (const std::string why = SatcodxDoubt(list.content); !why.empty()) options.doubt(why);
  }
  ReadSatcodx(list.content, list.defaults, work, list.progress, options, list.options.pages, &losses);
  return true;
}

bool ReadLamedbList(const ListToRead& list, WorkRecords& work, ListLosses& losses) {
  if (!LooksLikeLamedb({}, {reinterpret_cast<const char*>(list.content.data()), list.content.size()}))
    return false;
  return Published<ReadLamedb>(list, work, losses);
}

bool ReadScanFile(const ListToRead& list, WorkRecords& work, ListLosses& losses) {
  ReadDvbv5(list.content, list.file_name, list.defaults, work, list.progress, list.options, losses);
  return true;
}

constexpr ListFormatRow kFormats[] = {{.format = ListFormat::kSatcodx,
                                       .name = "satcodx",
                                       .pattern = "*.sdx",
                                       .signature = "SATCODX",
                                       .read = ReadSdxList,
                                       .unreadable = "Invalid or unsupported SDX file format.",
                                       .import_filter = "SatcoDX Industry Standard Protocol ( *.SDX )",
                                       .merge = {.title = "SatcoDX [ SDX ] File Merger",
                                                 .filter = "SatcoDX Files (*.sdx)",
                                                 .open_title = "Select a SatcoDX file",
                                                 .save_title = "Save SatcoDX File as",
                                                 .empty_folder = "No SatcoDX ( SDX ) file found."},
                                       .missing_is_empty = true,
                                       .names_side = false},
                                      // Its text for an unreadable list is that of the Lyngsat lists.
                                      {.format = ListFormat::kDvb2000,
                                       .name = "dvb2000",
                                       .pattern = "*.dvb",
                                       .signature = "DVSO",
                                       .read = Plain<ReadDvb2000>,
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
                                       .read = Plain<ReadLyngsat>,
                                       .unreadable = "Invalid or unsupported DAT file format.",
                                       .import_filter = "Lyngsat Dat files ( *.DAT )",
                                       .merge = {.title = "Lyngsat [ DAT ] File Merger",
                                                 .filter = "Lyngsat Files (*.dat)",
                                                 .open_title = "Select a Lyngsat file",
                                                 .save_title = "Save as Lyngsat DAT file",
                                                 .empty_folder = "No Lyngsat ( DAT ) file found."}},
                                      {.format = ListFormat::kVdr,
                                       .name = "vdr",
                                       .pattern = "*.conf",
                                       .looks = LooksLikeVdr,
                                       .read = Published<ReadVdr>,
                                       .unreadable = "Invalid or unsupported VDR file format.",
                                       .import_filter = "VDR channels ( channels.conf )",
                                       .reports_s2 = true},
                                      {.format = ListFormat::kLamedb,
                                       .name = "lamedb",
                                       .pattern = "lamedb*",
                                       .looks = LooksLikeLamedb,
                                       .read = ReadLamedbList,
                                       .unreadable = "Invalid or unsupported lamedb file format.",
                                       .import_filter = "Enigma2 services ( lamedb )",
                                       .reports_s2 = true},
                                      {.format = ListFormat::kDvbv5,
                                       .name = "dvbv5",
                                       .pattern = "*.*",
                                       .looks = LooksLikeDvbv5,
                                       .read = ReadScanFile,
                                       .unreadable = "Invalid or unsupported DVBv5 file format.",
                                       .import_filter = "DVBv5 scan files ( *.* )",
                                       .reports_s2 = true}};

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

bool IsText(ListFormat format) {
  return RowOf(format).looks != nullptr;
}

std::optional<ListFormat> ListFormatNamed(std::string_view name) {
  for (const ListFormatRow& row : kFormats) {
    if (row.name == name) return row.format;
  }
  return std::nullopt;
}

namespace {

void TellUnreadableList(const Context& context, ListFormat format, const std::string& why) {
  TellWhy(context.messages, Icon::kStop, why, "%s", RowOf(format).unreadable);
}

}  // namespace

bool LoadList(const Context& context, const Path& path, ListFormat format, Bytes& content) {
  const ListFormatRow& row = RowOf(format);
  const ReadResult result = ReadListFile(context, path, content);
  if (result == ReadResult::kDone || (result == ReadResult::kCannotOpen && row.missing_is_empty)) return true;
  if (result == ReadResult::kCannotOpen)
    TellWhy(context.messages, Icon::kStop, ReadReason(path, result.error), "Error in opening file");
  TellUnreadableList(context, format, ReadReason(path, result.error));
  return false;
}

bool ReadLoadedList(const Context& context, const Path& path, std::span<const uint8_t> content,
                    ListFormat format, const DefaultRecords& defaults, const ListOptions& options,
                    WorkRecords& work, ListLosses& losses) {
  const ListToRead list = {content, Utf8FromPath(path.filename()), defaults, options, context.progress};
  if (RowOf(format).read(list, work, losses)) return true;
  TellUnreadableList(
      context, format,
      Utf8FromPath(path) +
          ": It is no list of this format. Choose another file, or say the format that it has.");
  return false;
}

bool ReadList(const Context& context, const Path& path, ListFormat format, const DefaultRecords& defaults,
              const ListOptions& options, WorkRecords& work, ListLosses& losses) {
  Bytes content;
  return LoadList(context, path, format, content) &&
         ReadLoadedList(context, path, content, format, defaults, options, work, losses);
}

}  // namespace vexa
