// Any bytes are a DVB2000 list, and the database made of it opens or is refused, with its links right.
#include <cstdlib>

#include "core/bin_file.h"
#include "import/build_bin.h"
#include "import/dvb2000.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace vexa;
  Context context;
  context.messages.tell = [](const Message&) {};
  WorkRecords work;
  ReadDvb2000({data, size}, DefaultRecords{}, work);
  Document document;
  if (!OpenBinBytes(context, BuildBinFromWorkFiles(work, DefaultRecords{}), document)) return 0;
  const StaticDatabase& database = *document.sdbs.at(0).database;
  if (!CheckLinks(database).empty() || database.services.size() != work.services.size()) std::abort();
  return 0;
}
