// The console's model: its texts, and the whole of it over a port made of memory.
#include "serial/console.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <future>

#include "image/line_frame.h"
#include "image/transfer_files.h"
#include "serial/prepare.h"
#include "tests/image/image_maker.h"
#include "tests/serial/fake_comm.h"
#include "tests/serial/receiver_rig.h"
#include "tests/support/random_database.h"
#include "tests/support/recorder.h"

namespace vexa {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr const char* kTerminated =
    "\n<========== Terminated by user ==========>\n   Please Switch Off the Board and then Transmit\n";

std::string TextOf(const Bytes& bytes) {
  return {bytes.begin(), bytes.end()};
}

TEST(ConsoleText, OnlyTheDisturbingBytesBecomeBlanks) {
  Bytes bytes(256);
  for (size_t i = 0; i < 256; ++i) bytes[i] = static_cast<uint8_t>(i);
  BlankControlBytes(bytes);
  std::vector<size_t> blanked;
  for (size_t i = 0; i < 256; ++i) {
    if (bytes[i] != i) blanked.push_back(i);
  }
  EXPECT_THAT(blanked, ElementsAre(0x00, 0x04, 0x05, 0x06, 0x07, 0x11, 0x13, 0x15, 0x17, 0x91, 0x99));
  EXPECT_EQ(bytes[6], ' ');
}

TEST(ConsoleText, HexadecimalRowsBeginWithTheirFrames) {
  const Bytes stream = {0x06, 0x05,                                              // outside
                        0x02, 0,    0,   2,   0x02, 'A', 0,   0, 0, 0x43, 0x03,  // STX within a frame is data
                        0x05, 0x02, 'D', 'F', 'U',  ' ', 0x0A};                  // no length that a frame has
  const std::string expected = "06 05 " + std::string(14 * 3 + 1, ' ') + "..\r\n" +
                               "02 00 00 02 02 41 00 00 00 43 03 " + std::string(5 * 3 + 1, ' ') +
                               ".....A...C.\r\n" + "05 " + std::string(15 * 3 + 1, ' ') + ".\r\n" +
                               "02 44 46 55 20 0A ";
  for (size_t piece = 1; piece <= stream.size(); ++piece) {
    HexadecimalRows rows;
    std::string text;
    for (size_t at = 0; at < stream.size(); at += piece) {
      text += HexadecimalText(rows, std::span(stream).subspan(at, std::min(piece, stream.size() - at)));
    }
    EXPECT_EQ(text, expected) << "pieces of " << piece;
  }
  HexadecimalRows rows;
  EXPECT_EQ(EndHexadecimalRow(rows), "");
  const Bytes seventeen(17, 'x');
  EXPECT_EQ(HexadecimalText(rows, seventeen).substr(48), " xxxxxxxxxxxxxxxx\r\n78 ");
}

TEST(ConsoleText, StampsStandInFrontOfLinesOnly) {
  LineStamps stamps;
  std::string text;
  for (const char* piece : {"a", "b\r", "\n", "\nc\n"}) text += StampedText(stamps, piece, "# ");
  EXPECT_EQ(text, "# ab\r\n\n# c\n");
  EXPECT_THAT(ClockStamp(), testing::MatchesRegex("\\[..:..:..\\....\\] "));
}

TEST(ConsoleText, ViewHasWholeLineEndsAndNoEndlessLine) {
  const std::pair<std::vector<std::string>, std::string> cases[] = {
      {{"a\nb\rc\r\nd"}, "a\r\nb\r\nc\r\nd"},
      {{"a\r", "\nb"}, "a\r\nb"},
      {{"\r\r\n\n"}, "\r\n\r\n\r\n"},
      {{std::string(kViewColumns, 'x'), "y"}, std::string(kViewColumns, 'x') + "\r\ny"},
      {{std::string(kViewColumns, 'x'), "\ny"}, std::string(kViewColumns, 'x') + "\r\ny"}};
  for (const auto& [pieces, expected] : cases) {
    ViewLines lines;
    std::string text;
    for (const std::string& piece : pieces) text += ViewText(lines, piece);
    EXPECT_EQ(text, expected);
  }
}

TEST(ConsoleText, QueueKeepsTheEndOfAFlood) {
  ViewQueue queue;
  Enqueue(queue, "one", ReportColour::kNeutral);
  Enqueue(queue, "two", ReportColour::kNeutral);
  Enqueue(queue, "red", ReportColour::kError);
  ASSERT_EQ(queue.pieces.size(), 2u);
  EXPECT_EQ(queue.pieces[0].text, "onetwo");
  EXPECT_FALSE(queue.text_dropped);
  for (int i = 0; i < 3000; ++i) Enqueue(queue, std::string(100, 'x'), ReportColour::kNeutral);
  Enqueue(queue, "last", ReportColour::kSuccess);
  EXPECT_TRUE(queue.text_dropped);
  EXPECT_LE(queue.bytes, kViewBytes);
  EXPECT_GT(queue.bytes, kViewBytes - 8192);
  EXPECT_EQ(queue.pieces.back().text, "last");
  Enqueue(queue, std::string(kViewBytes * 3, 'y'), ReportColour::kNeutral);
  EXPECT_LE(queue.bytes, kViewBytes);
  EXPECT_EQ(ViewExcess(2 * kViewBytes), 0u);
  EXPECT_EQ(ViewExcess(2 * kViewBytes + 1), kViewBytes + 1);
}

TEST(ConsoleText, ViewKeepsItsPlaceWhileItsUserLooksBack) {
  struct Row {
    const char* name;
    size_t waiting;
    bool cleared;
    ViewUse use;
    size_t shown;
    bool taken, start_anew;
  };
  const Row rows[] = {{"follows", 100, false, ViewUse::kFollows, 0, true, false},
                      {"follows a flood", kViewBytes * 2, false, ViewUse::kFollows, 0, true, true},
                      {"looks", 100, false, ViewUse::kLooks, 0, true, false},
                      {"looks at a full view", 100, false, ViewUse::kLooks, kKeptBytes + 1, false, false},
                      {"looks during a flood", kViewBytes * 2, false, ViewUse::kLooks, 0, false, false},
                      {"selects", 100, false, ViewUse::kSelects, 0, false, false},
                      {"selects in what was cleared", 100, true, ViewUse::kSelects, 0, true, true}};
  for (const Row& row : rows) {
    ViewQueue queue;
    queue.cleared = row.cleared;
    Enqueue(queue, std::string(row.waiting, 'x'), ReportColour::kNeutral);
    const size_t before = queue.bytes;
    const ViewQueue taken = TakePieces(queue, row.use, row.shown);
    EXPECT_EQ(!taken.pieces.empty(), row.taken) << row.name;
    EXPECT_EQ(taken.start_anew, row.start_anew) << row.name;
    EXPECT_EQ(taken.bytes + queue.bytes, before) << row.name;
    EXPECT_LE(taken.bytes, kUpdateBytes + 4096) << row.name;
  }
  ViewQueue queue;  // line ends stay whole
  std::string lines;
  while (lines.size() < 9000) lines += "\r\n";
  Enqueue(queue, "x" + lines, ReportColour::kNeutral);
  for (const ConsolePiece& piece : queue.pieces) EXPECT_EQ(piece.text.back(), '\n');
}

TEST(ConsoleText, AViewFollowsWhileItsEndIsInSight) {
  struct Row {
    const char* name;
    ViewLook look;
    ViewUse use;
  };
  const Row rows[] = {
      {"empty", {}, ViewUse::kFollows},
      {"selecting", {true, 0, 100, true, 0, 10, 100}, ViewUse::kSelects},
      {"selected", {false, 3, 100, true, 90, 10, 100}, ViewUse::kLooks},
      {"at the end", {false, 0, 100, true, 90, 10, 100}, ViewUse::kFollows},
      {"nearly at the end", {false, 0, 100, true, 88, 10, 100}, ViewUse::kFollows},
      {"above the end", {false, 0, 100, true, 87, 10, 100}, ViewUse::kLooks},
      {"a bar without figures", {false, 0, 100, true, 0, 0, 100}, ViewUse::kFollows},
      {"cleared, with the old bar's figures", {false, 0, 0, true, 0, 10, 9000}, ViewUse::kFollows},
      {"a hidden bar", {false, 0, 100, false, 0, 10, 9000}, ViewUse::kFollows}};
  for (const Row& row : rows) EXPECT_EQ(UseOfView(row.look), row.use) << row.name;
}

TEST(ConsoleText, HistoryGoesUpAndDownAndKeepsTheDraft) {
  CommandHistory history;
  EXPECT_EQ(Older(history, "x"), std::nullopt);
  for (const char* line : {"one", "two", "two", "", "three"}) Remember(history, line);
  EXPECT_EQ(Newer(history), std::nullopt);
  for (const char* line : {"three", "two", "one"}) EXPECT_EQ(Older(history, "draft"), line);
  EXPECT_EQ(Older(history, "one"), std::nullopt);
  for (const char* line : {"two", "three", "draft"}) EXPECT_EQ(Newer(history), line);
  EXPECT_EQ(Newer(history), std::nullopt);
  for (int i = 0; i < 500; ++i) Remember(history, std::to_string(i));
  EXPECT_EQ(history.lines.size(), kHistoryLimit);
  EXPECT_EQ(Older(history, ""), "499");
}

TEST(ConsoleText, LinesBecomeTheBytesThatAreSent) {
  const std::string longest(kCommandLimit + 10, 'a');
  struct Row {
    std::string line;
    ConsoleOptions options;
    std::optional<std::string> sent;
  };
  ConsoleOptions lf, both, none, digits;
  lf.line_ending = LineEnding{1};  // the numbers that the settings keep
  both.line_ending = LineEnding{2};
  none.line_ending = LineEnding{3};
  digits.hexadecimal_input = true;
  const Row rows[] = {{"ver", {}, "ver\r"},
                      {"", {}, "\r"},
                      {longest, {}, std::string(kCommandLimit, 'a') + "\r"},
                      {"ver", lf, "ver\n"},
                      {"ver", both, "ver\r\n"},
                      {"ver", none, "ver"},
                      {"\xC3\xA9", {}, "\xE9\r"},
                      {"02 44 4655\t20 0a", digits, std::string("\x02\x44\x46\x55\x20\x0A")},
                      {"02 4", digits, std::nullopt},
                      {"0 2", digits, std::nullopt},
                      {"0g", digits, std::nullopt},
                      {"", digits, ""}};
  for (const Row& row : rows) {
    const auto bytes = CommandBytes(row.line, row.options);
    ASSERT_EQ(bytes.has_value(), row.sent.has_value()) << row.line;
    if (bytes) {
      EXPECT_EQ(TextOf(*bytes), *row.sent) << row.line;
    }
  }
}

TEST(ConsoleText, PastedLinesAreTakenApart) {
  const PastedText pasted = SplitPasted("one\r\ntwo\n\rrest");
  EXPECT_THAT(pasted.lines, ElementsAre("one", "two", ""));
  EXPECT_EQ(pasted.rest, "rest");
  EXPECT_THAT(SplitPasted("plain").lines, IsEmpty());
}

// --- the whole console ---

class ConsoleRig : public testing::Test {
 protected:
  ConsoleRig() { Use(comm_); }
  void Use(FakeComm& comm) { console_.port.api = &comm.api; }
  void Open() { ASSERT_TRUE(OpenConsole(console_, recorder_.context)); }
  void Connect() {
    Open();
    ConnectAgain();
  }
  // What is fed before the reader is at work is purged.
  void ConnectAgain() {
    const int reads = comm_.Count("read");
    ASSERT_TRUE(ConnectConsole(console_, config_));
    if (console_.port.api == &comm_.api) {
      ASSERT_TRUE(comm_.AwaitCount("read", reads + 1));
    }
  }
  // Lets the console work until `done`, 20 s at most.
  bool Until(const std::function<bool()>& done) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    while (!done()) {
      if (std::chrono::steady_clock::now() > end) return false;
      Update();
      std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    Update();
    return true;
  }
  void Update() {
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    const auto milliseconds =
        static_cast<uint64_t>(std::chrono::duration_cast<std::chrono::milliseconds>(now).count());
    ConsoleUpdate update = UpdateConsole(console_, milliseconds);
    if (update.start_anew) view_.clear();
    for (const ConsolePiece& piece : update.pieces) {
      view_ += piece.text;
      if (piece.colour != ReportColour::kNeutral) colours_.push_back(piece.colour);
    }
    total_ = std::max(total_, update.packets_total);
    TellConsoleMessages(console_, milliseconds);
  }
  Path LogPath() { return recorder_.context.temporary_folder / kConsoleLogFile; }
  uint64_t LogSize() {
    const std::lock_guard hold(console_.log.lock);
    return console_.log.size;
  }
  std::string LogFile() { return TextOf(ReadWholeFile(LogPath()).value_or(Bytes{})); }
  bool Shows(const std::string& text) {
    return Until([&] { return view_.find(text) != std::string::npos; });
  }

  Recorder recorder_;
  FakeComm comm_;
  ProjectConfig config_ = MakeImageConfig(0);
  std::string view_;
  std::vector<ReportColour> colours_;
  uint32_t total_ = 0;
  Console console_;  // last: its threads end first
};

TEST_F(ConsoleRig, LogShowsWhatArrivesWithBlanksForControlBytes) {
  Connect();
  comm_.Feed(Bytes{'a', 0x06, 0x00, 'b', 0x02, 0x16, '\r', '\n'});
  ASSERT_TRUE(Shows("\r\n"));
  EXPECT_EQ(view_, "a  b\x02\x16\r\n");
  EXPECT_EQ(LogFile(), view_);
  EXPECT_TRUE(DisconnectConsole(console_));
  CloseConsole(console_);
  EXPECT_FALSE(std::filesystem::exists(LogPath()));
  EXPECT_THAT(recorder_.Texts(), IsEmpty());
}

TEST_F(ConsoleRig, LinesAreSentOnlyWhileConnected) {
  Open();
  EXPECT_FALSE(SendConsoleLine(console_, "early"));
  ASSERT_TRUE(ConnectConsole(console_, config_));
  EXPECT_TRUE(SendConsoleLine(console_, "version"));
  ConsoleOptions options;
  options.hexadecimal_input = true;
  SetConsoleOptions(console_, options);
  EXPECT_FALSE(SendConsoleLine(console_, "xyz"));
  EXPECT_THAT(recorder_.Texts(), ElementsAre(HasSubstr("pairs of the digits")));
  EXPECT_TRUE(SendConsoleLine(console_, "02 0A"));
  ASSERT_TRUE(Until([&] { return comm_.Written().size() >= 10; }));
  EXPECT_EQ(TextOf(comm_.Written()), "version\r\x02\n");
  EXPECT_TRUE(DisconnectConsole(console_));
  EXPECT_FALSE(SendConsoleLine(console_, "late"));
}

TEST_F(ConsoleRig, ALineThatTakesNothingStopsNobody) {
  comm_.write_mode = WriteMode::kNever;
  Connect();
  const auto start = std::chrono::steady_clock::now();
  EXPECT_TRUE(SendConsoleLine(console_, "one"));
  EXPECT_TRUE(SendConsoleLine(console_, "two"));
  comm_.Feed(Bytes{'x'});
  EXPECT_TRUE(Shows("x"));
  EXPECT_TRUE(DisconnectConsole(console_));
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(3));
  EXPECT_THAT(recorder_.Texts(), IsEmpty());
}

TEST_F(ConsoleRig, FindsInTheWholeLogAndComesBackToItsEnd) {
  Open();
  EXPECT_FALSE(FindInWholeLog(console_, "x", false));
  // Long enough that the ends of parts cut some in two.
  const std::string mark = "<" + std::string(398, 'M') + "\xC9>", filler(597, '.');
  for (int i = 0; i < 300; ++i) AppendToConsole(console_, mark + filler, ReportColour::kNeutral);
  ReportToConsole(console_, 1);
  const auto text = [](const std::deque<ConsolePiece>& pieces) {
    std::string joined;
    for (const ConsolePiece& piece : pieces) joined += piece.text;
    std::erase_if(joined, [](char character) { return character == '\r' || character == '\n'; });
    return joined;
  };
  // The view finds what is in the part, the log what is behind it.
  const std::string wanted = "<" + std::string(398, 'm') + "\xC3\xA9>";
  EXPECT_FALSE(FindInWholeLog(console_, wanted, true));
  int places = 0;
  while (places < 300) {
    const auto found = FindInWholeLog(console_, wanted, false);
    ASSERT_TRUE(found);
    ASSERT_EQ(text(found->text), mark);
    const std::string after = text(found->after);
    ++places;
    for (size_t at = 0; (at = after.find(mark, at)) != std::string::npos; ++at) ++places;
  }
  EXPECT_EQ(places, 300);
  const auto report = FindInWholeLog(console_, "upload success", false);
  ASSERT_TRUE(report);
  EXPECT_EQ(report->text.front().colour, ReportColour::kSuccess);
  EXPECT_TRUE(UpdateConsole(console_, 0, ViewUse::kLooks).pieces.empty());
  ASSERT_TRUE(Shows("Upload Success"));
  EXPECT_GT(view_.size(), kViewBytes / 4);
  EXPECT_THAT(colours_, ElementsAre(ReportColour::kSuccess));
}

TEST_F(ConsoleRig, ADriverThatNeverReturnsIsLeftAloneUntilItDoes) {
  std::promise<void> release;
  comm_.on_write = [&, released = release.get_future().share()](std::span<const uint8_t>) {
    released.wait();
  };
  Connect();
  EXPECT_TRUE(SendConsoleLine(console_, "one"));
  ASSERT_TRUE(comm_.AwaitCount("write", 1));
  EXPECT_FALSE(DisconnectConsole(console_));
  EXPECT_FALSE(ConnectConsole(console_, config_));
  EXPECT_THAT(recorder_.Texts(), ElementsAre("Exit Thread API failed", HasSubstr("does not answer"),
                                             "Exit Thread API failed", HasSubstr("does not answer")));
  release.set_value();
  EXPECT_TRUE(Until([&] {
    const std::lock_guard hold(console_.sender.lock);
    return console_.sender.ended;
  }));
  EXPECT_TRUE(ConnectConsole(console_, config_)) << "at the first try";
  EXPECT_TRUE(DisconnectConsole(console_));
}

TEST_F(ConsoleRig, ConnectingAndDisconnectingTellTheirFailures) {
  struct Row {
    const char* operation;
    bool on_connect;
    const char* text;
  };
  const Row rows[] = {{"create_file", true, "Port is not available."},
                      {"start_thread", true, "Error in CreateThread(Reader/Status)"},
                      {"close_file", false, "Port Close API failed"}};
  Open();
  for (const Row& row : rows) {
    if (row.on_connect) comm_.Fail({row.operation});
    EXPECT_EQ(ConnectConsole(console_, config_), !row.on_connect) << row.operation;
    comm_.Fail({row.operation});
    EXPECT_EQ(DisconnectConsole(console_), row.on_connect) << row.operation;
    comm_.Fail({});
    EXPECT_THAT(recorder_.Texts(), ElementsAre(row.text)) << row.operation;
  }
}

TEST_F(ConsoleRig, OptionsShapeTheLog) {
  Connect();
  ConsoleOptions options;
  comm_.Feed(BytesOf("text"));
  ASSERT_TRUE(Shows("text"));
  options.hexadecimal_view = true;
  SetConsoleOptions(console_, options);
  comm_.Feed(Bytes{0x06, 0x41});
  ASSERT_TRUE(Shows("06 41 "));
  ReportToConsole(console_, 1);
  ASSERT_TRUE(Shows("Upload Success"));
  comm_.Feed(Bytes{0x42});
  ASSERT_TRUE(Shows("42 "));
  options = {};
  options.time_stamps = true;
  SetConsoleOptions(console_, options);
  comm_.Feed(BytesOf("plain"));
  ASSERT_TRUE(Shows("plain"));
  EXPECT_EQ(view_, LogFile());
  EXPECT_THAT(view_, HasSubstr("text\r\n06 41 " + std::string(14 * 3 + 1, ' ') +
                               ".A\r\n\r\n<========== Upload Success ==========>\r\n42 " +
                               std::string(15 * 3 + 1, ' ') + "B\r\n["));
  EXPECT_THAT(view_, testing::EndsWith("] plain"));
}

TEST_F(ConsoleRig, ReportsHaveTheirColourOnce) {
  Open();
  for (const int code : {-5, 0, 5, 1}) ReportToConsole(console_, code);
  AppendToConsole(console_, "after", ReportColour::kNeutral);
  const ConsoleUpdate update = UpdateConsole(console_, 1);
  ASSERT_EQ(update.pieces.size(), 3u);
  EXPECT_EQ(update.pieces[0].colour, ReportColour::kError);
  EXPECT_THAT(update.pieces[0].text, testing::EndsWith("\t\tChoose Correct UART file for TARGET\r\n"));
  EXPECT_EQ(update.pieces[1].text, "\r\n<========== Upload Success ==========>\r\n");
  EXPECT_EQ(update.pieces[1].colour, ReportColour::kSuccess);
  EXPECT_EQ(update.pieces[2].colour, ReportColour::kNeutral);
  EXPECT_TRUE(update.focus_log);
  EXPECT_THAT(LogFile(), HasSubstr("irrelavant JOB ID\n"));  // the file has the text as it is
  console_.reports.download = true;
  ReportToConsole(console_, 1);
  EXPECT_THAT(UpdateConsole(console_, 2).pieces, IsEmpty());
}

TEST_F(ConsoleRig, SaveAndClear) {
  Open();
  EXPECT_FALSE(HasConsoleLog(console_));
  std::string text(200000, 'x');
  text += "\nend";
  AppendToConsole(console_, text, ReportColour::kNeutral);
  ASSERT_TRUE(HasConsoleLog(console_));
  const Path copy = recorder_.context.temporary_folder / "copy.txt";
  EXPECT_TRUE(SaveConsoleLog(console_, copy));
  EXPECT_EQ(TextOf(*ReadWholeFile(copy)), text);
  EXPECT_THAT(recorder_.Texts(), ElementsAre(Utf8FromPath(copy) + " log file is saved successfully."));
  EXPECT_FALSE(SaveConsoleLog(console_, recorder_.context.temporary_folder / "none" / "copy.txt"));
  EXPECT_THAT(recorder_.Texts(), ElementsAre("WriteFile problem"));
  ClearConsoleLog(console_);
  EXPECT_FALSE(HasConsoleLog(console_));
  EXPECT_EQ(LogFile(), "");
  AppendToConsole(console_, "new", ReportColour::kNeutral);
  const ConsoleUpdate update = UpdateConsole(console_, 1);
  EXPECT_TRUE(update.start_anew);
  ASSERT_EQ(update.pieces.size(), 1u);
  EXPECT_EQ(update.pieces[0].text, "new");
  EXPECT_EQ(LogFile(), "new");
}

TEST_F(ConsoleRig, AFullDiskIsToldOnceAndTheViewGoesOn) {
  Open();
  recorder_.files.write = [](std::FILE*, std::span<const uint8_t>) { return false; };
  AppendToConsole(console_, "text", ReportColour::kNeutral);
  Update();
  EXPECT_THAT(recorder_.Texts(), ElementsAre("WriteFile problem"));
  for (int i = 0; i < 4; ++i) AppendToConsole(console_, "text", ReportColour::kNeutral);
  Update();
  EXPECT_THAT(recorder_.Texts(), IsEmpty());
  EXPECT_EQ(view_, "texttexttexttexttext");
}

TEST_F(ConsoleRig, UnpluggingGivesOneMessageAndADisconnectedConsole) {
  Connect();
  comm_.Fail({"read", "write", "wait_event", "clear_error", "modem_status", "wait", "close_file"});
  SendConsoleLine(console_, "anybody?");
  ASSERT_TRUE(Until([&] { return console_.state == ConsoleState::kDisconnected; }));
  for (int i = 0; i < 120; ++i) {
    Update();
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  EXPECT_THAT(recorder_.Texts(),
              ElementsAre("COM1 is not available any more.\nThe console is disconnected."));
  comm_.Fail({"create_file"});
  EXPECT_FALSE(ConnectConsole(console_, config_));
  EXPECT_THAT(recorder_.Texts(), ElementsAre("Port is not available."));  // one that the user asked for
  comm_.Fail({});
  ConnectAgain();
  comm_.Feed(BytesOf("again"));
  EXPECT_TRUE(Shows("again"));
  // A line that was hung up lets its reads end with nothing.
  const int reads = comm_.Count("read");
  comm_.hung_up = true;
  comm_.Fail({"clear_error"});
  comm_.Feed(BytesOf("x"));
  ASSERT_TRUE(Until([&] { return console_.state == ConsoleState::kDisconnected; }));
  EXPECT_LT(comm_.Count("read") - reads, 10);
  EXPECT_EQ(recorder_.Texts().size(), 1u);
}

TEST_F(ConsoleRig, AFailureOfALivePortIsToldOnceAConnection) {
  Connect();
  comm_.Fail({"modem_status"});
  ASSERT_TRUE(comm_.AwaitCount("modem_status", 4));
  ASSERT_TRUE(Until([&] { return !recorder_.shown.empty(); }));
  EXPECT_EQ(recorder_.shown[0].title, "Serial Comm lib");
  EXPECT_THAT(recorder_.Texts(), ElementsAre("GetCommModemStatus"));
  EXPECT_EQ(console_.state, ConsoleState::kConnected);
}

TEST_F(ConsoleRig, ALostPortIsTakenAgainWhenItComesBack) {
  Connect();
  ConsoleOptions options;
  options.reconnect = true;
  SetConsoleOptions(console_, options);
  comm_.Fail({"clear_error", "modem_status", "create_file"});
  ASSERT_TRUE(Until([&] { return console_.state == ConsoleState::kWaiting; }));
  EXPECT_EQ(recorder_.Texts().size(), 1u);
  const int tried = comm_.Count("create_file");
  const uint64_t lost = console_.next_try - kFirstRetry;
  for (uint64_t now = lost; now < lost + 6000; now += 33) UpdateConsole(console_, now);
  EXPECT_EQ(comm_.Count("create_file") - tried, 4);  // after 0.5, 1.5, 3.5, 5.5 s
  EXPECT_THAT(recorder_.Texts(), IsEmpty());
  comm_.Fail({});
  UpdateConsole(console_, lost + 8000);
  EXPECT_EQ(console_.state, ConsoleState::kConnected);
  comm_.Fail({"clear_error", "modem_status", "create_file"});
  ASSERT_TRUE(Until([&] { return console_.state == ConsoleState::kWaiting; }));
  EXPECT_TRUE(DisconnectConsole(console_));  // the user gives up
  EXPECT_EQ(console_.state, ConsoleState::kDisconnected);
}

TEST_F(ConsoleRig, AFloodIsGatheredAndTheFileHoldsAllOfIt) {
  Connect();
  constexpr size_t kTotal = 4 << 20;
  Bytes chunk(1 << 16, 'f');
  for (size_t sent = 0; sent < kTotal; sent += chunk.size()) comm_.Feed(chunk);
  size_t most = 0;
  const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(20);
  while (LogSize() < kTotal && std::chrono::steady_clock::now() < end) {
    std::this_thread::sleep_for(std::chrono::milliseconds(33));
    const ConsoleUpdate update = UpdateConsole(console_, 1);
    size_t bytes = 0;
    for (const ConsolePiece& piece : update.pieces) bytes += piece.text.size();
    most = std::max(most, bytes);
  }
  EXPECT_LE(most, kUpdateBytes + 4096);
  EXPECT_EQ(std::filesystem::file_size(LogPath()), kTotal);
}

// A URT file of a random database, made as an upload makes it.
Path MakeUrt(Recorder& recorder, const ProjectConfig& config, const Path& path) {
  Document document = NewDocument();
  std::mt19937 random(5);
  document.sdbs[0].database = MakeRandomDatabase(random, RandomShape{});
  const auto files = PrepareSdbUpload(recorder.context, document, {1, 0}, config, {2024, 5, 6, 7, 8, 9});
  EXPECT_TRUE(files.has_value());
  if (files) std::filesystem::rename(files->front(), path);
  return path;
}

TEST_F(ConsoleRig, UploadArrivesInSpiteOfNaksAndIsReported) {
  config_.regions.clear();
  const Path urt = MakeUrt(recorder_, config_, recorder_.context.temporary_folder / "file.urt");
  ReceiverRig receiver({7, 0.2, 0, 0, 0});
  Use(receiver.comm);
  Connect();
  ASSERT_TRUE(CanUpload(console_));
  ASSERT_TRUE(StartConsoleUpload(console_, urt, "file.urt"));
  EXPECT_FALSE(CanUpload(console_));
  EXPECT_FALSE(StartConsoleUpload(console_, urt, "file.urt"));
  ASSERT_TRUE(Until([&] { return !IsUploading(console_); })) << testing::PrintToString(receiver.Notes());
  EXPECT_EQ(receiver.Memory().spaces[0].size(), 1u);
  EXPECT_THAT(LogFile(), HasSubstr("\r\n<========== Upload Success ==========>\r\n"));
  EXPECT_THAT(colours_, ElementsAre(ReportColour::kSuccess));
  EXPECT_TRUE(CanUpload(console_));
  EXPECT_GT(total_, 0u);
  EXPECT_TRUE(DisconnectConsole(console_));
  EXPECT_THAT(recorder_.Texts(), IsEmpty());
}

TEST_F(ConsoleRig, CancelEndsAnUploadWithOneReport) {
  const Path urt = recorder_.context.temporary_folder / "file.urt";
  PutFile(urt, BytesOf("MZ"));
  for (const WriteMode mode : {WriteMode::kDone, WriteMode::kNever}) {
    comm_.write_mode = mode;
    view_.clear();
    Connect();
    ASSERT_TRUE(StartConsoleUpload(console_, urt, "file.urt"));  // nobody answers
    ASSERT_TRUE(comm_.AwaitCount("write", 1));
    CancelConsoleUpload(console_, 1);
    ASSERT_TRUE(Until([&] { return !IsUploading(console_); }));
    EXPECT_EQ(LogFile(), kTerminated);
    EXPECT_EQ(console_.state, ConsoleState::kConnected);
    CancelConsoleUpload(console_, 2);  // nothing runs
    EXPECT_TRUE(DisconnectConsole(console_));
    EXPECT_EQ(LogFile(), kTerminated);
  }
  EXPECT_THAT(recorder_.Texts(), IsEmpty());
}

TEST_F(ConsoleRig, DisconnectingAndLosingThePortEndTheUpload) {
  const Path urt = recorder_.context.temporary_folder / "file.urt";
  PutFile(urt, BytesOf("MZ"));
  Connect();
  ASSERT_TRUE(StartConsoleUpload(console_, urt, "file.urt"));
  EXPECT_TRUE(DisconnectConsole(console_));
  EXPECT_FALSE(IsUploading(console_));
  ClearConsoleLog(console_);
  ASSERT_TRUE(ConnectConsole(console_, config_));
  ASSERT_TRUE(StartConsoleUpload(console_, urt, "file.urt"));
  const int writes = comm_.Count("write");
  comm_.Fail({"clear_error", "modem_status", "write"});
  ASSERT_TRUE(comm_.AwaitCount("write", writes + 20));  // failures while nobody looks
  {
    const std::lock_guard hold(console_.log.lock);
    EXPECT_LT(console_.log.messages.size(), 10u);
  }
  ASSERT_TRUE(Until([&] { return console_.state == ConsoleState::kDisconnected; }));
  EXPECT_FALSE(IsUploading(console_));
  // No user terminated it.
  EXPECT_EQ(LogFile(),
            "\n<========== Upload ended ==========>\n   Problem : COM1 is not available any more\n");
  EXPECT_EQ(recorder_.Texts().size(), 1u);
}

TEST_F(ConsoleRig, UploadTellsAMissingFileAndAMissingThread) {
  Connect();
  comm_.Fail({"start_thread"});
  EXPECT_FALSE(StartConsoleUpload(console_, "none.urt", "none.urt"));
  EXPECT_THAT(recorder_.Texts(), ElementsAre("Create thread failed - ConnectDisConnectWithPort"));
  EXPECT_TRUE(CanUpload(console_));
  comm_.Fail({});
  ASSERT_TRUE(StartConsoleUpload(console_, "none.urt", "none.urt"));
  ASSERT_TRUE(comm_.AwaitCount("write", 1));  // what comes before the first ETB is no answer
  comm_.Feed(Bytes{kAck});
  ASSERT_TRUE(Until([&] { return console_.transfer.ack.load(); }));
  comm_.Feed(Bytes{kEnq});
  ASSERT_TRUE(Until([&] { return !IsUploading(console_); }));
  EXPECT_THAT(recorder_.Texts(), ElementsAre("File access error - UploadURTPacketThread"));
}

TEST_F(ConsoleRig, BinFilesAreConvertedWhereTheConfigurationHasImages) {
  const Path bin = recorder_.context.temporary_folder / "Data.BIN";
  PutFile(bin, BytesOf("some content"));
  EXPECT_EQ(ConsoleUploadFile(recorder_.context, bin, config_), bin);
  config_.image_entry_count = 1;
  const auto converted = ConsoleUploadFile(recorder_.context, bin, config_);
  ASSERT_TRUE(converted);
  EXPECT_EQ(converted->filename(), kSdbUrtFile);
  EXPECT_EQ(ReadWholeFile(*converted)->at(0), 'M');
  const Path urt = recorder_.context.temporary_folder / "data.urt";
  EXPECT_EQ(ConsoleUploadFile(recorder_.context, urt, config_), urt);
  // Where it would take the image's place, the user is asked.
  config_.regions = {{"Image", 3, 0, 0x40000}};
  recorder_.shown.clear();
  for (const bool answer : {false, true}) {
    recorder_.answer = answer;
    EXPECT_EQ(ConsoleUploadFile(recorder_.context, bin, config_).has_value(), answer);
    EXPECT_THAT(recorder_.Texts(),
                ElementsAre("SDB data would replace the image in \"Image\".\nDo you want to continue ?"));
  }
}

}  // namespace
}  // namespace vexa
