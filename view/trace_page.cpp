#include "view/trace_page.h"

#include <algorithm>
#include <span>

#include "core/messages.h"
#include "serial/trace.h"
#include "view/svg.h"

namespace vexa {

namespace {

constexpr double kDotsPerSecond = 150, kSmallest = 900, kLargest = 30000;  // the drawing's width
constexpr int kLane = 26, kTop = 24, kMargin = 80;
constexpr size_t kShownBytes = 64;  // of a step

constexpr const char* kPageHead = R"(<!DOCTYPE html>
<html lang="en"><head><meta charset="utf-8"><meta name="viewport" content="width=device-width">
<style>
:root{color-scheme:light dark}
body{font:14px sans-serif;margin:1.5em}
.line{overflow-x:auto;border:1px solid #8888}
text{font:11px sans-serif;fill:currentColor}
.control{fill:#3778c2}.packet{fill:#3a9a53}.repeated{fill:#d59a1e}.damaged{fill:#cc3333}.unknown{fill:#888}
.silence{fill:#8883}
table{border-collapse:collapse;margin-top:1em}
td,th{padding:.15em .6em;text-align:left;vertical-align:top;border-bottom:1px solid #8884}
td:first-child{text-align:right;font-variant-numeric:tabular-nums}
tr:target{outline:2px solid #3778c2}
tr.repeated td:nth-child(3){color:#a87400}tr.damaged td:nth-child(3){color:#cc3333}
pre{margin:.3em 0}
@media print{.line{overflow:visible}svg{max-width:100%}}
</style>
)";

std::string Escaped(std::string_view text) {
  std::string escaped;
  AppendMarkup(escaped, text);
  return escaped;
}

const char* ClassOfStep(const TraceStep& step) {
  static constexpr const char* kClasses[] = {"control", "packet",  "repeated", "damaged",
                                             "unknown", "silence", "text"};
  return kClasses[step.kind];
}

std::string TextOf(const TraceStep& step) {
  std::string text = step.text;
  if (step.times > 1) text += Format(" (%llu times)", static_cast<unsigned long long>(step.times));
  return text;
}

std::string LineDrawing(const TraceStory& story) {
  const double seconds = std::max(story.summary.seconds, 0.001);
  const double width = std::clamp(seconds * kDotsPerSecond, kSmallest, kLargest);
  const int height = kTop + 2 * kLane + 10;
  std::string svg = Format(
      "<div class=\"line\"><svg width=\"%.0f\" height=\"%d\" role=\"img\" aria-label=\"The line over "
      "time\">\n"
      "<text x=\"4\" y=\"%d\">PC</text><text x=\"4\" y=\"%d\">receiver</text>\n",
      width + kMargin + 10, height, kTop + 16, kTop + kLane + 16);
  const double scale = width / seconds;
  double mark = 0.001;
  while (mark * scale < 80) mark *= 10;
  for (double at = 0; at <= seconds; at += mark)
    svg += Format("<text x=\"%.1f\" y=\"14\">%g s</text>\n", kMargin + at * scale, at);
  for (size_t i = 0; i < story.steps.size(); ++i) {
    const TraceStep& step = story.steps[i];
    if (step.kind == TraceStep::kText) continue;
    const bool silence = step.kind == TraceStep::kSilence;
    const int top = kTop + (silence || step.from_pc ? 0 : kLane);
    svg += Format("<a href=\"#s%zu\"><rect class=\"%s\" x=\"%.2f\" y=\"%d\" width=\"%.2f\" height=\"%d\">", i,
                  ClassOfStep(step), kMargin + step.seconds * scale, top + 2,
                  std::max((step.last - step.seconds) * scale, 1.5), (silence ? 2 * kLane : kLane) - 4);
    svg += "<title>" + Format("%.3f s: ", step.seconds) + Escaped(TextOf(step)) + "</title></rect></a>\n";
  }
  return svg + "</svg></div>\n";
}

std::string BytesOf(const TraceStep& step) {
  if (step.bytes.size() < 2) return "";
  std::string lines;
  const auto shown = std::span(step.bytes).first(std::min(kShownBytes, step.bytes.size()));
  for (size_t i = 0; i < shown.size(); i += 16)
    lines += Escaped(TraceBytes(shown.subspan(i, std::min<size_t>(16, shown.size() - i)))) + "\n";
  if (shown.size() < step.bytes.size())
    lines += Format("and %zu bytes more\n", step.bytes.size() - shown.size());
  return "<details><summary>bytes</summary><pre>" + lines + "</pre></details>";
}

std::string SideRow(const char* name, const TraceSummary::Side& side) {
  return Format("<tr><td>%s</td><td>%llu</td><td>%llu</td><td>%llu</td><td>%llu</td></tr>\n", name,
                static_cast<unsigned long long>(side.bytes), static_cast<unsigned long long>(side.packets),
                static_cast<unsigned long long>(side.repeated),
                static_cast<unsigned long long>(side.damaged));
}

}  // namespace

std::string TraceStoryPage(const TraceStory& story, const std::string& title) {
  const TraceSummary& summary = story.summary;
  std::string page = kPageHead;
  page += "<title>" + Escaped(title) + "</title></head>\n<body>\n<h1>" + Escaped(title) + "</h1>\n";
  page += Format("<p>%.3f s; silences of %.0f s and more: %llu", summary.seconds, kTraceSilence,
                 static_cast<unsigned long long>(summary.silences));
  if (summary.silences > 0)
    page += Format(", the longest %.1f s, at %.3f s", summary.longest_silence, summary.longest_at);
  page += "</p>\n<table><tr><th></th><th>bytes</th><th>packets</th><th>repeated</th><th>damaged</th></tr>\n" +
          SideRow("PC to receiver", summary.pc) + SideRow("receiver to PC", summary.receiver) + "</table>\n";
  page +=
      "<p>Blue: a control byte; green: a packet; amber: a packet again; red: a damaged packet; grey: no "
      "packet, or silence. Click one to see its row.</p>\n";
  page += LineDrawing(story) + "<table><tr><th>s</th><th>from</th><th>what</th></tr>\n";
  for (size_t i = 0; i < story.steps.size(); ++i) {
    const TraceStep& step = story.steps[i];
    const bool nobody = step.kind == TraceStep::kSilence || step.kind == TraceStep::kText;
    page += Format("<tr id=\"s%zu\" class=\"%s\"><td>%.3f</td><td>%s</td><td>", i, ClassOfStep(step),
                   step.seconds,
                   nobody         ? ""
                   : step.from_pc ? "PC"
                                  : "receiver");
    page += Escaped(TextOf(step)) + BytesOf(step) + "</td></tr>\n";
  }
  return page + "</table>\n</body></html>\n";
}

}  // namespace vexa
