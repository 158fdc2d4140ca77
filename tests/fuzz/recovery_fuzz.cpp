// Reads any bytes as a file of kept work. What is read is written and read again with the same content.
#include "tests/fuzz/require.h"
#include "view/recovery.h"

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
              again->work.version.initials == read->work.version.initials,
          "reading what was written");
  return 0;
}
