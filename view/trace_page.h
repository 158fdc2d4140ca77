// The story of a trace as an HTML page of its own, without scripts.
#pragma once

#include <string>

#include "serial/trace_story.h"

namespace vexa {

// The line drawn over time, and every step with its first bytes; a click on what is drawn leads to its step.
// `title` in UTF-8.
std::string TraceStoryPage(const TraceStory& story, const std::string& title);

}  // namespace vexa
