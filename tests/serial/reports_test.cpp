#include "serial/reports.h"

#include <gtest/gtest.h>

#include "serial/trace.h"
#include "tests/support/recorder.h"

namespace vexa {
namespace {

struct Appended {
  std::vector<std::string> texts;
  std::vector<ReportColour> colours;
  int focused = 0;
  ReportTarget target;
  Appended() {
    target.append = [this](const std::string& text, ReportColour colour) {
      texts.push_back(text);
      colours.push_back(colour);
    };
    target.focus = [this] { ++focused; };
  }
};

TEST(Reports, CodesOfTheTableAndNoOthersAppend) {
  Appended appended;
  for (int code = -40; code <= 40; ++code) ReportLoaderStatus(appended.target, code);
  ASSERT_EQ(appended.texts.size(), 12u);
  EXPECT_EQ(appended.focused, 81);
  EXPECT_EQ(
      appended.texts[1],
      "\n<========== Error ( -5 ) ==========>\n   Problem : No response from TARGET\n"
      "\t      \tUART File has irrelavant JOB ID\n   Solution    :   Check UART Cable\n"
      "\t\tRetransmitting UART File after Restarting the Tartget\n\t\tChoose Correct UART file for TARGET\n");
  EXPECT_EQ(appended.texts[6], "\r\n<========== Upload Success ==========>\r\n");
  for (size_t i = 0; i < 12; ++i) {
    EXPECT_EQ(appended.colours[i], i >= 6 && i <= 8 ? ReportColour::kSuccess : ReportColour::kError) << i;
    EXPECT_LE(appended.texts[i].size(), 1024u);
  }
}

TEST(Reports, EitherFlagSilences) {
  Appended appended;
  appended.target.download = true;
  ReportLoaderStatus(appended.target, 1);
  appended.target.download = false;
  appended.target.frame_upload = true;
  ReportLoaderStatus(appended.target, -1);
  EXPECT_TRUE(appended.texts.empty());
  EXPECT_EQ(LoaderReportOf(0).text, "");
  EXPECT_EQ(LoaderReportOf(5).colour, ReportColour::kNeutral);
}

TEST(TraceFile, ShowsBothDirectionsAndCountsRepetitions) {
  Recorder recorder;
  const Path path = recorder.context.temporary_folder / "trace";
  {
    Trace trace;
    ASSERT_TRUE(trace.Open(path));
    const uint8_t etb = 0x17, ack = 0x06;
    for (int i = 0; i < 3; ++i) trace.Bytes(true, std::span(&etb, 1));
    trace.Bytes(false, std::span(&ack, 1));
    trace.Bytes(true, std::span(&ack, 1));  // the other direction is no repetition
    trace.Bytes(true, BytesOf("\x02"
                              "ABCDEFGHIJKLMNOPQ"));
  }
  const auto content = ReadWholeFile(path);
  const std::string text(content->begin(), content->end());
  std::vector<std::string> lines;
  for (size_t at = 0; at < text.size(); at = text.find('\n', at) + 1)
    lines.push_back(text.substr(at + 9, text.find('\n', at) - at - 9));
  ASSERT_EQ(lines.size(), 6u);
  EXPECT_EQ(lines[0].substr(0, 8), " PC>  17");
  EXPECT_NE(lines[0].find("ETB"), std::string::npos);
  EXPECT_EQ(lines[1], "      (the same again, 2 times)");
  EXPECT_EQ(lines[2].substr(0, 8), " STB> 06");
  EXPECT_EQ(lines[3].substr(0, 8), " PC>  06");
  EXPECT_EQ(lines[4], " PC>  02 41 42 43 44 45 46 47 48 49 4A 4B 4C 4D 4E 4F  .ABCDEFGHIJKLMNO");
  EXPECT_EQ(lines[5].substr(0, 11), " PC>  50 51");
}

}  // namespace
}  // namespace vexa
