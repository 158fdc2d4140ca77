// Lists of other receivers: the first byte chooses the format and whether DVB-S2 is kept, the rest is the
// list. The database made of it opens or is refused, with its links right.
#include <cstdlib>

#include "core/bin_file.h"
#include "import/build_bin.h"
#include "import/dvbv5.h"
#include "import/lamedb.h"
#include "import/vdr.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace vexa;
  if (size == 0) return 0;
  const std::span<const uint8_t> list(data + 1, size - 1);
  const ListOptions options = {.keep_s2 = (data[0] & 4) != 0};
  const DefaultRecords defaults;
  WorkRecords work;
  ListLosses losses;
  switch (data[0] & 3) {
    case 0:
      ReadVdr(list, defaults, work, {}, options, losses);
      break;
    case 1:
      ReadLamedb(list, defaults, work, {}, options, losses);
      break;
    default:
      ReadDvbv5(list, (data[0] & 1) != 0 ? "Any-19.2E" : "any.list", defaults, work, {}, options, losses);
  }
  for (const ListNote& note : NotesOf(losses)) {
    if (note.text.empty()) std::abort();
  }
  Context context;
  context.messages.tell = [](const Message&) {};
  Document document;
  if (!OpenBinBytes(context, BuildBinFromWorkFiles(work, defaults), document)) return 0;
  const StaticDatabase& database = *document.sdbs.at(0).database;
  if (!CheckLinks(database).empty() || database.services.size() != work.services.size()) std::abort();
  return 0;
}
