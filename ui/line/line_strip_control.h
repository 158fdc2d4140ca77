// The strip of a dialog that shows what crosses the line: an owner-drawn control over the last seconds.
#pragma once

#include "serial/line_record.h"
#include "ui/controls/windows_api.h"
#include "view/line_strip.h"

namespace vexa {

inline constexpr double kStripSeconds = 8;
inline constexpr size_t kStripRecordBytes = 256 * 1024;

struct StripControl {
  LineRecord record{kStripSeconds, kStripRecordBytes};  // filled by the line's threads
  TraceStory story;
  Drawing drawing;
};

// Shows the seconds up to this moment.
void RefreshStrip(HWND control, StripControl& strip);
void DrawStrip(const DRAWITEMSTRUCT& item, const StripControl& strip);
// The step under the pointer in words, and its bytes in a second line; empty when it is over none.
std::string StepUnderPointer(HWND control, const StripControl& strip);

}  // namespace vexa
