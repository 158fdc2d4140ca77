// Reads any bytes as a record of the line. What is read is explained, as text and as a page.
#include <cstdio>
#include <cstdlib>

#include "serial/trace_story.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace vexa;
  size_t line = 0;
  const auto entries = ReadTrace({reinterpret_cast<const char*>(data), size}, line);
  if (!entries) return 0;
  const TraceStory story = ExplainTrace(*entries);
  if (TraceStoryText(story).empty() || TraceStoryPage(story, "x").empty()) {
    std::fprintf(stderr, "broken: a story without text\n");
    std::abort();
  }
  return 0;
}
