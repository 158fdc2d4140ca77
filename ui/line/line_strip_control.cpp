#include "ui/line/line_strip_control.h"

#include <algorithm>

#include "serial/trace.h"
#include "ui/controls/paint_drawing.h"

namespace vexa {

namespace {

constexpr int kReach = 4;  // units

Fit FitOf(HWND control) {
  return {DotsPerUnit(control), DotsPerUnit(control)};
}

}  // namespace

void RefreshStrip(HWND control, StripControl& strip) {
  RECT area{};
  GetClientRect(control, &area);
  const double now = std::max(strip.record.Seconds(), kStripSeconds);
  strip.story = ExplainTrace(strip.record.Entries());
  strip.drawing =
      LineStrip(strip.story, now - kStripSeconds, now, static_cast<double>(area.right) / FitOf(control).x);
  InvalidateRect(control, nullptr, FALSE);
}

void DrawStrip(const DRAWITEMSTRUCT& item, const StripControl& strip) {
  const OffscreenPicture picture(item.hDC, item.rcItem);
  PaintDrawing(picture.device(), item.rcItem, strip.drawing, FitOf(item.hwndItem), kNoItem);
  picture.Show();
}

std::string StepUnderPointer(HWND control, const StripControl& strip) {
  POINT at{};
  GetCursorPos(&at);
  ScreenToClient(control, &at);
  const Fit fit = FitOf(control);
  const Shape* shape = ShapeAt(strip.drawing, at.x / fit.x, at.y / fit.y, kReach);
  if (!shape || shape->item >= strip.story.steps.size()) return "";
  const auto& bytes = strip.story.steps[shape->item].bytes;
  return shape->text + "\n" + TraceBytes(std::span(bytes).first(std::min<size_t>(bytes.size(), 16)));
}

}  // namespace vexa
