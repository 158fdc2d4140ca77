// Opens any bytes as a BIN file. What opens keeps its links, and what a save makes of it opens again with the
// same content.

#include "core/bin_file.h"
#include "tests/fuzz/require.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace vexa;
  // A small stream can ask for 128 MiB of zeros, which tells nothing here.
  if (size > 12 && data[4] == 0x10 && data[11] != 0 && size > 15 && data[14] != 0) return 0;
  int told = 0;
  Context context;
  context.messages.tell = [&](const Message&) { ++told; };
  Document document;
  const bool opened = OpenBinBytes(context, {data, size}, document);
  Require(opened || told > 0, "a refusal without a message");
  for (const OpenSdb& sdb : document.sdbs) {
    const std::string links = CheckLinks(*sdb.database);
    Require(links.empty(), links.c_str());
    Require(CheckLinks(*CopyDatabase(*sdb.database)).empty(), "links of a copy");
  }
  if (!opened || document.sdbs.empty()) return 0;
  const auto first = BuildBin(context, document, {}, {});
  Require(first.has_value(), "building");
  Document again;
  told = 0;
  Require(OpenBinBytes(context, *first, again) && told == 0, "opening what was built");
  Require(again.sdbs.size() == document.sdbs.size() && again.ubis.size() == document.ubis.size(), "counts");
  const auto second = BuildBin(context, again, {}, {});
  Require(second.has_value() && *second == *first, "building once more gives other bytes");
  return 0;
}
