// Reads any bytes as a record of the line. What is read is explained, as text and as a page.
#include "platform/text.h"
#include "tests/fuzz/require.h"
#include "view/trace_page.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace vexa;
  size_t line = 0;
  const auto entries = ReadTrace({reinterpret_cast<const char*>(data), size}, line);
  if (!entries) return 0;
  const TraceStory story = ExplainTrace(*entries);
  Require(!TraceStoryText(story).empty() && IsUtf8(TraceStoryPage(story, "x")), "a page that is no UTF-8");
  return 0;
}
