// Any bytes are a SatcoDX list, and the database made of it opens or is refused, with its links right.
#include <cstdlib>
#include <iterator>

#include "core/bin_file.h"
#include "import/build_bin.h"
#include "import/satcodx.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace vexa;
  Context context;
  context.messages.tell = [](const Message&) {};
  SatcodxDoubt({data, size});
  const size_t length = size % 2 == 0 ? 0 : kSatcodxReadLength + data[size / 2] % 16;
  // One layout an input: the last byte, which belongs to no record unless it ends one, chooses it.
  constexpr SatcodxLayout kLayouts[] = {SatcodxLayout::kDefault, SatcodxLayout::kAuto, SatcodxLayout::kA,
                                        SatcodxLayout::kB, SatcodxLayout::k105};
  const SatcodxLayout layout = kLayouts[size == 0 ? 0 : data[size - 1] % std::size(kLayouts)];
  WorkRecords work;
  ReadSatcodx({data, size}, DefaultRecords{}, work, {}, {layout, length});
  Document document;
  if (!OpenBinBytes(context, BuildBinFromWorkFiles(work, DefaultRecords{}), document)) return 0;
  const StaticDatabase& database = *document.sdbs.at(0).database;
  if (!CheckLinks(database).empty() || database.services.size() != work.services.size()) std::abort();
  return 0;
}
