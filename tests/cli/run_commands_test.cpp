// Runs of several transfers: verified, with a copy before, one receiver after the other.
#include <iostream>
#include <nlohmann/json.hpp>
#include <streambuf>

#include "image/receiver_layout.h"
#include "image/sha256.h"
#include "import/csv.h"
#include "tests/cli/receiver_test.h"

namespace vexa {
namespace {

using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;
using Json = nlohmann::json;

#define NEEDS_RECEIVER(...) \
  if (!StartReceiver(__VA_ARGS__)) GTEST_SKIP() << "no pseudo-terminals on this system"

// Standard input a line at a time, as a user types it; `before` is told the number of the line, from 0.
class TypedInput : public std::streambuf {
 public:
  TypedInput(std::vector<std::string> lines, std::function<void(size_t)> before)
      : lines_(std::move(lines)), before_(std::move(before)), old_(std::cin.rdbuf(this)) {}
  ~TypedInput() override {
    std::cin.rdbuf(old_);
    std::cin.clear();
  }

 private:
  int underflow() override {
    if (next_ == lines_.size()) return traits_type::eof();
    before_(next_);
    std::string& line = lines_[next_++];
    setg(line.data(), line.data(), line.data() + line.size());
    return traits_type::to_int_type(line[0]);
  }
  std::vector<std::string> lines_;
  std::function<void(size_t)> before_;
  size_t next_ = 0;
  std::streambuf* old_;
};

class RunCommands : public ReceiverTest {
 protected:
  std::string Text(const std::string& name) {
    const Bytes bytes = Get(name);
    return {bytes.begin(), bytes.end()};
  }
};

TEST_F(RunCommands, WhatTheReceiverHoldsIsComparedWithWhatWasSent) {
  NEEDS_RECEIVER();
  const ProgramResult up = Vexa("upload adb @list.bin --port @line --timeout 20 --verify --trace @trace");
  ASSERT_EQ(up.status, 0) << up.errors;
  EXPECT_EQ(up.errors,
            "Receiver not connected.\nWait...\nADB upload inprogress.\nADB upload completed.\nVerifying\n"
            "Verification - Success\n");
  const std::string trace = Text("trace");
  EXPECT_LT(trace.find("PC>  02 44 46 55 20 0A"), trace.find("PC>  02 44 55 4D 50 0A")) << "one for both";
  ASSERT_NE(trace.find("PC>  02 44 55 4D 50 0A"), trace.npos);

  const LoaderMemory memory = StopReceiver();
  const auto& [start, image] = *memory.spaces[0].begin();
  struct Row {
    size_t place;
    uint8_t flip;
    std::string where;  // empty: no difference
  };
  const Row rows[] = {{130, 0x10, "satellite 1"}, {128 + 2 * 28, 1, "satellite 3"},
                      {3, 0x80, "LNB 1"},         {image.size() - 1, 1, "fill"},
                      {image.size(), 1, ""},  // the image header, which the receiver writes itself
                      {image.size() + 63, 1, ""}};
  for (const Row& row : rows) {
    LoaderMemory changed = memory;
    const auto place = static_cast<uint32_t>(start + row.place);
    const uint8_t held = LoadBytes(memory, 0, place, 1)[0];
    StoreBytes(changed, 0, place, Bytes{static_cast<uint8_t>(held ^ row.flip)});
    ASSERT_TRUE(StartReceiver({}, changed));
    const ProgramResult result = Vexa("verify adb @list.bin --port @line --timeout 20 --json");
    StopReceiver();
    const bool same = row.where.empty();
    EXPECT_EQ(result.status, same ? 0 : 1) << row.place;
    EXPECT_EQ(
        result.errors,
        same ? "Verifying\nVerification - Success\n"
             : Format(
                   "Verifying\nerror: Verification - failed\ninfo: 1 bytes differ, the first at 0x%08X (%s)\n"
                   "info: The receiver holds other data than it should; send it again.\n",
                   static_cast<unsigned>(start + row.place), row.where.c_str()));
    const Json document = Json::parse(result.output);
    EXPECT_EQ(document["verified"], same);
    EXPECT_EQ(document["result"], same ? "ok" : "failed");
    EXPECT_EQ(document["message"], same ? "" : "Verification - failed");
    EXPECT_EQ(document["phase"], "verify");
  }
}

TEST_F(RunCommands, ACopyIsKeptBeforeAnythingIsSent) {
  NEEDS_RECEIVER();
  std::filesystem::create_directory(At("copies"));
  const std::string line = "upload adb @list.bin --port @line --timeout 20 --select 0/0/1";
  ASSERT_EQ(Vexa(line).status, 0);
  ASSERT_EQ(Vexa("download -o @held.bin --port @line --timeout 20 --select 0/0/1").status, 0);
  std::mt19937 random(8);
  Document other = NewDocument();
  other.sdbs[0].database = MakeRandomDatabase(random, RandomShape{});
  Save(other, "other.bin");
  const ProgramResult result =
      Vexa("upload adb @other.bin --port @line --timeout 20 --select 0/0/1 --verify --backup @copies");
  ASSERT_EQ(result.status, 0) << result.errors;
  EXPECT_THAT(result.errors, StartsWith("Receiver not connected.\nWait...\nDownloading inprogress\n"
                                        "Data download completed\nCRC Verification - Success\n"
                                        "ADB upload inprogress.\n"));
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(At("copies")))
    names.push_back(Utf8FromPath(entry.path().filename()));
  std::sort(names.begin(), names.end());
  ASSERT_EQ(names.size(), 3u);
  const std::string base = names[2].substr(0, 15);
  EXPECT_EQ(names, (std::vector<std::string>{base + "-1.raw", base + "-2.raw", base + ".bin"}));
  EXPECT_EQ(Get("copies/" + names[2]), Get("held.bin"));
  ASSERT_EQ(Vexa("adb build @list.bin -o @images --select 0/0/1").status, 0);
  EXPECT_EQ(Get("copies/" + names[0]), Get("images/~001adb.bin"));
  EXPECT_EQ(Get("copies/" + names[1]), Get("images/~001e2p.bin"));
}

TEST_F(RunCommands, WithoutACopyNothingIsSent) {
  NEEDS_RECEIVER();  // it holds nothing that makes a database
  std::filesystem::create_directory(At("copies"));
  const ProgramResult result = Vexa("upload adb @list.bin --port @line --timeout 20 --backup @copies --json");
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.errors,
              EndsWith("info: Nothing was written, the receiver keeps what it had; switch it off "
                       "and on before the next try.\n"));
  EXPECT_EQ(Json::parse(result.output)["phase"], "download");
  EXPECT_TRUE(StopReceiver().spaces[0].empty());
  EXPECT_TRUE(std::filesystem::is_empty(At("copies")));
}

TEST_F(RunCommands, EachLineIsAReceiverAndARow) {
  NEEDS_RECEIVER();
  // The second receiver falls silent; the others have memories of their own.
  LoaderFaults silent;
  silent.silence = 1;
  const auto swap = [&](size_t line) {
    if (line == 0) return;
    StopReceiver();
    EXPECT_TRUE(StartReceiver(line == 1 ? silent : LoaderFaults{}));
  };
  Put("log.csv", "");
  const std::string line =
      "upload adb @list.bin --port @line --timeout 4 --each --verify --json --log @log.csv "
      "--time '2024-05-06 07:08:09'";
  ProgramResult result;
  {
    const TypedInput input({"A-1\n", "=2,\"b\"\r\n", "\n", "last"}, swap);
    result = Vexa(line);
  }
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.errors, HasSubstr("error: The transfer made no progress for 4 seconds.\n"));
  std::istringstream lines(result.output);
  std::vector<std::string> ends;
  for (std::string text; std::getline(lines, text);) {
    const Json document = Json::parse(text);
    ends.push_back(document["result"].get<std::string>() + " " + document["verified"].dump());
  }
  EXPECT_EQ(ends, (std::vector<std::string>{"ok true", "failed null", "ok true", "ok true"}));
  const std::string text = Text("log.csv");
  EXPECT_THAT(
      text,
      StartsWith("time,serial,database,sha256,configuration,packets,repeated,seconds,verified,result\r\n"
                 "2024-05-06 07:08:09,A-1," +
                 In("list.bin") + "," + Sha256Text(Get("list.bin")) + ",0/0/0,"));
  const auto rows = ParseCsv(text);
  ASSERT_EQ(rows.size(), 5u);
  const std::array<const char*, 3> expected[] = {
      {"A-1", "yes", "ok"}, {"=2,\"b\"", "", "failed"}, {"", "yes", "ok"}, {"last", "yes", "ok"}};
  for (size_t i = 0; i < 4; ++i) {
    const auto& cells = rows[i + 1].cells;
    EXPECT_EQ((std::array<std::string, 3>{cells[1], cells[8], cells[9]}),
              (std::array<std::string, 3>{expected[i][0], expected[i][1], expected[i][2]}));
  }
  EXPECT_FALSE(StopReceiver().spaces[0].empty());
}

// What can be known before the first receiver is told before it, also when there is none.
TEST_F(RunCommands, WhatCannotBeDoneIsToldBeforeTheFirstReceiver) {
  line_of_ports.create_file = [&](const std::string&) -> Made<SerialDevicePtr> {
    ADD_FAILURE() << "the port was opened";
    return nullptr;
  };
  Put("file", "x");
  const std::pair<std::string, std::string> rows[] = {
      {"@none.bin", "error: "},
      {"@list.bin --select 9/9/9", "error: "},
      {"@list.bin --backup @nowhere", "error: No copy can be kept in \"" + In("nowhere") + "\".\ninfo: "},
      {"@list.bin --backup @file", "error: No copy can be kept in \"" + In("file") + "\".\n"},
      {"@list.bin --log @no/such/log", "error: Could not write file \"" + In("no/such/log") + "\".\ninfo: "}};
  for (const auto& [words, text] : rows) {
    const TypedInput input({}, [](size_t) {});
    const ProgramResult result = Vexa("upload adb " + words + " --each --port P");
    EXPECT_EQ(result.status, 1) << words;
    EXPECT_THAT(result.errors, testing::AnyOf(StartsWith(text), StartsWith("info: Invalid conf"))) << words;
  }
  const TypedInput input({}, [](size_t) {});
  EXPECT_EQ(Vexa("upload adb @list.bin --each --port P --log @log.csv").status, 0)
      << "no receiver, no failure";
  EXPECT_FALSE(Exists("log.csv"));
  EXPECT_EQ(Vexa("upload adb @list.bin --each --port P --log @list.bin").status, 2);
}

TEST_F(RunCommands, PlainProgressGoesFromTheStartToTheEndOfEachPhase) {
  NEEDS_RECEIVER();
  const ProgramResult result =
      Vexa("upload adb @list.bin --port @line --timeout 20 --verify --progress plain --json");
  ASSERT_EQ(result.status, 0) << result.errors;
  std::istringstream lines(result.errors);
  std::vector<std::string> phases;
  std::string done, total, last_done, last_total;
  for (std::string line; std::getline(lines, line);) {
    if (!line.starts_with("progress: ")) continue;
    std::istringstream words(line.substr(10));
    std::string phase, bytes, rate, left, repeated;
    words >> phase >> bytes >> rate >> left >> repeated;
    EXPECT_EQ(repeated, "0");
    const size_t slash = bytes.find('/');
    total = bytes.substr(slash + 1);
    if (phases.empty() || phases.back() != phase) {
      EXPECT_EQ(last_done, last_total) << "behind the end of " << (phases.empty() ? "" : phases.back());
      phases.push_back(phase);
    } else {
      EXPECT_EQ(total, last_total) << line;
    }
    last_done = bytes.substr(0, slash);
    last_total = total;
  }
  EXPECT_EQ(last_done, last_total);
  EXPECT_EQ(last_total, "294912") << "the region";
  EXPECT_EQ(phases, (std::vector<std::string>{"wake-up", "upload", "verify"}));
  const Json document = Json::parse(result.output);
  EXPECT_GT(document["bytes"], 2 * 294912);
  EXPECT_GT(document["seconds"], 0.0);
  std::vector<std::string> keys;
  const auto ordered = nlohmann::ordered_json::parse(result.output);
  for (const auto& item : ordered.items()) keys.push_back(item.key());
  EXPECT_EQ(keys, (std::vector<std::string>{"result", "phase", "bytes", "packets", "repeated", "seconds",
                                            "verified", "message"}));
}

TEST_F(RunCommands, ADocumentAlsoTellsOfAFailure) {
  const std::string rows[] = {"upload adb @none.bin", "upload adb @list.bin --select 9/9/9",
                              "upload urt @none.urt", "verify adb @list.bin", "download -o @no/such/out"};
  for (const std::string& words : rows) {
    const ProgramResult result = Vexa(words + " --json --port @no-port");
    EXPECT_EQ(result.status, 1) << words;
    const Json document = Json::parse(result.output);
    EXPECT_EQ(document["result"], "failed");
    EXPECT_EQ(document["packets"], 0);
    // "error: " with the text, and "info: " with the reason.
    const size_t text = result.errors.find(": ") + 2, end = result.errors.find("\ninfo: ", text);
    const size_t reason = end + 7;
    const char* between = result.errors[end - 1] == '.' ? " " : ": ";
    EXPECT_EQ(document["message"],
              result.errors.substr(text, end - text) + between +
                  result.errors.substr(reason, result.errors.find('\n', reason) - reason))
        << words;
  }
  EXPECT_EQ(Vexa("upload adb @list.bin --port @line --json --progress fancy").status, 2);
  if (!StartReceiver()) return;
  Put("bad.urt", "no such file");
  EXPECT_EQ(Json::parse(Vexa("upload urt @bad.urt --port @line --json").output)["message"],
            "Magic ID not found")
      << "what the report says";
}

TEST_F(RunCommands, ADryRunTellsHowFullEachTableIs) {
  const ProgramResult fits = Vexa("adb build @list.bin --dry-run");
  EXPECT_EQ(fits.status, 0) << fits.errors;
  const Document document = Open("list.bin");
  const StaticDatabase& database = *document.sdbs[0].database;
  EXPECT_THAT(fits.output, StartsWith("lnbs 16/16\nsatellites 6/85\n"));
  EXPECT_THAT(fits.output, HasSubstr("\ncarriers " + std::to_string(database.carriers.size()) +
                                     "/4095\nservices " + std::to_string(database.services.size()) + "/"));
  EXPECT_THAT(fits.output, HasSubstr("\ntv-group-8 "));
  Document full = NewDocument();
  std::mt19937 random(1);
  full.sdbs[0].database = MakeRandomDatabase(random, {4, 60, 2000, 4000, 0, false, false});
  Save(full, "full.bin");
  const ProgramResult refused = Vexa("adb build @full.bin --dry-run");
  EXPECT_EQ(refused.status, 1);
  EXPECT_THAT(refused.output, HasSubstr("tables ")) << refused.errors;
  EXPECT_THAT(refused.errors, StartsWith("error: "));
  for (const char* line : {"adb build @list.bin", "adb build @list.bin --dry-run -o @out"})
    EXPECT_EQ(Vexa(line).status, 2) << line;
  EXPECT_FALSE(Exists("out"));
}

}  // namespace
}  // namespace vexa
