#include "serial/trace_story.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "core/messages.h"
#include "image/line_frame.h"
#include "serial/trace.h"
#include "tests/support/recorder.h"

namespace vexa {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

std::string Line(double seconds, bool from_pc, const std::vector<uint8_t>& bytes) {
  std::string lines;
  for (size_t i = 0; i < bytes.size(); i += 16)
    lines += Format("%9.3f %s %s\n", seconds, from_pc ? "PC> " : "STB>",
                    TraceBytes(std::span(bytes).subspan(i, std::min<size_t>(16, bytes.size() - i))).c_str());
  return lines;
}

TraceStory StoryOf(const std::string& file) {
  size_t line = 0;
  const auto entries = ReadTrace(file, line);
  EXPECT_TRUE(entries) << "line " << line;
  return entries ? ExplainTrace(*entries) : TraceStory();
}

std::vector<std::string> Told(const TraceStory& story) {
  std::vector<std::string> told;
  for (const TraceStep& step : story.steps)
    told.push_back((step.from_pc ? "PC " : "") + step.text +
                   (step.times > 1 ? Format(" x%d", static_cast<int>(step.times)) : ""));
  return told;
}

std::vector<uint8_t> Packet(uint8_t first, size_t size) {
  std::vector<uint8_t> payload(size, kStx);  // what looks like a beginning is none inside
  payload[0] = first;
  return FrameOf(payload);
}

TEST(TraceStory, TellsWhatHappened) {
  std::vector<uint8_t> damaged = Packet(3, 40), split = Packet(9, 20);
  damaged[10] ^= 1;
  const std::vector<uint8_t> head(split.begin(), split.begin() + 9), tail(split.begin() + 9, split.end());
  const TraceStory story = StoryOf(
      Line(0.1, true, {0x02, 'D', 'F', 'U', ' ', '\n'}) + Line(0.1, false, {kXon}) + Line(0.2, true, {kSyn}) +
      "    0.200      (the same again, 2 times)\n" + "    0.300      -- a text\n" + Line(0.4, false, {kEnq}) +
      Line(0.4, true, Packet(1, 40)) + Line(0.5, false, {kNak}) + Line(0.5, true, Packet(1, 40)) +
      Line(3.0, true, damaged) + Line(3.1, false, head) + Line(3.2, true, {kEnq}) + Line(3.3, false, tail) +
      Line(3.4, false, {'x', 'y'}) + Line(3.5, false, {kStx, 0, 0}));
  EXPECT_THAT(Told(story),
              ElementsAre("PC wakes the receiver for an upload", "XON: is awake",
                          "PC SYN: goes on waking the receiver x3", "a text", "ENQ: asks for the next packet",
                          "PC packet 1, 40 bytes", "NAK: asks for the last packet again", "PC packet 1 again",
                          "nothing for 2.5 s", "PC a damaged packet of 40 bytes: its sum is wrong",
                          "PC ENQ: asks for the next packet", "packet 1, 20 bytes",
                          "2 bytes that are no packet", "3 bytes of a packet that never ended"));
  const TraceSummary& summary = story.summary;
  EXPECT_EQ(summary.pc.bytes, 6u + 3 + 3 * 49 + 1);
  EXPECT_EQ(summary.pc.packets, 1u);
  EXPECT_EQ(summary.pc.repeated, 1u);
  EXPECT_EQ(summary.pc.damaged, 1u);
  EXPECT_EQ(summary.receiver.bytes, 3u + 29 + 2 + 3);
  EXPECT_EQ(summary.receiver.packets, 1u);
  EXPECT_EQ(summary.silences, 1u);
  EXPECT_DOUBLE_EQ(summary.longest_silence, 2.5);
  EXPECT_DOUBLE_EQ(summary.longest_at, 0.5);
  EXPECT_DOUBLE_EQ(story.steps[11].seconds, 3.1);
  EXPECT_DOUBLE_EQ(story.steps[11].last, 3.3);
}

TEST(TraceStory, PacketsThatCameRightAreOneLine) {
  std::string file;
  for (uint8_t i = 1; i <= 5; ++i) file += Line(i * 0.1, false, {kEnq}) + Line(i * 0.1, true, Packet(i, 100));
  file += "    0.550      (the same again, 1 times)\n" + Line(0.6, false, {kNak});
  const TraceStory story = StoryOf(file);
  EXPECT_EQ(story.summary.pc.repeated, 1u);
  EXPECT_THAT(TraceStoryText(story),
              HasSubstr("    0.100  PC        packets 1 to 4, each asked for once: 400 bytes in 0.300 s\n"
                        "    0.500  receiver  ENQ: asks for the next packet\n"
                        "    0.500  PC        packet 5, 100 bytes (2 times)\n"
                        "    0.600  receiver  NAK: asks for the last packet again\n"));
}

TEST(TraceStory, ReadsWhatTheRecordWrote) {
  Recorder recorder;
  const Path path = recorder.context.temporary_folder / "trace.txt";
  Trace trace;
  ASSERT_TRUE(trace.Open(path));
  trace.Line("begun <here>");
  trace.Bytes(true, Packet(1, 1000));
  for (int i = 0; i < 4; ++i) trace.Bytes(false, BytesOf("\x11"));
  ASSERT_TRUE(trace.Close());
  const auto file = ReadWholeFile(path);
  ASSERT_TRUE(file);
  const TraceStory story = StoryOf({file->begin(), file->end()});
  EXPECT_THAT(Told(story), ElementsAre("begun <here>", "PC packet 1, 1000 bytes", "XON: is awake x4"));
}

TEST(TraceStory, OtherFilesAreRefusedWithTheLine) {
  const std::string good = Line(0.1, true, {kEnq});
  struct {
    std::string file;
    size_t line;
  } const rows[] = {{good + "\n", 2},
                    {"some text\n", 1},
                    {good + "    0.2 PC>  \n", 2},
                    {good + "    0.200 PC>  0G\n", 2},
                    {"    0.200      (the same again, 3 times)\n", 1},
                    {good + "    0.200      (the same again, x times)\n", 2},
                    {"   -0.200 PC>  05 \n", 1},
                    {"      inf PC>  05 \n", 1}};
  for (const auto& row : rows) {
    size_t line = 0;
    EXPECT_FALSE(ReadTrace(row.file, line)) << row.file;
    EXPECT_EQ(line, row.line) << row.file;
  }
}

}  // namespace
}  // namespace vexa
