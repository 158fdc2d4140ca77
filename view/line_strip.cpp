#include "view/line_strip.h"

#include <algorithm>
#include <cmath>
#include <span>

#include "core/messages.h"
#include "serial/trace.h"

namespace vexa {

namespace {

constexpr double kLane = 26, kTop = 24, kLeastStep = 1.5, kLeastMark = 80;  // units

// Seconds between two marks: a power of ten, at least a millisecond, that lie kLeastMark apart.
double MarkStep(double scale) {
  double mark = 0.001;
  while (mark * scale < kLeastMark) mark *= 10;
  return mark;
}

}  // namespace

std::string TextOf(const TraceStep& step) {
  std::string text = step.text;
  if (step.times > 1) text += Format(" (%llu times)", static_cast<unsigned long long>(step.times));
  return text;
}

std::string BytesOf(const TraceStep& step) {
  std::string lines;
  if (step.bytes.size() < 2) return lines;
  const auto shown = std::span(step.bytes).first(std::min(kShownStepBytes, step.bytes.size()));
  for (size_t i = 0; i < shown.size(); i += 16)
    lines += TraceBytes(shown.subspan(i, std::min<size_t>(16, shown.size() - i))) + "\n";
  if (shown.size() < step.bytes.size())
    lines += Format("and %zu bytes more\n", step.bytes.size() - shown.size());
  return lines;
}

Drawing LineStrip(const TraceStory& story, double from, double to, double width) {
  Drawing drawing{
      .width = width, .height = kTop + 2 * kLane + 10, .title = "The line over time", .shapes = {}};
  drawing.shapes.push_back(TextShape(4, kTop + 16, TextPlace::kStart, "PC"));
  drawing.shapes.push_back(TextShape(4, kTop + kLane + 16, TextPlace::kStart, "receiver"));
  const double scale = (width - kStripBegin - kStripEnd) / std::max(to - from, 0.001);
  const auto at = [&](double seconds) {
    return kStripBegin + (std::clamp(seconds, from, to) - from) * scale;
  };
  const double mark = MarkStep(scale);
  const auto first = static_cast<int64_t>(std::ceil(from / mark)), last = static_cast<int64_t>(to / mark);
  for (int64_t i = first; i <= last; ++i) {
    const double seconds = static_cast<double>(i) * mark;
    drawing.shapes.push_back(TextShape(at(seconds), 14, TextPlace::kStart, Format("%g s", seconds)));
  }
  for (size_t i = 0; i < story.steps.size(); ++i) {
    const TraceStep& step = story.steps[i];
    if (step.kind == TraceStep::kText || step.last < from || step.seconds > to) continue;
    const bool silence = step.kind == TraceStep::kSilence;
    const double left = at(step.seconds);
    drawing.shapes.push_back({.paint = Paint::kStep,
                              .index = static_cast<uint8_t>(step.kind),
                              .x = left,
                              .y = kTop + (silence || step.from_pc ? 0 : kLane) + 2,
                              .width = std::max(at(step.last) - left, kLeastStep),
                              .height = (silence ? 2 * kLane : kLane) - 4,
                              .text = Format("%.3f s%s: ", step.seconds,
                                             silence        ? ""
                                             : step.from_pc ? ", PC"
                                                            : ", receiver") +
                                      TextOf(step),
                              .item = i});
  }
  return drawing;
}

}  // namespace vexa
