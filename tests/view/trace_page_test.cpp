#include "view/trace_page.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

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
      page,
      HasSubstr(
          "<a href=\"#s1\"><rect class=\"packet\" x=\"530.00\" y=\"26\" width=\"225.00\" height=\"22\">"));
  EXPECT_THAT(
      page,
      HasSubstr(
          "<a href=\"#s2\"><rect class=\"control\" x=\"980.00\" y=\"52\" width=\"1.50\" height=\"22\">"));
  EXPECT_EQ(page.find("href=\"#s0\""), std::string::npos);
}

}  // namespace
}  // namespace vexa
