#include "view/trace_page.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "serial/line_record.h"
#include "view/line_strip.h"

namespace vexa {
namespace {

using testing::HasSubstr;

TEST(TracePage, NamesEachStepAndDrawsWhatCrossedTheLine) {
  TraceStory story;
  story.steps.resize(3);
  story.steps[0].text = "begun <here>";
  story.steps[1] = {
      TraceStep::kPacket, true, 0.5, 0.75, 1, 1, "packet 1, 91 bytes", std::vector<uint8_t>(100, '<')};
  story.steps[2] = {TraceStep::kControl, false, 1, 1, 4, 0, "XON: is awake", {0x11}};
  story.summary.seconds = 1;
  const std::string page = TraceStoryPage(story, "a & b");
  EXPECT_THAT(page, HasSubstr("<h1>a &amp; b</h1>"));
  EXPECT_THAT(page, HasSubstr("<td>begun &lt;here&gt;</td>"));
  EXPECT_THAT(
      page,
      HasSubstr(
          "<tr id=\"s2\" class=\"control\"><td>1.000</td><td>receiver</td><td>XON: is awake (4 times)"));
  EXPECT_THAT(page, HasSubstr("and 36 bytes more"));
  // One second is drawn 900 wide, behind a margin of 80.
  EXPECT_THAT(
      page, HasSubstr("<a href=\"#s1\"><rect class=\"t1\" x=\"530\" y=\"26\" width=\"225\" height=\"22\">"));
  EXPECT_THAT(
      page, HasSubstr("<a href=\"#s2\"><rect class=\"t0\" x=\"980\" y=\"52\" width=\"1.5\" height=\"22\">"));
  EXPECT_EQ(page.find("href=\"#s0\""), std::string::npos);
}

// What lies outside the shown seconds is left out, what begins before them begins at their edge.
TEST(TracePage, AStripShowsItsSecondsAlone) {
  TraceStory story;
  story.steps = {{TraceStep::kPacket, true, 0, 1, 1, 1, "old", {}},
                 {TraceStep::kSilence, false, 1, 3, 1, 0, "nothing for 2.0 s", {}},
                 {TraceStep::kDamaged, false, 3.5, 4, 1, 0, "damaged", {}},
                 {TraceStep::kText, false, 3.6, 3.6, 1, 0, "said", {}},
                 {TraceStep::kPacket, true, 4.1, 5, 1, 2, "new", {}}};
  std::vector<Shape> blocks;
  for (const Shape& shape : LineStrip(story, 2, 4, 290).shapes)
    if (shape.item != kNoItem) blocks.push_back(shape);
  ASSERT_EQ(blocks.size(), 2u);
  EXPECT_EQ(blocks[0].item, 1u);
  EXPECT_EQ(blocks[0].x, kStripBegin);
  EXPECT_DOUBLE_EQ(blocks[0].width, 100);
  EXPECT_GT(blocks[0].height, 2 * blocks[1].height);
  EXPECT_EQ(blocks[1].item, 2u);
  EXPECT_DOUBLE_EQ(blocks[1].x, kStripBegin + 150);
  EXPECT_EQ(blocks[1].text, "3.500 s, receiver: damaged");
}

TEST(TracePage, TheRecordKeepsTheLastSecondsAndBytes) {
  LineRecord record(10, 100);
  const std::vector<uint8_t> bytes(30, 6);
  for (const double seconds : {0.0, 1.0, 5.0}) record.AddAt(seconds, seconds == 1, bytes);
  ASSERT_EQ(record.Entries().size(), 3u);
  EXPECT_EQ(record.Entries()[1].kind, TraceEntry::kFromPc);
  record.AddAt(6, true, std::span(bytes).first(11));
  EXPECT_EQ(record.Entries().size(), 3u);
  EXPECT_EQ(record.Entries().front().seconds, 1);
  record.AddAt(15.5, true, {});
  EXPECT_EQ(record.Entries().size(), 2u);
}

}  // namespace
}  // namespace vexa
