#include "view/trace_page.h"

#include <algorithm>

#include "core/messages.h"
#include "view/line_strip.h"
#include "view/svg.h"

namespace vexa {

namespace {

constexpr double kDotsPerSecond = 150, kSmallest = 900, kLargest = 30000;  // the drawing's width

constexpr const char* kPageHead = R"(<!DOCTYPE html>
<html lang="en"><head><meta charset="utf-8"><meta name="viewport" content="width=device-width">
<style>
:root{color-scheme:light dark}
body{font:14px sans-serif;margin:1.5em}
.line{overflow-x:auto;border:1px solid #8888}
text{font:11px sans-serif;fill:currentColor}
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

// Each line by itself: line ends within a text become blanks.
std::string PreformattedOf(std::string_view lines) {
  std::string page;
  for (size_t end = lines.find('\n'); end != std::string_view::npos; end = lines.find('\n')) {
    AppendMarkup(page, lines.substr(0, end));
    page += '\n';
    lines.remove_prefix(end + 1);
  }
  return page;
}

std::string LineDrawing(const TraceStory& story) {
  const double seconds = std::max(story.summary.seconds, 0.001);
  const double width = std::clamp(seconds * kDotsPerSecond, kSmallest, kLargest);
  std::string page = "<div class=\"line\">";
  AppendSvg(page, LineStrip(story, 0, seconds, width + kStripBegin + kStripEnd), "#s");
  return page + "</div>\n";
}

std::string BytesCell(const TraceStep& step) {
  const std::string bytes = BytesOf(step);
  return bytes.empty()
             ? ""
             : "<details><summary>bytes</summary><pre>" + PreformattedOf(bytes) + "</pre></details>";
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
  for (size_t i = 0; i < kStepColours.size(); ++i)
    page += Format("<style>.t%zu{fill:#%06x}</style>\n", i, kStepColours[i]);
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
    page += Escaped(TextOf(step)) + BytesCell(step) + "</td></tr>\n";
  }
  return page + "</table>\n</body></html>\n";
}

}  // namespace vexa
