// Reads any bytes as a file of kept work. What is read is written and read again with the same content.
#include "tests/fuzz/require.h"
#include "view/recovery.h"

namespace {

bool SameTables(const vexa::Document& left, const vexa::Document& right) {
  if (left.settings_block != right.settings_block || left.sdbs.size() != right.sdbs.size()) return false;
  for (size_t i = 0; i < left.sdbs.size(); ++i) {
    const vexa::StaticDatabase &a = *left.sdbs[i].database, &b = *right.sdbs[i].database;
    if (a.lnb_count != b.lnb_count || a.satellites.size() != b.satellites.size()) return false;
    if (!vexa::CheckLinks(a).empty()) return false;
  }
  return true;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace vexa;
  // Databases of this size are opened by another target, which knows those that unpack to very much.
  if (size > 4096) return 0;
  const auto read = ReadRecovery({data, size});
  if (!read) return 0;
  const auto written = WriteRecovery(read->work, read->document);
  Require(written.has_value(), "writing");
  const auto again = ReadRecovery(*written);
  Require(again && again->work.path == read->work.path && again->work.name == read->work.name &&
              again->work.state == read->work.state &&
              again->work.version.initials == read->work.version.initials &&
              again->work.list == read->work.list && again->document.names == read->document.names &&
              SameTables(again->document, read->document),
          "reading what was written");
  return 0;
}
