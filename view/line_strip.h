// What crossed the line, over time: a lane for each side, a block for each step of the story.
#pragma once

#include <cstddef>
#include <string>

#include "serial/trace_story.h"
#include "view/drawing.h"

namespace vexa {

inline constexpr size_t kShownStepBytes = 64;

// The steps between two times, in seconds; `width` is that of the whole drawing, in units. A silence takes
// both lanes. An item is the step's place in the story; its tip says when, who and what.
Drawing LineStrip(const TraceStory& story, double from, double to, double width);

// Where the time axis of the strip begins, in units; it ends kStripEnd before its width.
inline constexpr double kStripBegin = 80, kStripEnd = 10;

// "packet 3, 90 bytes (4 times)".
std::string TextOf(const TraceStep& step);
// Its first kShownStepBytes bytes, 16 a line, and how many more there are; nothing for less than two.
std::string BytesOf(const TraceStep& step);

}  // namespace vexa
